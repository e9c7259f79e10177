#include <gtest/gtest.h>

#include "playerx/transfers/Address.h"
#include "playerx/transfers/FilmMark.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

using support::Script;

constexpr std::size_t kResumedSize = 400'000;
constexpr std::size_t kHalf = kResumedSize / 2;
constexpr std::size_t kOverlap = 65'536;

class ResumeTest : public DownloadsFixture {
 protected:
  /// Leaves half of the film behind, as a session that was stopped does.
  void leaveHalf(FilmServer& server, const std::string& path = "/film.avi",
                 const std::string& name = "film.avi") {
    server.stallNext(kHalf);
    fetchUntil(50, server.url(path), name);
    ASSERT_TRUE(partsBecome({".json", ".part"}));
    restart();
  }
  std::string partFile() const {
    for (const std::string& name : filesIn(parts())) {
      if (name.ends_with(".part")) return parts() / name;
    }
    return {};
  }
};

TEST_F(ResumeTest, ALaterSessionContinuesWithRangeAndCondition) {
  FilmServer server(filmOf(kResumedSize));
  leaveHalf(server);
  const Reported reported = fetch(server.url());
  EXPECT_TRUE(reported.complete);
  EXPECT_EQ(film(), filmBytes(kResumedSize));
  EXPECT_EQ(server.header(1, "Range"), "bytes=" + std::to_string(kHalf - kOverlap) + "-");
  EXPECT_EQ(server.header(1, "If-Range"), "\"v1\"");
}

TEST_F(ResumeTest, ThePercentThatAreThereAreReportedFirst) {
  FilmServer server(filmOf(kResumedSize));
  leaveHalf(server);
  const Reported reported = fetch(server.url());
  EXPECT_EQ(reported.events[0], "began");
  EXPECT_GE(reported.percents.front(), 50);
}

TEST_F(ResumeTest, WithoutStrongValidatorTheOverlapDecides) {
  Film weak = filmOf(kResumedSize);
  weak.etag = "W/\"v1\"";
  FilmServer server(weak);
  leaveHalf(server);
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(server.requestCount(), 2u);
  EXPECT_EQ(server.header(1, "Range"), "bytes=" + std::to_string(kHalf - kOverlap) + "-");
  EXPECT_EQ(server.header(1, "If-Range"), "");
  EXPECT_EQ(film(), weak.content);
}

TEST_F(ResumeTest, AnOldDateIsACondition) {
  Film dated = filmOf(kResumedSize);
  dated.etag.clear();
  dated.lastModified = "Wed, 01 Jan 2025 00:00:00 GMT";
  dated.date = "Wed, 01 Jan 2025 12:00:00 GMT";
  FilmServer server(dated);
  leaveHalf(server);
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(server.header(1, "If-Range"), dated.lastModified);
  EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(ResumeTest, AnotherVersionStartsOver) {
  FilmServer server(filmOf(kResumedSize, 1));
  leaveHalf(server);
  Film changed = filmOf(kResumedSize, 2);
  changed.etag = "\"v2\"";
  server.setFilm(changed);
  const Reported reported = fetch(server.url());
  EXPECT_TRUE(reported.complete);
  EXPECT_EQ(film(), changed.content);
  EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(ResumeTest, AnotherVersionIsFoundOutEvenWhenTheServerIgnoresTheCondition) {
  FilmServer server(filmOf(kResumedSize, 1));
  leaveHalf(server);
  Film changed = filmOf(kResumedSize, 2);
  changed.etag = "\"v2\"";
  changed.minds = false;
  server.setFilm(changed);
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), changed.content);
  EXPECT_EQ(server.header(2, "Range"), "");
}

TEST_F(ResumeTest, AnotherVersionOfTheSameSizeWithoutValidatorIsFoundOutByItsBytes) {
  Film plain = filmOf(kResumedSize, 1);
  plain.etag.clear();
  FilmServer server(plain);
  leaveHalf(server);
  plain.content = filmBytes(kResumedSize, 2);
  server.setFilm(plain);
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), plain.content);
}

TEST_F(ResumeTest, AVersionOfAnotherSizeIsFoundOutByItsTotal) {
  Film plain = filmOf(kResumedSize, 1);
  plain.etag.clear();
  FilmServer server(plain);
  leaveHalf(server);
  plain.content += "more";  // the bytes there are still its beginning
  server.setFilm(plain);
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), plain.content);
  EXPECT_EQ(server.header(2, "Range"), "");
}

TEST_F(ResumeTest, AServerWithoutRangesStartsOver) {
  Film rangeless = filmOf(kResumedSize);
  rangeless.ranges = false;
  FilmServer server(rangeless);
  leaveHalf(server);
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), rangeless.content);
  EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(ResumeTest, ARangeThatBeginsElsewhereIsNotAppended) {
  FilmServer server(filmOf(kResumedSize));
  leaveHalf(server);
  const std::string rest = filmBytes(kResumedSize).substr(kHalf);
  server.answerNext("HTTP/1.1 206 OK\r\nETag: \"v1\"\r\nContent-Range: bytes " +
                    std::to_string(kHalf) + "-" + std::to_string(kResumedSize - 1) + "/" +
                    std::to_string(kResumedSize) + "\r\nContent-Length: " +
                    std::to_string(rest.size()) + "\r\nConnection: close\r\n\r\n" + rest);
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), filmBytes(kResumedSize));
  EXPECT_EQ(server.header(2, "Range"), "");
}

