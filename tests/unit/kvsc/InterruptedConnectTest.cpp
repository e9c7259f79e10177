// A connect that a signal interrupts goes on by itself.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <cerrno>

#include "tests/support/Loopback.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

/// Whether the next connect of this thread is interrupted once it is under way.
thread_local bool interrupted = false;

}  // namespace

extern "C" {

int __real_connect(int fd, const sockaddr* address, socklen_t length);
int __wrap_connect(int fd, const sockaddr* address, socklen_t length) {
  const int result = __real_connect(fd, address, length);
  if (!interrupted) return result;
  interrupted = false;
  errno = EINTR;
  return -1;
}

}  // extern "C"

namespace {

class InterruptedConnectTest : public testing::Test {
 protected:
  Outcome get(const std::string& url) {
    interrupted = true;
    const Outcome outcome = client_.get(url);
    EXPECT_FALSE(interrupted);
    return outcome;
  }

  PlainClient client_;
};

TEST_F(InterruptedConnectTest, TheConnectionIsWaitedFor) {
  support::ScriptedServer server;
  server.next(support::Script::answer(support::okResponse("film")));
  EXPECT_EQ(get(server.url("/", "127.0.0.1")), kSuccess);
  EXPECT_EQ(client_.body(), "film");
  EXPECT_EQ(server.connectionCount(), 1u);
}

TEST_F(InterruptedConnectTest, ItsOwnFailureIsTheReason) {
  const support::RefusingPort refusing;
  const std::string address = "127.0.0.1:" + std::to_string(refusing.port());
  EXPECT_EQ(get("http://" + address + "/"),
            (Outcome{kvsc::HTTP_ERROR_FAILED,
                     "\n connecting to " + address +
                         " error:8000006F:system library::Connection refused\n"}));
}

}  // namespace
