#include <gtest/gtest.h>

#include <QCryptographicHash>

#include "tests/support/Nginx.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

constexpr std::size_t kSettingsSize = 300'000;

std::string sumOf(const std::string& content) {
  const QByteArray bytes = QByteArray::fromStdString(content);
  return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().toStdString();
}

/// What the host may set for all sessions.
class SettingsTest : public DownloadsFixture {
 protected:
  SettingsTest() : server_(filmOf(kSettingsSize)) {}

  FilmServer server_;
};

TEST_F(SettingsTest, ARateLimitIsFollowedUntilItIsLifted) {
  downloads_->setRateLimit(3000);
  const auto uid = start(server_.url());
  ASSERT_TRUE(receiver_.waitForPercent(uid, 1));
  EXPECT_FALSE(receiver_.of(uid).isOver()) << "100 seconds would be needed";
  downloads_->setRateLimit(0);
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(film(), filmBytes(kSettingsSize));
}

TEST_F(SettingsTest, ARateLimitThatComesLaterIsFollowedToo) {
  support::Gate gate;
  server_.holdNext(kSettingsSize / 10, gate);
  const auto uid = start(server_.url());
  ASSERT_TRUE(receiver_.waitForPercent(uid, 10));
  downloads_->setRateLimit(3000);
  gate.open();
  ASSERT_TRUE(receiver_.waitForPercent(uid, 11));
  EXPECT_FALSE(receiver_.of(uid).isOver());
  downloads_->setRateLimit(0);
  EXPECT_TRUE(receiver_.waitForEnd(uid));
}

TEST_F(SettingsTest, ALowRateLimitIsNoSilenceOfTheServer) {
  downloads_->setFilmOptions(server_.url(), {.tries = 1, .timeout = std::chrono::seconds(1)});
  downloads_->setRateLimit(8000);
  const auto uid = start(server_.url());
  ASSERT_TRUE(receiver_.waitForPercent(uid, 11)) << "each piece takes two seconds";
  EXPECT_FALSE(receiver_.of(uid).isOver());
}

TEST_F(SettingsTest, SoManyTriesAreMade) {
  for (const unsigned tries : {1U, 3U}) {
    support::ScriptedServer server;
    server.always(support::Script().readRequest().reset());
    downloads_->setFilmOptions(server.url("/film.avi"), {.tries = tries});
    EXPECT_EQ(fetch(server.url("/film.avi")).broke, static_cast<int>(TransferFailure::kDropped));
    EXPECT_EQ(server.connectionCount(), tries);
  }
}

TEST_F(SettingsTest, ASilentServerIsGivenUpInTime) {
  downloads_->setFilmOptions(server_.url(), {.tries = 1, .timeout = std::chrono::seconds(1)});
  server_.stallNext(100);
  EXPECT_EQ(fetch(server_.url()).broke, static_cast<int>(TransferFailure::kStalled));
}

TEST_F(SettingsTest, HeadersAndRefererAreSent) {
  downloads_->setFilmOptions(server_.url(), {.headers = {"X-Club: films", "X-Bad: a\r\nX-Worse: b"},
                                             .referer = "http://club/"});
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_EQ(server_.header(0, "X-Club"), "films");
  EXPECT_EQ(server_.header(0, "Referer"), "http://club/");
  EXPECT_EQ(server_.requests()[0].find("X-Worse"), std::string::npos);
}

TEST_F(SettingsTest, AHeaderThatTheLibrarySetsItselfIsLeftOut) {
  downloads_->setFilmOptions(server_.url(), {.headers = {"RANGE: bytes=5-"}});
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_EQ(film(), filmBytes(kSettingsSize));
}

TEST_F(SettingsTest, OptionsHoldForTheRetryToo) {
  downloads_->setFilmOptions(server_.url(), {.headers = {"X-Club: films"}});
  server_.cutNext(kSettingsSize / 2);
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_EQ(server_.header(1, "X-Club"), "films");
}

TEST_F(SettingsTest, TheNetrcFileOpensTheServer) {
  support::Nginx server({.user = "anna", .password = "secret"});
  server.serve("film.avi", filmBytes(kSettingsSize));
  EXPECT_EQ(fetch(server.url("/film.avi")).broke, 401);
  const auto netrc = folder_.write("netrc", "machine localhost login anna password secret\n");
  downloads_->setFilmOptions(server.url("/film.avi"), {.netrcFile = netrc});
  EXPECT_TRUE(fetch(server.url("/film.avi")).complete);
}

