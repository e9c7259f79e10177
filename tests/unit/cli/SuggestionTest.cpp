#include <gtest/gtest.h>

#include "playerx/cli/Suggestion.h"

namespace playerx::cli {
namespace {

const std::vector<std::string> kNames = {"--json", "--media", "--data", "list"};

TEST(SuggestionTest, EachTypingErrorIsForgiven) {
  EXPECT_EQ(nearestTo("--jsn", kNames), "--json");
  EXPECT_EQ(nearestTo("--jsonn", kNames), "--json");
  EXPECT_EQ(nearestTo("--jsom", kNames), "--json");
  EXPECT_EQ(nearestTo("--jsno", kNames), "--json");
}

TEST(SuggestionTest, AnotherWordSuggestsNothing) {
  EXPECT_EQ(nearestTo("--verbose", kNames), "");
  EXPECT_EQ(nearestTo("", kNames), "");
  EXPECT_EQ(nearestTo(std::string(1000, 'x'), kNames), "");
}

TEST(SuggestionTest, WordsOfOtherProgramsAreKnown) {
  EXPECT_EQ(nearestTo("-P", kNames), "--media");
  EXPECT_EQ(nearestTo("ls", kNames), "list");
  EXPECT_EQ(nearestTo("rm", kNames), "") << "no remove here";
}

TEST(SuggestionTest, TheNearestOfSeveralIsSuggested) {
  EXPECT_EQ(nearestTo("--dta", {"--dote", "--data"}), "--data");
}

}  // namespace
}  // namespace playerx::cli
