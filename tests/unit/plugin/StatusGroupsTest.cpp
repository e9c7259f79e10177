#include <gtest/gtest.h>

#include <set>
#include <string>

#include "plugin/PlaybackRules.h"
#include "plugin/StatusGroups.h"

namespace plugin {
namespace {

/// The states, by their stored values, for which `belongs` holds.
std::set<int> members(bool (*belongs)(DownloadStatusEnumType)) {
  std::set<int> values;
  for (int value = -1; value <= 8; ++value) {
    if (belongs(static_cast<DownloadStatusEnumType>(value))) values.insert(value);
  }
  return values;
}

TEST(StatusGroups, EachHoldsItsStatesAlone) {
  EXPECT_EQ(members(isCandidate), (std::set<int>{0, 1, 2, 3, 7}));
  EXPECT_EQ(members(isActive), (std::set<int>{2, 3, 7}));
  EXPECT_EQ(members(isResumable), (std::set<int>{0, 2, 3}));
  EXPECT_EQ(members(isParkable), (std::set<int>{0, 2, 3, 7}));
  EXPECT_EQ(members(isAtBottom), (std::set<int>{4, 6}));
}

TEST(StatusGroups, AStoppedRunLeavesItsItemQueuedAndEveryOtherItsResult) {
  for (int result = 0; result <= 7; ++result) {
    EXPECT_EQ(afterRun(static_cast<DownloadStatusEnumType>(result)), result == 5 ? 1 : result);
  }
}

TEST(Playback, RestartsTheQueueUnlessTheItemFlowsOrIsComplete) {
  EXPECT_EQ(members(needsRestart), (std::set<int>{-1, 0, 1, 2, 5, 6, 8}));
}

TEST(Playback, WaitsForAQueuedOrStartingItem) {
  EXPECT_EQ(members(isAboutToFlow), (std::set<int>{1, 2}));
}

TEST(Playback, NeedsFivePercentOrACompleteItem) {
  EXPECT_FALSE(isPlayable(DownloadStatusDownloading, 4));
  EXPECT_TRUE(isPlayable(DownloadStatusDownloading, 5));
  EXPECT_TRUE(isPlayable(DownloadStatusQueued, 100));
  EXPECT_TRUE(isPlayable(DownloadStatusCompleted, 0));
}

TEST(Playback, AParkedOrEndedItemIsNoLongerWanted) {
  for (const int unwanted : {0, 5, 6}) {
    EXPECT_FALSE(isWanted(static_cast<DownloadStatusEnumType>(unwanted))) << unwanted;
  }
  for (const int wanted : {1, 2, 3, 4, 7}) {
    EXPECT_TRUE(isWanted(static_cast<DownloadStatusEnumType>(wanted))) << wanted;
  }
}

}  // namespace
}  // namespace plugin