TEST_F(ResumeTest, NoSuchRangeWithEverythingThereFinishes) {
  FilmServer server(filmOf(kResumedSize));
  server.stallNext(kResumedSize - 1);
  fetchUntil(99, server.url());
  ASSERT_TRUE(partsBecome({".json", ".part"}));
  restart();
  // The last byte arrived without anybody learning of it.
  support::writeFile(partFile(), filmBytes(kResumedSize));
  server.answerNext(
      "HTTP/1.1 416 No\r\nContent-Length: 0\r\nETag: \"v1\"\r\nContent-Range: bytes */" +
      std::to_string(kResumedSize) + "\r\nConnection: close\r\n\r\n");
  EXPECT_EQ(fetch(server.url()).events,
            (std::vector<std::string>{"began", "percent 100", "complete"}));
  EXPECT_EQ(film(), filmBytes(kResumedSize));
  EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(ResumeTest, EverythingThereIsProvenByItsLastBytes) {
  FilmServer server(filmOf(kResumedSize));
  server.stallNext(kResumedSize - 1);
  fetchUntil(99, server.url());
  ASSERT_TRUE(partsBecome({".json", ".part"}));
  restart();
  support::writeFile(partFile(), filmBytes(kResumedSize));
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(server.header(1, "Range"), "bytes=" + std::to_string(kResumedSize - kOverlap) + "-");
}

TEST_F(ResumeTest, APartialThatSomebodyChangedStartsOver) {
  FilmServer server(filmOf(kResumedSize));
  leaveHalf(server);
  support::writeFile(partFile(), filmBytes(kHalf, 9));
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(film(), filmBytes(kResumedSize));
}

TEST_F(ResumeTest, APartialWithoutItsStateIsNotBelieved) {
  FilmServer server(filmOf(kResumedSize));
  leaveHalf(server);
  for (const std::string& name : filesIn(parts())) {
    if (name.ends_with(".json")) support::writeFile(parts() / name, "{torn");
  }
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(server.header(1, "Range"), "");
  EXPECT_EQ(film(), filmBytes(kResumedSize));
}

TEST_F(ResumeTest, TwoFilmsOfOneNameKeepTheirOwnBytes) {
  FilmServer one(filmOf(kResumedSize, 1)), other(filmOf(kResumedSize, 2));
  leaveHalf(one);
  EXPECT_TRUE(fetch(other.url()).complete);
  EXPECT_EQ(film(), filmBytes(kResumedSize, 2));
  EXPECT_EQ(other.header(0, "Range"), "");
  EXPECT_TRUE(fetch(one.url(), "film[2].avi").complete);
  EXPECT_NE(one.header(1, "Range"), "");
  EXPECT_EQ(film("film[2].avi"), filmBytes(kResumedSize, 1));
}

TEST_F(ResumeTest, AFilmWhosePathWasChangedKeepsItsBytes) {
  FilmServer server(filmOf(kResumedSize));
  leaveHalf(server);
  EXPECT_TRUE(fetch(server.url(), "other name.avi").complete);
  EXPECT_NE(server.header(1, "Range"), "");
  EXPECT_EQ(film("other name.avi"), filmBytes(kResumedSize));
}

TEST_F(ResumeTest, AnotherQueryIsAnotherFilm) {
  FilmServer server(filmOf(kResumedSize));
  leaveHalf(server, "/film.avi?id=1");
  EXPECT_TRUE(fetch(server.url("/film.avi?id=2")).complete);
  EXPECT_EQ(server.header(1, "Range"), "");
}

TEST_F(ResumeTest, ARightsManagedFilmIsKnownByItsPlaceAlone) {
  FilmServer server(filmOf(kResumedSize));
  leaveHalf(server, "/film.avi?token=1");
  KPB::DownloadInfo managed = info();
  const unsigned char rights[] = {1, 2, 3};
  managed.setSTRDChunk(rights, sizeof rights);
  EXPECT_TRUE(fetch(server.url("/film.avi?token=2"), managed).complete);
  EXPECT_NE(server.header(1, "Range"), "");
  EXPECT_EQ(film(), filmBytes(kResumedSize));
  EXPECT_EQ(film("film.avi.rights"), "\x01\x02\x03");
}

TEST_F(ResumeTest, AnExpiredAddressKeepsThePartialForTheNextAuthorisation) {
  FilmServer server(filmOf(kResumedSize));
  KPB::DownloadInfo managed = info();
  managed.setTempUsername("anna");
  for (const char* status : {"401 Unauthorized", "403 Forbidden", "410 Gone"}) {
    server.stallNext(kHalf);
    fetchUntil(50, server.url("/film.avi?token=1"), managed);
    server.answerNext("HTTP/1.1 " + std::string(status) +
                      "\r\nContent-Length: 3\r\nConnection: close\r\n\r\nno!");
    EXPECT_EQ(fetch(server.url("/film.avi?token=1"), managed).broke, std::stoi(status));
    const std::size_t before = server.requestCount();
    EXPECT_TRUE(fetch(server.url("/film.avi?token=2"), managed).complete);
    EXPECT_NE(server.header(before, "Range"), "");
    EXPECT_EQ(film(), filmBytes(kResumedSize));
    restart();
    std::filesystem::remove(movies() / "film.avi");
  }
}

TEST_F(ResumeTest, AVeryShortPartialIsContinuedToo) {
  FilmServer server(filmOf(1000));
  server.stallNext(10);
  fetchUntil(1, server.url());
  restart();
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_EQ(server.header(1, "Range"), "bytes=5-");
  EXPECT_EQ(film(), filmBytes(1000));
}

TEST_F(ResumeTest, AFilmWhoseTotalWasNotKnownIsContinued) {
  Film endless = filmOf(kResumedSize);
  endless.length = false;
  FilmServer server(endless);
  server.stallNext(kHalf);
  const auto uid = start(server.url());
  ASSERT_TRUE(support::waitFor([&] { return report(uid).arrived >= kHalf; }));
  downloads_->stopSession(uid);
  endless.length = true;
  server.setFilm(endless);
  EXPECT_TRUE(fetch(server.url()).complete);
  EXPECT_NE(server.header(1, "Range"), "");
  EXPECT_EQ(film(), endless.content);
}

TEST_F(ResumeTest, ARangeThatIsAnsweredInPartsIsAskedForUntilItIsThere) {
  const std::string content = filmBytes(1000);
  support::ScriptedServer server;
  server.onRequest([&](const std::string& request) {
    const std::string range = headerOf(request, "Range");
    if (range.empty()) {
      return Script()
          .send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + content.substr(0, 100))
          .closeNow();
    }
    const std::size_t first = std::stoull(range.substr(6));
    const std::size_t last = std::min<std::size_t>(first + 299, 999);
    const std::string body = content.substr(first, last - first + 1);
    return Script().send("HTTP/1.1 206 OK\r\nContent-Range: bytes " + std::to_string(first) + "-" +
                         std::to_string(last) + "/1000\r\nContent-Length: " +
                         std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
  });
  Tuning tuning = shortTimes();
  tuning.overlap = 50;
  tuning.retry.retries = 1;
  restart(tuning);
  EXPECT_TRUE(fetch(server.url("/film.avi")).complete);
  EXPECT_EQ(film(), content);
}

TEST_F(ResumeTest, AServerThatChangesTheFilmWithEveryAnswerIsGivenUp) {
  support::ScriptedServer server;
  std::atomic<int> version{0};
  server.onRequest([&](const std::string& request) {
    const std::string tag = "ETag: \"" + std::to_string(++version) + "\"\r\n";
    if (headerOf(request, "Range").empty()) {
      return Script()
          .send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n" + tag + "\r\n" +
                filmBytes(500 + version))
          .closeNow();
    }
    return Script().send("HTTP/1.1 206 OK\r\nContent-Range: bytes 250-999/1000\r\n" + tag + "\r\n");
  });
  EXPECT_EQ(fetch(server.url("/film.avi")).broke,
            static_cast<int>(TransferFailure::kKeepsChanging));
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{});
}

