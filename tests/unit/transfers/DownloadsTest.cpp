#include <gtest/gtest.h>

#include <atomic>

#include "tests/support/ScriptedServer.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

using support::Script;

class DownloadsTest : public DownloadsFixture {};

TEST_F(DownloadsTest, AFilmArrivesUnderItsNameAndNothingIsLeftOver) {
  FilmServer server(filmOf(300'000));
  const Reported reported = fetch(server.url());
  EXPECT_TRUE(reported.complete);
  EXPECT_EQ(film(), filmBytes(300'000));
  EXPECT_EQ(reported.events.front(), "began");
  EXPECT_EQ(reported.percents.back(), 100);
  restart();
  EXPECT_EQ(filesIn(parts()), std::vector<std::string>{});
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{"film.avi"});
}

TEST_F(DownloadsTest, FilmsOfNoByteAndOfOneByteArrive) {
  for (const std::size_t size : {0, 1}) {
    FilmServer server(filmOf(size));
    const std::string name = std::to_string(size) + ".avi";
    const Reported reported = fetch(server.url(), name);
    EXPECT_EQ(reported.events, (std::vector<std::string>{"began", "percent 100", "complete"}));
    EXPECT_EQ(filesIn(movies()).back(), name);
    EXPECT_EQ(film(name), filmBytes(size));
  }
}

TEST_F(DownloadsTest, EveryPercentThatChangesIsReportedOnce) {
  support::ScriptedServer server;
  std::atomic<unsigned long long> uid{0};
  server.next(Script().readRequest().then([&](support::Connection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n");
    for (int bytes = 5; bytes <= 1000; bytes += 5) {
      connection.send("12345");
      if (bytes % 10 == 0) receiver_.waitForPercent(uid, bytes / 10);
    }
  }));
  uid = start(server.url("/film.avi"));
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  std::vector<int> wanted;
  for (int percent = 1; percent <= 100; ++percent) wanted.push_back(percent);
  EXPECT_EQ(receiver_.of(uid).percents, wanted);
}

TEST_F(DownloadsTest, TheHeadersAreForwardedAsTheyCome) {
  Film plain = filmOf(10);
  plain.extraHeaders = "X-Film: yes\r\n";
  FilmServer server(plain);
  const Reported reported = fetch(server.url());
  EXPECT_EQ(
      reported.headers,
      (std::vector<std::string>{"HTTP/1.1 200 OK\r\n", "Content-Length: 10\r\n", "ETag: \"v1\"\r\n",
                                "X-Film: yes\r\n", "Connection: close\r\n", "\r\n"}));
}

TEST_F(DownloadsTest, AFilmWithoutLengthEndsWithItsStream) {
  Film endless = filmOf(100'000);
  endless.length = false;
  FilmServer server(endless);
  const Reported reported = fetch(server.url());
  EXPECT_EQ(reported.events, (std::vector<std::string>{"began", "percent 100", "complete"}));
  EXPECT_EQ(film(), endless.content);
}

TEST_F(DownloadsTest, AFilmInChunksArrives) {
  support::ScriptedServer server;
  server.next(
      Script::answer("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                     "4\r\nfilm\r\n3\r\navi\r\n0\r\nETag: \"late\"\r\n\r\n"));
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), "filmavi");
}

TEST_F(DownloadsTest, TheRequestAsksForTheBytesAsTheyAre) {
  FilmServer server(filmOf(10));
  fetch(server.url());
  EXPECT_EQ(server.header(0, "Accept-Encoding"), "identity");
  EXPECT_EQ(server.header(0, "Range"), "");
  EXPECT_EQ(server.header(0, "Authorization"), "");
  EXPECT_TRUE(server.requests()[0].starts_with("GET /film.avi HTTP/1.1\r\n"));
}

TEST_F(DownloadsTest, ACodedBodyIsNotTakenForTheFilm) {
  support::ScriptedServer server;
  server.next(
      Script::answer("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\nabcd"));
  EXPECT_EQ(fetch(server.url()).broke, static_cast<int>(TransferFailure::kBadAnswer));
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{});
}

TEST_F(DownloadsTest, AFileOfThatNameIsNeverOverwritten) {
  folder_.write("movies/film.avi", "mine");
  folder_.write("movies/film[2].avi", "mine too");
  FilmServer server(filmOf(1000));
  const auto uid = start(server.url());
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(film("film.avi"), "mine");
  EXPECT_EQ(film("film[2].avi"), "mine too");
  EXPECT_EQ(film("film[3].avi"), filmBytes(1000));
  EXPECT_EQ(report(uid).finalPath, (movies() / "film[3].avi").string());
}

TEST_F(DownloadsTest, ANameMayLeadIntoAFolderBelow) {
  FilmServer server(filmOf(1000));
  EXPECT_TRUE(fetch(server.url(), "Season 1/film.avi").complete);
  EXPECT_EQ(film("Season 1/film.avi"), filmBytes(1000));
}

TEST_F(DownloadsTest, ANameThatLeadsOutIsRefused) {
  unsigned long long uid = 77;
  EXPECT_NE(downloads_->startSession("http://localhost/f", info("../film.avi"), &uid), 1);
  EXPECT_EQ(uid, 77u);
  TransferReport report;
  ASSERT_TRUE(downloads_->reports().findByAddress("http://localhost/f", &report));
  EXPECT_EQ(report.failure, TransferFailure::kBadName);
}

TEST_F(DownloadsTest, WhatIsNoAddressIsRefusedWithItsReason) {
  unsigned long long uid = 77;
  EXPECT_NE(downloads_->startSession("ftp://localhost/film.avi", info(), &uid), 1);
  TransferReport report;
  ASSERT_TRUE(downloads_->reports().findByAddress("ftp://localhost/film.avi", &report));
  EXPECT_EQ(report.failure, TransferFailure::kUnsupportedAddress);
  EXPECT_EQ(report.phase, TransferPhase::kBroken);
  EXPECT_EQ(report.uid, 0u);
}

TEST_F(DownloadsTest, AMissingFolderIsMade) {
  FilmServer server(filmOf(10));
  KPB::DownloadInfo deep = info();
  deep.setMoviesDirectory(movies() / "a/b");
  deep.setDownloadDirectory(parts() / "c/d");
  EXPECT_TRUE(fetch(server.url(), deep).complete);
  EXPECT_EQ(film("a/b/film.avi"), filmBytes(10));
}

TEST_F(DownloadsTest, AFolderThatCannotBeMadeBreaksBeforeAnythingIsAsked) {
  FilmServer server(filmOf(10));
  folder_.write("file", "");
  KPB::DownloadInfo below = info();
  below.setMoviesDirectory(folder_ / "file/movies");
  EXPECT_EQ(fetch(server.url(), below).broke, static_cast<int>(TransferFailure::kMediaFolder));
  below = info();
  below.setDownloadDirectory(folder_ / "file/parts");
  EXPECT_EQ(fetch(server.url(), below).broke, static_cast<int>(TransferFailure::kTempFolder));
  EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(DownloadsTest, SessionsRunSideBySide) {
  support::Gate gate;
  FilmServer slow(filmOf(100'000, 1)), quick(filmOf(1000, 2));
  slow.holdNext(50'000, gate);
  const auto held = start(slow.url(), "slow.avi");
  ASSERT_TRUE(receiver_.waitForPercent(held, 50));
  EXPECT_TRUE(fetch(quick.url(), "quick.avi").complete);
  EXPECT_FALSE(receiver_.of(held).isOver());
  gate.open();
  EXPECT_TRUE(receiver_.waitForEnd(held));
  EXPECT_EQ(film("slow.avi"), filmBytes(100'000, 1));
}

TEST_F(DownloadsTest, TwoSessionsOfOneAddressKeepTheirOwnBytes) {
  support::Gate gate;
  FilmServer server(filmOf(100'000));
  server.holdNext(50'000, gate).holdNext(60'000, gate);
  const auto first = start(server.url(), "a.avi");
  ASSERT_TRUE(receiver_.waitForPercent(first, 50));
  const auto second = start(server.url(), "b.avi");
  ASSERT_TRUE(receiver_.waitForPercent(second, 60));
  EXPECT_TRUE(partsBecome({".json", ".json", ".part", ".part"}));
  gate.open();
  EXPECT_TRUE(receiver_.waitForEnd(first));
  EXPECT_TRUE(receiver_.waitForEnd(second));
  EXPECT_EQ(film("a.avi"), filmBytes(100'000));
  EXPECT_EQ(film("b.avi"), filmBytes(100'000));
}

}  // namespace
}  // namespace playerx::transfers
