#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "playerx/cli/Reporter.h"

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
  item.secondsRemaining = 9;
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
    return nlohmann::json::parse(text);
  }
};

TEST_F(ReporterTest, JsonNamesEveryFieldOfAnAddedItem) {
  makeJsonReporter(out, notes)->added(film(DownloadStatusQueued));
  EXPECT_EQ(onlyLine(), (nlohmann::json{{"event", "added"},
                                        {"id", 7},
                                        {"url", "http://h/film.avi"},
                                        {"title", "Film"},
                                        {"provider", "h"},
                                        {"status", "queued"},
                                        {"percent", 0},
                                        {"size", 2'000'000},
                                        {"path", "/m/film.avi"},
                                        {"secondsRemaining", 9}}));
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

TEST_F(ReporterTest, JsonNotesStayOffStandardOutput) {
  makeJsonReporter(out, notes)->note("Hello.");
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(notes.str(), "Hello.\n");
}

TEST_F(ReporterTest, LinesAppearOncePerState) {
  const auto reporter = makeLineReporter(out, notes);
  reporter->added(film(DownloadStatusQueued));
  reporter->changed(film(DownloadStatusDownloading, 1), 0);
  reporter->changed(film(DownloadStatusDownloading, 2), 0);
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

TEST_F(ReporterTest, TheLiveLineShowsBarPercentSizeSpeedWithTimeLeft) {
  makeLiveReporter(out, notes, 100)->changed(film(DownloadStatusDownloading, 50), 1'000'000);
  EXPECT_NE(out.str().find("Film  [###########           ] 50 %  2.0 MB  1.0 MB/s  9 s left"),
            std::string::npos)
      << out.str();
}

TEST_F(ReporterTest, TheLiveLineLeavesASizeOutThatIsNotKnown) {
  ItemState item = film(DownloadStatusStarting, 0);
  item.size = 0;
  makeLiveReporter(out, notes, 100)->changed(item, 0);
  EXPECT_NE(out.str().find(" 0 %"), std::string::npos);
  EXPECT_EQ(out.str().find("0 B"), std::string::npos) << out.str();
}

TEST_F(ReporterTest, TheLiveLineFitsANarrowTerminal) {
  makeLiveReporter(out, notes, 30)->changed(film(DownloadStatusDownloading, 50), 1'000'000);
  const std::string text = out.str();
  const std::string line = text.substr(4, text.find('\r', 1) - 4);
  EXPECT_LE(line.size(), 30u + 2u) << line;  // the cut mark has three bytes
}

TEST_F(ReporterTest, AListedItemHasItsPosition) {
  makeLineReporter(out, notes)->listed(2, film(DownloadStatusPaused, 30));
  EXPECT_EQ(out.str(), "2. paused 30 % Film (2.0 MB), h -> /m/film.avi\n");
}

}  // namespace
}  // namespace playerx::cli