TEST_F(ResumeTest, AServerWhoseEveryBrokenAnswerIsAnotherFilmIsGivenUp) {
  support::ScriptedServer server;
  std::atomic<int> version{0};
  server.onRequest([&](const std::string&) {
    const std::string tag = "ETag: \"" + std::to_string(++version) + "\"\r\n";
    return Script()
        .send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n" + tag + "\r\n" +
              filmBytes(500 + version))
        .closeNow();
  });
  EXPECT_EQ(fetch(server.url("/film.avi")).broke,
            static_cast<int>(TransferFailure::kKeepsChanging));
}

TEST_F(ResumeTest, WhatStandsInThePlaceOfAPartialIsSteppedOver) {
  support::ScriptedServer server;
  server.always(Script::answer(support::okResponse("film")));
  const std::string url = server.url("/film.avi");
  const std::filesystem::path place = parts() / digestOf(parseAddress(url)->place);
  std::filesystem::create_directories(place.string() + ".part");
  std::filesystem::create_symlink("/nowhere", place.string() + "-2.part");
  EXPECT_TRUE(fetch(url).complete);
  EXPECT_EQ(film(), "film");
  EXPECT_TRUE(std::filesystem::is_directory(place.string() + ".part"));
  EXPECT_TRUE(std::filesystem::is_symlink(place.string() + "-2.part"));
}

}  // namespace
}  // namespace playerx::transfers
