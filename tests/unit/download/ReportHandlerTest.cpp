#include <gtest/gtest.h>

#include <chrono>

#include "download/AutomaticPlayback.h"
#include "download/Host.h"
#include "download/ReportHandler.h"
#include "download/RunState.h"
#include "tests/support/LockWaiter.h"

namespace download {
namespace {

using Clock = std::chrono::steady_clock;

TEST(ReportHandlerTest, AReportThatWaitedForAnEarlierSessionTakesNoWaitFromThoseOfTheNext) {
  Host host(nullptr);
  RunState state;
  AutomaticPlayback playback(host, state);
  ReportHandler reports(host, state, playback);
  const auto report = [&] { reports.receive({LibraryReport::Kind::kProgress, 5, 50}); };
  reports.expect();
  support::LockWaiter earlier(report);
  earlier.isHeldUp();
  reports.close();
  reports.expect();
  earlier.join();
  const Clock::time_point start = Clock::now();
  support::LockWaiter(report).join();
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(100));
  reports.close();
}

}  // namespace
}  // namespace download
