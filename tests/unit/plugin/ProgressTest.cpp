#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "VeskPlayerX/InterfaceIds.h"
#include "kvpm/TimeTools.h"
#include "tests/support/Gate.h"
#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

/// Online services that take their time over a confirmation.
class SlowServices : public support::FakeServices {
 public:
  using FakeServices::FakeServices;

  void confirmDownload(long ticketId, unsigned long long bytes) override {
    confirming.open();
    goOn.wait();
    FakeServices::confirmDownload(ticketId, bytes);
  }

  support::Gate confirming;
  support::Gate goOn;
};

/// Online services that look at the queue while they are told of a download.
class WatchingServices : public support::FakeServices {
 public:
  WatchingServices(support::EventLog& log, std::function<int()> percent)
      : FakeServices(log), percent_(std::move(percent)) {}

  void confirmDownload(long, unsigned long long) override { seen = percent_(); }

  std::atomic<int> seen{-1};

 private:
  const std::function<int()> percent_;
};

/// Online services that report more progress while they are told of some.
class ReportingServices : public support::FakeServices {
 public:
  ReportingServices(support::EventLog& log, std::function<void()> report)
      : FakeServices(log), report_(std::move(report)) {}

  void confirmDownload(long ticketId, unsigned long long bytes) override {
    FakeServices::confirmDownload(ticketId, bytes);
    if (bytes == 500) report_();
  }

 private:
  const std::function<void()> report_;
};

class ProgressTest : public ManagerFixture {
 protected:
  void SetUp() override {
    startAsleep("A3");
    manager().pause();
    wakeScheduler();
    a_ = id("A");
    log_.clear();
  }

  static unsigned long now() {
    return static_cast<unsigned long>(kvpm::TimeTools::getTime() / kvpm::TimeTools::getTimeScale());
  }

  void makeConfirmable() {
    item("A").setTicketId(7);
    item("A").setSize(1000);
  }

  unsigned int a_ = 0;
};

TEST_F(ProgressTest, APercentIsStoredWithItsTimeAndAnnounced) {
  const unsigned long before = now();
  EXPECT_TRUE(manager().updateDownloadProgress(a_, 40));
  EXPECT_EQ(item("A").getPercentDownloaded(), 40);
  EXPECT_GE(item("A").getLastProgressUpdateTime(), before);
  EXPECT_LE(item("A").getLastProgressUpdateTime(), now());
  EXPECT_EQ(notices(), Lines{"view.itemChanged " + std::to_string(a_)});
}

TEST_F(ProgressTest, AnUnknownItemIsFalse) {
  EXPECT_FALSE(manager().updateDownloadProgress(0, 40));
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(ProgressTest, TheTimeRemainingFollowsFromTheLastTwoReports) {
  item("A").setPercentDownloaded(10);
  item("A").setLastProgressUpdateTime(1);
  const unsigned long before = now();
  manager().updateDownloadProgress(a_, 20);
  const unsigned long elapsed = item("A").getLastProgressUpdateTime() - 1;
  EXPECT_GE(elapsed + 1, before);
  EXPECT_EQ(item("A").getTimeRemaining(), elapsed * 8);
}

TEST_F(ProgressTest, AReportThatSaysNothingKeepsTheEstimate) {
  item("A").setTimeRemaining(240);
  manager().updateDownloadProgress(a_, 20);
  EXPECT_EQ(item("A").getTimeRemaining(), 240U);
}

TEST_F(ProgressTest, NothingRemainsAtTheEndAndAtTheBeginning) {
  for (const int percent : {100, 0}) {
    item("A").setTimeRemaining(240);
    manager().updateDownloadProgress(a_, percent);
    EXPECT_EQ(item("A").getTimeRemaining(), 0U) << percent;
  }
}

TEST_F(ProgressTest, ATicketsDownloadIsConfirmedAtItsFirstAndItsLastPercent) {
  makeConfirmable();
  for (const int percent : {0, 50, 51, 99, 100, 100}) {
    manager().updateDownloadProgress(a_, percent);
  }
  EXPECT_EQ(log_.lines("services."), (Lines{"services.confirm 7 500", "services.confirm 7 1000"}));
}

TEST_F(ProgressTest, NothingIsConfirmedWithoutATicketOrASize) {
  item("A").setSize(1000);
  manager().updateDownloadProgress(a_, 50);
  item("A").setPercentDownloaded(0);
  item("A").setTicketId(7);
  item("A").setSize(0);
  manager().updateDownloadProgress(a_, 50);
  EXPECT_TRUE(log_.lines("services.").empty());
  EXPECT_EQ(context_.lookups("com.vesk.playerX.pluginInterface.ZPSServices"), 0);
}

TEST_F(ProgressTest, ADownloadIsConfirmedBeforeItIsAnnounced) {
  makeConfirmable();
  manager().updateDownloadProgress(a_, 50);
  EXPECT_EQ(log_.lines(),
            (Lines{"services.confirm 7 500", "view.itemChanged " + std::to_string(a_)}));
}

TEST_F(ProgressTest, TheServicesAreKeptForTheNextConfirmation) {
  makeConfirmable();
  manager().updateDownloadProgress(a_, 50);
  manager().updateDownloadProgress(a_, 100);
  EXPECT_EQ(context_.lookups("com.vesk.playerX.pluginInterface.ZPSServices"), 1);
  EXPECT_EQ(context_.holds("com.vesk.playerX.pluginInterface.ZPSServices"), 1);
  shutDown();
  EXPECT_EQ(context_.holds("com.vesk.playerX.pluginInterface.ZPSServices"), 0);
}

TEST_F(ProgressTest, ServicesThatCannotBeLoadedAreTriedAgainAtTheNextReport) {
  makeConfirmable();
  context_.answer("com.vesk.playerX.pluginInterface.ZPSServices", KPIM::kLoadFailed);
  EXPECT_TRUE(manager().updateDownloadProgress(a_, 50));
  EXPECT_TRUE(log_.lines("services.").empty());
  context_.answer("com.vesk.playerX.pluginInterface.ZPSServices", KPIM::kSuccess);
  manager().updateDownloadProgress(a_, 100);
  EXPECT_EQ(log_.lines("services."), Lines{"services.confirm 7 1000"});
}

TEST_F(ProgressTest, APercentIsStoredAsItIs) {
  const Lines announced{"view.itemChanged " + std::to_string(a_)};
  for (const int percent : {30, 20, -5, 150}) {
    log_.clear();
    EXPECT_TRUE(manager().updateDownloadProgress(a_, percent));
    EXPECT_EQ(item("A").getPercentDownloaded(), percent);
    EXPECT_EQ(notices(), announced) << percent;
  }
}

TEST_F(ProgressTest, TheProgressIsStoredAfterItsConfirmation) {
  WatchingServices watching(log_, [this] { return percentOf("A"); });
  context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &watching);
  makeConfirmable();
  manager().updateDownloadProgress(a_, 50);
  EXPECT_EQ(watching.seen, 0);
  EXPECT_EQ(percentOf("A"), 50);
  shutDown();
}

