#include <gtest/gtest.h>

#include <csignal>

#include "playerx/platform/QuietThread.h"

namespace {

TEST(QuietThread, BlocksSignalsAndLeavesThoseOfItsStarterAlone) {
  sigset_t before, during, after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  playerx::startQuietThread([&] { pthread_sigmask(SIG_SETMASK, nullptr, &during); }).join();
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (const int signal : {SIGPIPE, SIGXFSZ, SIGINT, SIGTERM, SIGUSR1}) {
    EXPECT_TRUE(sigismember(&during, signal));
    EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal));
  }
}

}  // namespace
