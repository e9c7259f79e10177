#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "playerx/framework/PluginRanking.h"

namespace {

using Positions = std::vector<std::size_t>;

Positions rank(const std::vector<KPIM::PluginInfo>& infos) {
  std::vector<const KPIM::PluginInfo*> pointers;
  for (const KPIM::PluginInfo& info : infos) pointers.push_back(&info);
  return playerx::bestFirst(pointers, KPIM::Context::PluginInterfaceFilter("film"),
                            KPIM::Context::SimplePluginInfoSelector());
}

TEST(PluginRanking, TheBestComesFirst) {
  EXPECT_EQ(rank({{"a", "1.2", {"film"}}, {"b", "1.10", {"film"}}, {"c", "1.1", {"film"}}}),
            (Positions{1, 0, 2}));
}

TEST(PluginRanking, OnlyThoseThatQualifyAreRanked) {
  EXPECT_EQ(rank({{"a", "9", {"sound"}}, {"b", "1", {"film"}}, {"c", "8", {}}}), Positions{1});
  EXPECT_EQ(rank({{"a", "9", {"sound"}}}), Positions{});
  EXPECT_EQ(rank({}), Positions{});
}

TEST(PluginRanking, AmongEqualsTheEarlierComesFirst) {
  EXPECT_EQ(rank({{"a", "1", {"film"}}, {"b", "1.0", {"film"}}, {"c", "2", {"film"}}}),
            (Positions{2, 0, 1}));
}

/// Calls whichever comes second the better one, in both orders, now and then.
class Contradictory : public KPIM::Context::PluginInfoSelector {
 public:
  bool less(const KPIM::PluginInfo&, const KPIM::PluginInfo&) const override {
    return ++asked_ % 3 != 0;
  }

 private:
  mutable int asked_ = 0;
};

TEST(PluginRanking, ASelectorThatContradictsItselfStillRanksEachOnce) {
  const std::vector<KPIM::PluginInfo> infos(100, {"a", "1", {"film"}});
  std::vector<const KPIM::PluginInfo*> pointers;
  for (const KPIM::PluginInfo& info : infos) pointers.push_back(&info);
  Positions ranked =
      playerx::bestFirst(pointers, KPIM::Context::PluginInterfaceFilter("film"), Contradictory());
  std::sort(ranked.begin(), ranked.end());
  Positions all(infos.size());
  std::iota(all.begin(), all.end(), 0);
  EXPECT_EQ(ranked, all);
}

}  // namespace
