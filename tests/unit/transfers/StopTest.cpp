#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tests/support/Loopback.h"
#include "tests/support/Promptness.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

using Clock = std::chrono::steady_clock;
using support::Gate;
using support::Script;
using support::timeOf;

constexpr std::size_t kStopSize = 200'000;

using StopTest = DownloadsFixture;

// Far above what it takes, far below every time after which the library would give up by itself.
constexpr Milliseconds kPromptly{2000};

TEST_F(StopTest, ReturnsAtOnceAndEndsTheConnectionOfASilentServer) {
  FilmServer server(filmOf(kStopSize));
  server.stallNext(100'000);
  const auto uid = start(server.url());
  ASSERT_TRUE(receiver_.waitForPercent(uid, 50));
  EXPECT_LT(timeOf([&] {
              downloads_->stopSession(uid);
              server.server().ended(0);  // the server has seen the connection go
            }),
            kPromptly);
  EXPECT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kStopped; }));
  EXPECT_FALSE(receiver_.of(uid).isOver());
}

TEST_F(StopTest, EndsAConnectionThatDoesNotComeAbout) {
  const support::SilentPort silent;
  const auto uid = start("http://127.0.0.1:" + std::to_string(silent.port()) + "/film.avi");
  ASSERT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kArriving; }));
  downloads_->stopSession(uid);
  EXPECT_LT(timeOf([&] { downloads_.reset(); }), kPromptly);
}

TEST_F(StopTest, EndsAPauseBeforeARetry) {
  Tuning slow = shortTimes();
  slow.retry.firstPause = Milliseconds(60'000);
  restart(slow);
  FilmServer server(filmOf(kStopSize));
  server.cutNext(10);
  const auto uid = start(server.url());
  ASSERT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kWaiting; }));
  EXPECT_LT(timeOf([&] {
              downloads_->stopSession(uid);
              downloads_.reset();
            }),
            kPromptly);
}

TEST_F(StopTest, AnUnknownIdIsIgnored) {
  downloads_->stopSession(0);
  downloads_->stopSession(12345);
  FilmServer server(filmOf(10));
  EXPECT_TRUE(fetch(server.url()).complete);
}

TEST_F(StopTest, TwiceIsOnce) {
  FilmServer server(filmOf(kStopSize));
  server.stallNext(100'000);
  const auto uid = start(server.url());
  downloads_->stopSession(uid);
  downloads_->stopSession(uid);
  EXPECT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kStopped; }));
}

TEST_F(StopTest, AtAnyMomentOfTheStartIsNoFailure) {
  FilmServer server(filmOf(kStopSize));
  for (int i = 0; i < 600; ++i) {
    const std::chrono::microseconds delay(i % 100);
    const auto uid = start(server.url());
    const auto moment = Clock::now() + delay;
    while (Clock::now() < moment) {
    }
    downloads_->stopSession(uid);
    EXPECT_TRUE(support::waitFor([&] { return report(uid).phase >= TransferPhase::kComplete; }));
    ASSERT_NE(report(uid).phase, TransferPhase::kBroken)
        << delay.count() << " microseconds after it";
  }
}

TEST_F(StopTest, NothingIsReportedAfterwards) {
  Gate gate;
  FilmServer server(filmOf(kStopSize));
  server.holdNext(100'000, gate);
  const auto uid = start(server.url());
  ASSERT_TRUE(receiver_.waitForPercent(uid, 50));
  downloads_->stopSession(uid);
  const std::size_t events = receiver_.of(uid).events.size();
  gate.open();
  EXPECT_TRUE(fetch(server.url(), "other.avi").complete);
  EXPECT_EQ(receiver_.of(uid).events.size(), events);
}

TEST_F(StopTest, TheNextSessionOfTheSameAddressContinuesAtOnce) {
  FilmServer server(filmOf(kStopSize));
  for (int i = 0; i < 10; ++i) {
    server.stallNext(66'000);
    const auto uid = start(server.url());
    ASSERT_TRUE(
        receiver_.waitUntil(uid, [](const Reported& all) { return !all.percents.empty(); }));
    downloads_->stopSession(uid);
  }
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), filmBytes(kStopSize));
  for (std::size_t i = 1; i <= 10; ++i) EXPECT_NE(server.header(i, "Range"), "") << i;
  restart();
  EXPECT_EQ(filesIn(parts()), std::vector<std::string>{});
}

