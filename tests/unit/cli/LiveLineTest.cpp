#include <gmock/gmock.h>

#include "playerx/cli/LiveLine.h"
#include "playerx/cli/TerminalText.h"

namespace playerx::cli {
namespace {

using model::Progress;
using testing::HasSubstr;
using testing::StartsWith;

class LiveLineTest : public testing::Test {
 protected:
  std::string line(std::size_t columns) const {
    return liveLine(item_, progress_, queue_, columns);
  }

  model::ItemState item_ = [] {
    model::ItemState item;
    item.title = "Film";
    item.status = DownloadStatusDownloading;
    item.percent = 42;
    item.size = 700'000'000;
    return item;
  }();
  Progress progress_{294'000'000, 5'200'000, 78, 0, false};
  model::QueueProgress queue_{};
};

TEST_F(LiveLineTest, AWideTerminalShowsEverything) {
  queue_ = {7, 2, 0, 0, 0};
  EXPECT_EQ(line(120),
            " 42 %  [#########             ]  294.0 MB of 700.0 MB  5.2 MB/s  1 min 18 s left  "
            "2 of 7 films  Film");
}

TEST_F(LiveLineTest, ATitleIsNotCutForTheSakeOfTheBar) {
  item_.title = "counting-to-a-million.mkv";
  EXPECT_THAT(line(84), testing::EndsWith("  counting-to-a-million.mkv"));
  EXPECT_THAT(line(84), testing::Not(HasSubstr("#")));
  EXPECT_THAT(line(120), HasSubstr("#"));
}

TEST_F(LiveLineTest, TheBarLeavesThirtyColumnsOfATitle) {
  item_.title = std::string(40, 't');
  const std::size_t numbers = columnsOf(" 42 %  294.0 MB of 700.0 MB  5.2 MB/s  1 min 18 s left");
  const std::size_t columns = numbers + columnsOf("  [######]") + columnsOf("  ") + 30;
  EXPECT_THAT(line(columns), HasSubstr("[##    ]"));
  EXPECT_THAT(line(columns - 1), testing::Not(HasSubstr("[")));
}

TEST_F(LiveLineTest, AFilmThatIsWholeHasNoTimeLeft) {
  item_.percent = 100;
  progress_.secondsLeft.reset();
  EXPECT_THAT(line(120), testing::Not(HasSubstr("left")));
}

TEST_F(LiveLineTest, EveryWidthKeepsThePercentageOnOneLine) {
  item_.title = "東京物語 שלום e\u0301 🎬 a very long title that goes on";
  for (std::size_t columns = 5; columns < 150; ++columns) {
    EXPECT_LE(columnsOf(line(columns)), columns);
    EXPECT_THAT(line(columns), StartsWith(" 42 %"));
  }
}

TEST_F(LiveLineTest, ANarrowTerminalKeepsTheTimeLeft) {
  EXPECT_EQ(line(19), " 42 %  Film");
  EXPECT_EQ(line(30), " 42 %  1 min 18 s left  Film");
}

TEST_F(LiveLineTest, WhatIsNotKnownIsNotMadeUp) {
  progress_ = {};
  item_.size = 0;
  EXPECT_THAT(line(100), HasSubstr("time left unknown"));
  EXPECT_THAT(line(100), testing::Not(HasSubstr("B")));
}

TEST_F(LiveLineTest, AServerThatDoesNotSayTheSizeIsSaid) {
  item_.status = DownloadStatusQueued;
  progress_ = {.silentSeconds = 12};
  EXPECT_THAT(line(100), HasSubstr("no answer for 12 s"));
}

TEST_F(LiveLineTest, ASilenceIsSaid) {
  progress_ = {294'000'000, 0, std::nullopt, 12, true};
  EXPECT_THAT(line(100), HasSubstr("no byte for 12 s, trying again"));
  progress_.isRetrying = false;
  EXPECT_THAT(line(100), HasSubstr("no byte for 12 s  "));
  EXPECT_THAT(line(100), testing::Not(HasSubstr("left")));
}

TEST_F(LiveLineTest, ASilenceIsSaidOnNarrowTerminalsToo) {
  progress_ = {294'000'000, 0, std::nullopt, 12, true};
  EXPECT_THAT(line(44), HasSubstr("no byte for 12 s, trying again"));
  EXPECT_THAT(line(30), HasSubstr("no byte for 12 s"));
}

TEST_F(LiveLineTest, ControlCharactersOfATitleAreNotPrinted) {
  item_.title = "a\033[2J\rb";
  EXPECT_THAT(line(100), HasSubstr("a?[2J?b"));
}

}  // namespace
}  // namespace playerx::cli
