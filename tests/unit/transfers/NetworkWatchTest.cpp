#include <gtest/gtest.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <iostream>

#include "playerx/transfers/NetworkWatch.h"

namespace playerx::transfers {
namespace {

enum Outcome { kNoticed, kTooEarly, kMissed, kNotAllowed };

bool bringLoopbackUp() {
  const Descriptor socket(::socket(AF_INET, SOCK_DGRAM, 0));
  ifreq request{};
  std::strcpy(request.ifr_name, "lo");
  request.ifr_flags = IFF_UP;
  return ioctl(socket.get(), SIOCSIFFLAGS, &request) == 0;
}

/// In a network of its own, which is down at first.
Outcome watchTheNetworkCome() {
  const bool isAlone = unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
  if (!isAlone) return kNotAllowed;
  NetworkWatch watch;
  if (watch.takeArrival()) return kTooEarly;
  if (!bringLoopbackUp()) return kNotAllowed;
  pollfd watched{watch.descriptor(), POLLIN, 0};
  constexpr int kLongest = 10'000;
  while (poll(&watched, 1, kLongest) > 0) {
    if (watch.takeArrival()) return kNoticed;
  }
  return kMissed;
}

TEST(NetworkWatchTest, ANetworkThatComesIsNoticed) {
  const pid_t child = fork();
  if (child == 0) _exit(watchTheNetworkCome());
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == kNotAllowed) {
    std::cout << "This machine lets no test have a network of its own.\n";
    EXPECT_GE(NetworkWatch().descriptor(), 0);
  } else {
    EXPECT_EQ(WEXITSTATUS(status), kNoticed);
  }
}

TEST(NetworkWatchTest, WithoutNewsNothingIsNoticed) { EXPECT_FALSE(NetworkWatch().takeArrival()); }

}  // namespace
}  // namespace playerx::transfers
