#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>

#include "playerx/cli/Reporter.h"
#include "tests/support/JsonSchema.h"

namespace playerx::cli {
namespace {

using model::ItemState;

ItemState film(DownloadStatusEnumType status, int percent = 0) {
  ItemState item;
  item.id = 7;
  item.title = "Film";
  item.url = "http://h/film.avi";
  item.provider = "h";
  item.path = "/m/film.avi";
  item.status = status;
  item.percent = percent;
  item.size = 2'000'000;
  return item;
}

const reasons::Explanation kReason{reasons::reasonOfStatus(404), "It is not there"};

class ReporterTest : public testing::Test {
 protected:
  std::ostringstream out;
  std::ostringstream notes;

  nlohmann::json onlyLine() const {
    const std::string text = out.str();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    const auto line = nlohmann::json::parse(text);
    EXPECT_EQ(support::faultsOf(line, support::schemaOfLines()), "");
    return line;
  }
};

TEST_F(ReporterTest, JsonNamesEveryFieldOfAnAddedItem) {
  makeJsonReporter(out, notes)->added(film(DownloadStatusQueued));
  EXPECT_EQ(onlyLine(), (nlohmann::json{{"version", 1},
                                        {"event", "added"},
                                        {"id", 7},
                                        {"url", "http://h/film.avi"},
                                        {"title", "Film"},
                                        {"provider", "h"},
                                        {"status", "queued"},
                                        {"percent", 0},
                                        {"size", 2'000'000},
                                        {"path", "/m/film.avi"}}));
}

TEST_F(ReporterTest, AFilmThatWasThereIsFinishedForAProgram) {
  makeJsonReporter(out, notes)->wasThere(film(DownloadStatusCompleted));
  EXPECT_EQ(onlyLine()["event"], "finished");
  EXPECT_EQ(onlyLine()["path"], "/m/film.avi");
  out.str("");
  makeLineReporter(out, notes)->wasThere(film(DownloadStatusCompleted));
  EXPECT_EQ(out.str() + notes.str(), "");
}

TEST_F(ReporterTest, JsonFailuresCarryCodeBesideSentence) {
  makeJsonReporter(out, notes)->failed(film(DownloadStatusFailed), kReason);
  EXPECT_EQ(onlyLine()["event"], "failed");
  EXPECT_EQ(onlyLine()["reason"],
            (nlohmann::json{{"code", "http_404"}, {"sentence", "It is not there."}}));
}

TEST_F(ReporterTest, JsonStaysValidWhateverATitleHolds) {
  ItemState item = film(DownloadStatusQueued);
  item.title = "a\"\n\xFF\033b";
  makeJsonReporter(out, notes)->added(item);
  EXPECT_EQ(onlyLine()["title"], "a\"\n\xEF\xBF\xBD\033b");
}

TEST_F(ReporterTest, JsonSentencesStayOffStandardOutput) {
  const auto reporter = makeJsonReporter(out, notes);
  reporter->note("Hello.");
  reporter->done("Removed: Film.");
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(notes.str(), "Hello.\nRemoved: Film.\n");
}

TEST_F(ReporterTest, LinesAppearOncePerState) {
  const auto reporter = makeLineReporter(out, notes);
  reporter->added(film(DownloadStatusQueued));
  reporter->changed(film(DownloadStatusDownloading, 1), {});
  reporter->changed(film(DownloadStatusDownloading, 2), {});
  reporter->finished(film(DownloadStatusCompleted, 100), "");
  EXPECT_EQ(out.str(),
            "queued: Film (2.0 MB)\n"
            "downloading: Film (2.0 MB)\n"
            "completed: Film (2.0 MB) -> /m/film.avi\n");
}

TEST_F(ReporterTest, WhatIsOddAboutAFilmComesWithItsOutcome) {
  makeLineReporter(out, notes)->finished(film(DownloadStatusCompleted, 100), "It is short.");
  EXPECT_EQ(notes.str(), "It is short.\n");
  out.str("");
  makeJsonReporter(out, notes)->finished(film(DownloadStatusCompleted, 100), "It is short.");
  EXPECT_EQ(onlyLine()["oddity"], "It is short.");
  out.str("");
  makeJsonReporter(out, notes)->finished(film(DownloadStatusCompleted, 100), "");
  EXPECT_FALSE(onlyLine().contains("oddity"));
}

TEST_F(ReporterTest, FailuresAreNamedWithTheirReason) {
  makeLineReporter(out, notes)->failed(film(DownloadStatusFailed), kReason);
  EXPECT_EQ(notes.str(), "failed: Film: It is not there.\n");
}

TEST_F(ReporterTest, JsonTellsTheProgressOfAnItemWithNullForWhatIsNotKnown) {
  const auto reporter = makeJsonReporter(out, notes);
  reporter->changed(film(DownloadStatusDownloading, 50), {1'000'000, 5000, 200, 0, false});
  EXPECT_EQ(onlyLine()["arrived"], 1'000'000);
  EXPECT_EQ(onlyLine()["bytesPerSecond"], 5000);
  EXPECT_EQ(onlyLine()["secondsRemaining"], 200);
  out.str("");
  reporter->changed(film(DownloadStatusDownloading, 50), {});
  EXPECT_TRUE(onlyLine()["arrived"].is_null());
  EXPECT_TRUE(onlyLine()["secondsRemaining"].is_null());
}

TEST_F(ReporterTest, JsonListsAFailedItemWithItsReason) {
  makeJsonReporter(out, notes)
      ->listed({.position = 3, .item = film(DownloadStatusFailed), .reason = kReason});
  EXPECT_EQ(onlyLine()["position"], 3);
  EXPECT_EQ(onlyLine()["reason"]["code"], "http_404");
}

TEST_F(ReporterTest, JsonTellsTheProgressOfTheWholeQueue) {
  makeJsonReporter(out, notes)->listedAll({7, 2, 1300, 4000, 1, true});
  EXPECT_EQ(onlyLine(), (nlohmann::json{{"version", 1},
                                        {"event", "queue"},
                                        {"items", 7},
                                        {"completed", 2},
                                        {"arrived", 1300},
                                        {"total", 4000},
                                        {"unknownSizes", 1},
                                        {"paused", true}}));
}

TEST_F(ReporterTest, AListedItemHasItsPosition) {
  makeLineReporter(out, notes)->listed({.position = 2, .item = film(DownloadStatusPaused, 30)});
  EXPECT_EQ(out.str(), "2. paused 30 % Film (2.0 MB), h -> /m/film.avi\n");
}

TEST_F(ReporterTest, AListedItemSaysWhyItFailedWithItsAddressWhenAsked) {
  makeLineReporter(out, notes)
      ->listed({.position = 1,
                .item = film(DownloadStatusFailed),
                .reason = kReason,
                .oddity = "It is odd.",
                .isLong = true});
  EXPECT_EQ(out.str(),
            "1. failed 0 % Film (2.0 MB), h\n"
            "   It is not there.\n   It is odd.\n   http://h/film.avi\n");
}

TEST_F(ReporterTest, AListEndsWithTheProgressOfTheWholeQueue) {
  const auto reporter = makeLiveReporter(out, notes, [] { return 80; });
  reporter->listedAll({7, 2, 1'300'000'000, 4'000'000'000, 0});
  reporter->listedAll({7, 2, 0, 0, 1});
  reporter->listedAll({7, 2, 1000, 2000, 2});
  reporter->listedAll({1, 0, 0, 2000, 0, true});
  EXPECT_EQ(out.str(),
            "2 of 7 complete, 1.3 GB of 4.0 GB\n"
            "2 of 7 complete, one film of unknown size\n"
            "2 of 7 complete, 1.0 kB of 2.0 kB and 2 films of unknown size\n"
            "0 of 1 complete, 0 B of 2.0 kB; the queue is paused\n");
}

TEST_F(ReporterTest, TheLiveLineFollowsTheWidthOfTheWindow) {
  int columns = 20;
  const auto reporter = makeLiveReporter(out, notes, [&columns] { return columns; });
  const ItemState item = film(DownloadStatusDownloading, 50);
  reporter->changed(item, {});
  EXPECT_EQ(out.str(), "\r\033[K 50 %  Film");
  out.str("");
  columns = 60;
  reporter->changed(item, {});
  EXPECT_NE(out.str().find("##"), std::string::npos) << out.str();
  out.str("");
  columns = 0;
  reporter->changed(item, {});
  EXPECT_EQ(out.str(), "");
}

TEST_F(ReporterTest, TheLiveLineMakesRoomForWhatIsSaid) {
  const auto reporter = makeLiveReporter(out, notes, [] { return 80; });
  const std::function<void()> sayings[] = {
      [&] { reporter->added(film(DownloadStatusQueued)); },
      [&] { reporter->finished(film(DownloadStatusCompleted, 100), ""); },
      [&] { reporter->failed(film(DownloadStatusFailed), kReason); },
      [&] { reporter->refused("x", kReason); },
      [&] { reporter->note("Hello."); },
  };
  for (const std::function<void()>& say : sayings) {
    reporter->changed(film(DownloadStatusDownloading, 50), {});
    out.str("");
    say();
    EXPECT_TRUE(out.str().starts_with("\r\033[K")) << out.str() << notes.str();
  }
}

}  // namespace
}  // namespace playerx::cli
