#include <gtest/gtest.h>

#include "download/HttpTransfer.h"
#include "kvpm/IRunnable.h"
#include "playerx/platform/ThreadGate.h"
#include "tests/support/WaitFor.h"

namespace download {
namespace {

/// Opened again whatever becomes of the test.
struct ClosedThreadGate {
  ClosedThreadGate() { playerx::ThreadGate::close(); }
  ~ClosedThreadGate() { playerx::ThreadGate::open(); }
};

/// A transfer without a server, which succeeds at once or when it is cancelled.
class HttpTransferTest : public ::testing::Test, private kvpm::IRunnable {
 protected:
  void start() {
    transfer_.allow();
    ASSERT_TRUE(transfer_.start(nullptr, [] {}));
  }
  HttpResultType outcome() { return transfer_.waitForBody()->getResult(); }

  bool succeedsAtOnce_ = true;
  HttpTransfer transfer_{*this};

 private:
  void runThread(kvpm::Thread*) override {
    if (!succeedsAtOnce_) support::waitFor([this] { return transfer_.token().isCancelled(); });
    transfer_.noteEnd(kvsc::HTTP_ERROR_NONE);
  }
};

TEST_F(HttpTransferTest, OneThatHasSucceededIsNotFailedByItsEnd) {
  start();
  ASSERT_EQ(outcome(), HTTP_RESULT_OK);
  transfer_.end();
  EXPECT_EQ(outcome(), HTTP_RESULT_OK);
}

TEST_F(HttpTransferTest, OneThatIsEndedHasFailedEvenIfItSucceedsMeanwhile) {
  succeedsAtOnce_ = false;
  start();
  transfer_.end();
  EXPECT_EQ(outcome(), HTTP_RESULT_FAILED);
}

TEST_F(HttpTransferTest, OneThatIsCancelledBeforeItsThreadHasBegunIsNotWaitedFor) {
  const ClosedThreadGate closed;
  start();
  transfer_.cancel();
  EXPECT_EQ(outcome(), HTTP_RESULT_FAILED);
}

}  // namespace
}  // namespace download
