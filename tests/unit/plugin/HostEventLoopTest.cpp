#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>
#include <thread>

#include "plugin/HostEventLoop.h"

namespace plugin {
namespace {

using std::chrono::milliseconds;

int noArguments = 0;

TEST(HostEventLoop, WithoutAnApplicationThereIsNothingToProcess) {
  HostEventLoop::process();
  EXPECT_EQ(HostEventLoop::longestSleep(), milliseconds(500));
}

TEST(HostEventLoop, DealsWithWhatIsWaitingOnTheApplicationsThread) {
  QCoreApplication application(noArguments, nullptr);
  bool dealtWith = false;
  QTimer::singleShot(0, &application, [&dealtWith] { dealtWith = true; });
  HostEventLoop::process();
  EXPECT_TRUE(dealtWith);
  EXPECT_LT(HostEventLoop::longestSleep(), milliseconds(100)) << "a window is redrawn meanwhile";
}

TEST(HostEventLoop, LeavesTheLoopAloneOnAnyOtherThread) {
  QCoreApplication application(noArguments, nullptr);
  bool dealtWith = false;
  QTimer::singleShot(0, &application, [&dealtWith] { dealtWith = true; });
  std::thread other([] {
    HostEventLoop::process();
    EXPECT_EQ(HostEventLoop::longestSleep(), milliseconds(500));
  });
  other.join();
  EXPECT_FALSE(dealtWith);
}

}  // namespace
}  // namespace plugin