TEST_F(ProgressTest, TheServicesMayReportProgressFromInsideAConfirmation) {
  ReportingServices reporting(log_, [this] { manager().updateDownloadProgress(a_, 100); });
  context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &reporting);
  makeConfirmable();
  manager().updateDownloadProgress(a_, 50);
  shutDown();
  EXPECT_EQ(log_.lines("services."), (Lines{"services.confirm 7 500", "services.confirm 7 1000"}));
}

TEST_F(ProgressTest, OfAViewThatIsToldOfAnOperationDoesNotWaitForServicesThatCallOne) {
  ReportingServices reporting(log_, [this] { manager().resume(); });
  context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &reporting);
  makeConfirmable();
  view_.onEvent([this](const std::string& line) {
    if (line == "view.listChanged") manager().updateDownloadProgress(a_, 50);
  });
  manager().pause();
  view_.onEvent({});
  shutDown();
  EXPECT_EQ(log_.lines("services.confirm"), Lines{"services.confirm 7 500"});
}

TEST_F(ProgressTest, AReportThatComesDuringAConfirmationNeitherRepeatsItNorIsUndone) {
  SlowServices slow(log_);
  context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &slow);
  makeConfirmable();
  std::thread reporter([this] { manager().updateDownloadProgress(a_, 50); });
  EXPECT_TRUE(slow.confirming.wait());
  EXPECT_TRUE(manager().updateDownloadProgress(a_, 51));
  EXPECT_EQ(percentOf("A"), 51);
  slow.goOn.open();
  reporter.join();
  EXPECT_EQ(percentOf("A"), 51);
  EXPECT_EQ(log_.lines("services."), Lines{"services.confirm 7 500"});
  shutDown();
}

TEST_F(ProgressTest, AnItemMayBeRemovedDuringItsConfirmation) {
  SlowServices slow(log_);
  context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &slow);
  makeConfirmable();
  bool isKnown = false;
  std::thread reporter([&] { isKnown = manager().updateDownloadProgress(a_, 50); });
  EXPECT_TRUE(slow.confirming.wait());
  EXPECT_TRUE(manager().remove(a_));
  log_.clear();
  slow.goOn.open();
  reporter.join();
  EXPECT_TRUE(isKnown) << "when it was reported";
  EXPECT_EQ(log_.lines(), Lines{"services.confirm 7 500"});
  shutDown();
}

/// Progress of a transfer that runs.
class RunningProgressTest : public ManagerFixture {
 protected:
  static VeskDrmDownloadAuthorization confirmable() {
    VeskDrmDownloadAuthorization answer;
    answer.success = true;
    answer.url = kFilm;
    answer.ticketId = 7;
    answer.totalSize = 1000;
    return answer;
  }
};

TEST_F(RunningProgressTest, AnAuthorisedTicketIsConfirmedFromItsFirstByteToItsLast) {
  services_.setAnswers({confirmable()});
  given("A1");
  start();
  const auto uid = transferOf("A");
  await("A3");
  for (const int percent : {0, 50, 75}) library_.progress(uid, percent);
  library_.complete(uid);
  await("A4");
  EXPECT_EQ(log_.lines("services.confirm"),
            (Lines{"services.confirm 7 500", "services.confirm 7 1000"}));
}

TEST_F(RunningProgressTest, AConfirmationThatTakesLongHoldsNoPauseUp) {
  SlowServices slow(log_);
  slow.setAnswers({confirmable()});
  context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &slow);
  given("A1");
  start();
  const auto uid = transferOf("A");
  await("A3");
  library_.onOwnThread([this, uid] { library_.progress(uid, 50); });
  ASSERT_TRUE(slow.confirming.wait());
  manager().pause();
  EXPECT_EQ(queue(), "A0");
  EXPECT_TRUE(log_.lines("services.confirm").empty());
  slow.goOn.open();
  shutDown();
  EXPECT_EQ(log_.lines("services.confirm"), Lines{"services.confirm 7 500"});
  library_.waitUntilIdle();
}

}  // namespace