TEST_F(StopTest, RightAfterTheStartLeavesNothingBehind) {
  FilmServer server(filmOf(kStopSize));
  for (int i = 0; i < 50; ++i) downloads_->stopSession(start(server.url()));
  EXPECT_TRUE(fetch(server.url()).complete);
  restart();
  EXPECT_EQ(filesIn(parts()), std::vector<std::string>{});
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{"film.avi"});
}

TEST_F(StopTest, IsPossibleWithinAReport) {
  FilmServer server(filmOf(kStopSize));
  server.stallNext(100'000);
  std::atomic<unsigned long long> uid{0};
  std::atomic<bool> stopped{false};
  receiver_.during([&, &library = *downloads_](const std::string& event) {
    if (!event.starts_with("percent") || stopped.exchange(true)) return;
    EXPECT_TRUE(support::waitFor([&] { return uid != 0; }));
    library.stopSession(uid);
  });
  uid = start(server.url());
  EXPECT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kStopped; }));
  downloads_.reset();
}

TEST_F(StopTest, ASessionCanBeStartedWithinAReport) {
  FilmServer server(filmOf(1000));
  std::atomic<unsigned long long> second{0};
  receiver_.during([&](const std::string& event) {
    if (event == "complete" && second == 0) second = start(server.url("/2.avi"), "2.avi");
  });
  ASSERT_TRUE(fetch(server.url("/1.avi"), "1.avi").complete);
  ASSERT_TRUE(support::waitFor([&] { return second != 0; }));
  EXPECT_TRUE(receiver_.waitForEnd(second));
  downloads_.reset();
}

TEST_F(StopTest, TheEndOfTheLibraryKeepsWhatHasArrived) {
  FilmServer server(filmOf(kStopSize));
  server.stallNext(100'000);
  ASSERT_TRUE(receiver_.waitForPercent(start(server.url()), 50));
  EXPECT_LT(timeOf([&] { downloads_.reset(); }), kPromptly);
  restart();
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(server.header(1, "Range"), "bytes=50000-");
  EXPECT_EQ(film(), filmBytes(kStopSize));
}

TEST_F(StopTest, AReceiverThatTakesItsTimeHoldsUpNeitherTransferNorStop) {
  FilmServer server(filmOf(kStopSize));
  Gate inReport, goOn;
  receiver_.during([&](const std::string& event) {
    if (event != "began") return;
    inReport.open();
    goOn.wait();
  });
  const auto uid = start(server.url());
  ASSERT_TRUE(inReport.wait());
  EXPECT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kComplete; }));
  EXPECT_LT(timeOf([&] { downloads_->stopSession(uid); }), kPromptly);
  goOn.open();
  downloads_.reset();  // before the gates go that its reports use
}

TEST_F(StopTest, UnregisteringWaitsForTheReportOfAnotherThread) {
  FilmServer server(filmOf(1000));
  Gate inReport, goOn;
  std::atomic<bool> over{false};
  receiver_.during([&](const std::string& event) {
    if (event != "began") return;
    inReport.open();
    goOn.wait();
    over = true;
  });
  start(server.url());
  ASSERT_TRUE(inReport.wait());
  std::atomic<bool> returned{false};
  std::thread unregistering([&] {
    downloads_->setCallback(nullptr);
    EXPECT_TRUE(over);
    returned = true;
  });
  EXPECT_FALSE(support::waitFor([&] { return returned.load(); }, Milliseconds(50)));
  goOn.open();
  unregistering.join();
  downloads_.reset();
}

TEST_F(StopTest, UnregisteringWithinAReportDoesNotWait) {
  FilmServer server(filmOf(1000));
  Gate done;
  receiver_.during([&, &library = *downloads_](const std::string& event) {
    if (event != "began") return;
    library.setCallback(nullptr);
    done.open();
  });
  const auto uid = start(server.url());
  EXPECT_TRUE(done.wait());
  EXPECT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kComplete; }));
  EXPECT_EQ(receiver_.of(uid).events, std::vector<std::string>{"began"});
  downloads_.reset();
}

}  // namespace
}  // namespace playerx::transfers
