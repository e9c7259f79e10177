#include <gtest/gtest.h>

#include "tests/support/Loopback.h"
#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

using support::Script;

constexpr std::size_t kRetrySize = 200'000;

class RetryTest : public DownloadsFixture {
 protected:
  int code(TransferFailure failure) const { return static_cast<int>(failure); }
};

TEST_F(RetryTest, ALineThatBreaksIsTakenUpAgainWhereItBroke) {
  FilmServer server(filmOf(kRetrySize));
  server.cutNext(100'000).cutNext(80'000);
  const Reported reported = fetch(server.url());
  EXPECT_TRUE(reported.complete);
  EXPECT_EQ(film(), filmBytes(kRetrySize));
  EXPECT_EQ(server.requestCount(), 3u);
  EXPECT_NE(server.header(1, "Range"), "");
  EXPECT_NE(server.header(2, "Range"), "");
}

TEST_F(RetryTest, APauseCanBeEnded) {
  Tuning patient = shortTimes();
  patient.retry.firstPause = patient.retry.longestPause = std::chrono::hours(1);
  restart(patient);
  FilmServer server(filmOf(kRetrySize));
  server.cutNext(100'000);
  const auto uid = start(server.url());
  ASSERT_TRUE(support::waitFor([&] { return report(uid).failedAttempts > 0; }));
  downloads_->retryNow();
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(film(), filmBytes(kRetrySize));
}

TEST_F(RetryTest, ATryThatEndsAPauseIsOneMore) {
  Tuning patient = shortTimes();
  patient.retry.retries = 1;
  patient.retry.firstPause = patient.retry.longestPause = std::chrono::hours(1);
  restart(patient);
  FilmServer server(filmOf(kRetrySize));
  server.cutNext(100'000).cutNext(0).cutNext(0);
  const auto uid = start(server.url());
  for (std::size_t requests = 1; requests <= 3; ++requests) {
    ASSERT_TRUE(support::waitFor([&] {
      return server.requestCount() == requests && report(uid).phase == TransferPhase::kWaiting;
    }));
    downloads_->retryNow();
  }
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(film(), filmBytes(kRetrySize));
}

TEST_F(RetryTest, ARequestThatIsSilentWhenTheNetworkComesBackIsMadeAgain) {
  Tuning impatient = shortTimes();
  impatient.lostAfter = Milliseconds(0);
  FilmServer server(filmOf(kRetrySize));
  server.stallNext(100'000);
  restart(impatient);
  const auto uid = start(server.url());
  ASSERT_TRUE(receiver_.waitForPercent(uid, 1));
  downloads_->retryNow();
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(film(), filmBytes(kRetrySize));
  EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(RetryTest, AShortBodyIsNoSuccess) {
  FilmServer server(filmOf(kRetrySize));
  for (int i = 0; i < 6; ++i) server.cutNext(0);
  EXPECT_EQ(fetch(server.url()).broke, code(TransferFailure::kDropped));
  EXPECT_EQ(server.requestCount(), 6u) << "once, and five times more";
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{});
}

TEST_F(RetryTest, ProgressBeginsANewCount) {
  FilmServer server(filmOf(kRetrySize));
  for (int i = 0; i < 9; ++i) server.cutNext(70'000);  // some 5000 bytes beyond the overlap
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), filmBytes(kRetrySize));
}

TEST_F(RetryTest, TheSameBytesAgainAreNoProgress) {
  Film rangeless = filmOf(kRetrySize);
  rangeless.ranges = false;
  FilmServer server(rangeless);
  for (int i = 0; i < 20; ++i) server.cutNext(70'000);
  EXPECT_EQ(fetch(server.url()).broke, code(TransferFailure::kDropped));
  EXPECT_EQ(server.requestCount(), 6u);
}

TEST_F(RetryTest, AResetIsABrokenLine) {
  support::ScriptedServer server;
  server.next(Script().readRequest().reset());
  server.next(Script::answer(support::okResponse("film")));
  EXPECT_TRUE(fetch(server.url("/film.avi")).complete);
  EXPECT_EQ(film(), "film");
}

TEST_F(RetryTest, AServerThatFallsSilentIsAskedAgain) {
  Tuning impatient = shortTimes();
  impatient.stall = Milliseconds(100);
  restart(impatient);
  FilmServer server(filmOf(kRetrySize));
  server.stallNext(100'000).stallNext(0);
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), filmBytes(kRetrySize));
}

TEST_F(RetryTest, AServerThatStaysSilentBreaksAndWhatCameIsKept) {
  Tuning impatient = shortTimes();
  impatient.stall = Milliseconds(50);
  restart(impatient);
  FilmServer server(filmOf(kRetrySize));
  server.cutNext(100'000);
  for (int i = 0; i < 20; ++i) server.stallNext(0);
  EXPECT_EQ(fetch(server.url()).broke, code(TransferFailure::kStalled));
  server.answerAsUsual();
  restart();
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_NE(server.header(server.requestCount() - 1, "Range"), "");
}

TEST_F(RetryTest, TheUsualTimesAreThose) {
  const Tuning usual;
  EXPECT_EQ(usual.stall, std::chrono::seconds(30));
  EXPECT_EQ(usual.lostAfter, std::chrono::seconds(5));
  EXPECT_EQ(usual.connectTimeout, std::chrono::seconds(30));
  EXPECT_EQ(usual.retry.retries, 5u);
}

TEST_F(RetryTest, ABusyServerIsAskedAgainNotBeforeItSays) {
  Tuning patient = shortTimes();
  patient.retry.longestRetryAfter = Milliseconds(300);
  restart(patient);
  FilmServer server(filmOf(kRetrySize));
  server.answerNext("HTTP/1.1 503 Busy\r\nRetry-After: 100000\r\nContent-Length: 0\r\n\r\n");
  server.answerNext("HTTP/1.1 429 Busy\r\nContent-Length: 0\r\n\r\n");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, Milliseconds(300));
}

TEST_F(RetryTest, AServerThatStaysBusyBreaksUnderItsStatus) {
  FilmServer server(filmOf(kRetrySize));
  for (int i = 0; i < 6; ++i) {
    server.answerNext("HTTP/1.1 503 Busy\r\nContent-Length: 0\r\n\r\n");
  }
  EXPECT_EQ(fetch(server.url()).broke, 503);
  EXPECT_EQ(server.requestCount(), 6u);
}

TEST_F(RetryTest, OtherStatusesBreakAtOnceUnderTheirOwnNumber) {
  for (const int status : {400, 401, 403, 404, 410, 500, 502}) {
    FilmServer server(filmOf(kRetrySize));
    server.answerNext("HTTP/1.1 " + std::to_string(status) +
                      " X\r\nContent-Length: 4\r\nConnection: close\r\n\r\nsorry");
    EXPECT_EQ(fetch(server.url()).broke, status);
    EXPECT_EQ(server.requestCount(), 1u);
  }
  EXPECT_TRUE(partsBecome({})) << "nothing came, nothing is kept";
}

TEST_F(RetryTest, NoSuchHostAndAClosedPortBreakAtOnce) {
  const support::RefusingPort closed;
  EXPECT_EQ(fetch("http://127.0.0.1:" + std::to_string(closed.port()) + "/film.avi").broke,
            code(TransferFailure::kRefused));
  EXPECT_EQ(fetch("http://no-such-host.invalid/film.avi").broke,
            code(TransferFailure::kNoSuchHost));
}

TEST_F(RetryTest, AConnectionThatDoesNotComeAboutIsGivenUpInTime) {
  Tuning impatient = shortTimes();
  impatient.connectTimeout = Milliseconds(50);
  restart(impatient);
  const support::SilentPort silent;
  EXPECT_EQ(fetch("http://127.0.0.1:" + std::to_string(silent.port()) + "/film.avi").broke,
            code(TransferFailure::kTimeout));
}

TEST_F(RetryTest, AServerThatGoesAwayAndComesBackIsWaitedFor) {
  Tuning patient = shortTimes();
  patient.retry.firstPause = patient.retry.longestPause = Milliseconds(50);
  patient.retry.retries = 1000;
  restart(patient);
  support::Nginx server({.limitRate = "1m"});  // one second's worth comes at once
  server.serve("film.avi", filmBytes(10 * kRetrySize));
  const auto uid = start(server.url("/film.avi", "127.0.0.1"));
  ASSERT_TRUE(receiver_.waitForPercent(uid, 1));
  server.stop();
  ASSERT_TRUE(support::waitFor([&] { return report(uid).failure == TransferFailure::kRefused; }));
  server.start();
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(film(), filmBytes(10 * kRetrySize));
}

TEST_F(RetryTest, ARetryIsVisibleUntilItGoesWell) {
  Tuning slow = shortTimes();
  slow.retry.firstPause = slow.retry.longestPause = Milliseconds(60'000);
  restart(slow);
  FilmServer server(filmOf(kRetrySize));
  server.cutNext(100'000);
  const auto uid = start(server.url());
  ASSERT_TRUE(support::waitFor([&] { return report(uid).failedAttempts == 1; }));
  EXPECT_EQ(report(uid).phase, TransferPhase::kWaiting);
  EXPECT_EQ(report(uid).failure, TransferFailure::kDropped);
  EXPECT_FALSE(report(uid).detail.empty());
  downloads_->stopSession(uid);
}

TEST_F(RetryTest, NonsenseIsNotRetried) {
  for (const char* answer : {"what?\r\n\r\n", "HTTP/1.1 2x0 OK\r\n\r\n", "HTTP/1.1 999 X\r\n\r\n",
                             "HTTP/1.1 206 OK\r\nContent-Range: bytes 0-3/4\r\n\r\nfilm"}) {
    support::ScriptedServer server;
    server.always(Script::answer(answer));
    EXPECT_EQ(fetch(server.url("/film.avi")).broke, code(TransferFailure::kBadAnswer)) << answer;
    EXPECT_EQ(server.connectionCount(), 1u);
  }
}

TEST_F(RetryTest, EndlessHeadersAreNonsense) {
  support::ScriptedServer server;
  std::string headers = "HTTP/1.1 200 OK\r\n";
  for (int i = 0; i < 10'000; ++i) headers += "X-Header: " + std::string(90, 'x') + "\r\n";
  server.always(Script::answer(headers));
  EXPECT_EQ(fetch(server.url("/film.avi")).broke, code(TransferFailure::kBadAnswer));
}

TEST_F(RetryTest, ABodyLongerThanItsFileIsNotKept) {
  FilmServer server(filmOf(1000));
  server.cutNext(500);
  server.answerNext("HTTP/1.1 206 OK\r\nETag: \"v1\"\r\nContent-Range: bytes 250-999/1000\r\n\r\n" +
                    filmBytes(1000).substr(250) + "and more");
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), filmBytes(1000));
}

}  // namespace
}  // namespace playerx::transfers
