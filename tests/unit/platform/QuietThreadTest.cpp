#include <gtest/gtest.h>

#include <csignal>

#include "playerx/platform/QuietThread.h"

namespace {

/// Has `run` run something, and looks at the signals that are blocked meanwhile and afterwards.
template <class Run>
void expectSignalsBlocked(Run run) {
  sigset_t before, during, after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  run([&] { pthread_sigmask(SIG_SETMASK, nullptr, &during); });
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (const int signal : {SIGPIPE, SIGXFSZ, SIGINT, SIGTERM, SIGUSR1}) {
    EXPECT_TRUE(sigismember(&during, signal));
    EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal));
  }
}

TEST(QuietThread, BlocksSignalsAndLeavesThoseOfItsStarterAlone) {
  expectSignalsBlocked([](const auto& body) { playerx::startQuietThread(body).join(); });
}

TEST(QuietThread, BlocksSignalsAlsoForWhatIsRun) {
  expectSignalsBlocked([](const auto& body) { playerx::runQuietly(body).wait(); });
}

}  // namespace