TEST_F(SettingsTest, CredentialsInTheAddressOpenTheServerAndAreToldToNobody) {
  support::Nginx server({.user = "anna", .password = "secret"});
  server.serve("film.avi", filmBytes(kSettingsSize));
  std::string url = server.url("/film.avi");
  url.insert(std::string("http://").size(), "anna:secret@");
  const auto uid = start(url);
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_TRUE(receiver_.of(uid).complete);
  EXPECT_EQ(report(uid).address, server.url("/film.avi"));
}

TEST_F(SettingsTest, CookiesAreKeptFromOneSessionToTheNext) {
  Film film = filmOf(kSettingsSize);
  film.extraHeaders = "Set-Cookie: visit=1; Max-Age=1000\r\n";
  server_.setFilm(film);
  const auto jar = folder_ / "cookies";
  for (const char* name : {"/a.avi", "/b.avi"}) {
    downloads_->setFilmOptions(server_.url(name), {.cookieFile = jar});
  }
  EXPECT_TRUE(fetch(server_.url("/a.avi"), "a.avi").complete);
  EXPECT_TRUE(fetch(server_.url("/b.avi"), "b.avi").complete);
  EXPECT_EQ(server_.header(0, "Cookie"), "");
  EXPECT_EQ(server_.header(1, "Cookie"), "visit=1");
  EXPECT_NE(support::readFile(jar).find("visit"), std::string::npos);
}

TEST_F(SettingsTest, AFilmWithTheRightChecksumGetsItsName) {
  std::string sum = sumOf(filmBytes(kSettingsSize));
  sum[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(sum[0])));
  ASSERT_TRUE(downloads_->setFilmOptions(server_.url(), {.sha256 = sum}));
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_EQ(film(), filmBytes(kSettingsSize));
}

TEST_F(SettingsTest, AFilmWithAnotherChecksumIsDeletedAndSaysSo) {
  ASSERT_TRUE(downloads_->setFilmOptions(server_.url(), {.sha256 = sumOf("another film")}));
  const auto uid = start(server_.url());
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(receiver_.of(uid).broke, static_cast<int>(TransferFailure::kChecksum));
  EXPECT_NE(report(uid).detail.find(sumOf(filmBytes(kSettingsSize))), std::string::npos);
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{});
  EXPECT_TRUE(partsBecome({}));
}

TEST_F(SettingsTest, TheChecksumIsReadFromTheFileBesideTheFilm) {
  support::Nginx server;
  for (const char* name : {"good.avi", "bad.avi", "bare.avi"})
    server.serve(name, filmBytes(kSettingsSize));
  server.serve("good.avi.sha256", sumOf(filmBytes(kSettingsSize)) + "  good.avi\n");
  server.serve("bad.avi.sha256", sumOf("another film") + "  bad.avi\n");
  const auto fetchSummed = [&](const std::string& name) {
    downloads_->setFilmOptions(server.url("/" + name), {.hasChecksumFile = true});
    return fetch(server.url("/" + name), name);
  };
  EXPECT_TRUE(fetchSummed("good.avi").complete);
  EXPECT_EQ(fetchSummed("bad.avi").broke, static_cast<int>(TransferFailure::kChecksum));
  EXPECT_EQ(fetchSummed("bare.avi").broke, static_cast<int>(TransferFailure::kNoChecksum));
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{"good.avi"});
}

TEST_F(SettingsTest, AChecksumCanBeTakenBack) {
  ASSERT_TRUE(downloads_->setFilmOptions(server_.url(), {.sha256 = sumOf("another film")}));
  ASSERT_TRUE(downloads_->setFilmOptions(server_.url(), {}));
  EXPECT_TRUE(fetch(server_.url()).complete);
}

TEST_F(SettingsTest, WhatIsNoChecksumIsRefused) {
  for (const std::string& text : {std::string("abc"), std::string(64, 'g'), std::string(65, 'a')}) {
    EXPECT_FALSE(downloads_->setFilmOptions(server_.url(), {.sha256 = text})) << text;
  }
  EXPECT_FALSE(downloads_->setFilmOptions("nonsense", {}));
}

}  // namespace
}  // namespace playerx::transfers
