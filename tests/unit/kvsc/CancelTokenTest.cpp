#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>

#include <thread>
#include <vector>

#include "kvsc/CancelToken.h"

namespace kvsc {
namespace {

bool isReadable(const CancelToken& token) {
  pollfd polled{token.fd(), POLLIN, 0};
  return poll(&polled, 1, 0) == 1;
}

void expectCancelled(const CancelToken& token, bool cancelled) {
  EXPECT_EQ(token.isCancelled(), cancelled);
  EXPECT_EQ(isReadable(token), cancelled);
}

TEST(CancelTokenTest, AFreshTokenIsNotCancelled) { expectCancelled(CancelToken(), false); }

TEST(CancelTokenTest, ACancelLastsUntilTheReset) {
  CancelToken token;
  token.cancel();
  expectCancelled(token, true);
  expectCancelled(token, true);
  token.reset();
  expectCancelled(token, false);
}

TEST(CancelTokenTest, OneResetUndoesManyCancels) {
  CancelToken token;
  token.cancel();
  token.cancel();
  token.reset();
  expectCancelled(token, false);
}

TEST(CancelTokenTest, AResetWithoutACancelChangesNothing) {
  CancelToken token;
  token.reset();
  expectCancelled(token, false);
  token.cancel();
  expectCancelled(token, true);
}

TEST(CancelTokenTest, FlagAndDescriptorAgreeAfterAnyRace) {
  for (int round = 0; round < 200; ++round) {
    CancelToken token;
    std::thread other([&] { token.cancel(); });
    token.reset();
    other.join();
    EXPECT_EQ(isReadable(token), token.isCancelled());
  }
}

TEST(CancelTokenTest, WithoutADescriptorTheFlagStillTells) {
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit noDescriptors{0, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &noDescriptors), 0);
  CancelToken token;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(token.fd(), -1);
  token.cancel();
  EXPECT_TRUE(token.isCancelled());
  token.reset();
  EXPECT_FALSE(token.isCancelled());
}

}  // namespace
}  // namespace kvsc
