#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KPIM/Context.h"
#include "KPIM/PluginInfo.h"

namespace {

using Filter = KPIM::Context::PluginInterfaceFilter;
using Selector = KPIM::Context::SimplePluginInfoSelector;

KPIM::PluginInfo version(const std::string& text) { return {"id", text, {"i"}}; }

TEST(PluginInterfaceFilter, AcceptsThoseThatOfferTheInterface) {
  const KPIM::PluginInfo info = {"id", "1.0", {"com.a", "com.b"}};
  EXPECT_TRUE(Filter("com.a").accepts(info));
  EXPECT_TRUE(Filter("com.b").accepts(info));
}

TEST(PluginInterfaceFilter, ComparesExactly) {
  const KPIM::PluginInfo info = {"id", "1.0", {"com.a"}};
  for (const char* other : {"com.A", "com.a ", "com", "com.ab", "", "id"}) {
    EXPECT_FALSE(Filter(other).accepts(info)) << other;
  }
  EXPECT_FALSE(Filter("com.a").accepts({"com.a", "1.0", {}}));
}

TEST(SimplePluginInfoSelector, PrefersTheHigherVersionNumberByNumber) {
  struct Case {
    std::string worse;
    std::string better;
  };
  const std::vector<Case> rows = {
      {"1.9", "1.10"}, {"1", "1.1"},     {"1.2.3", "1.3"},     {"0.9", "1"},
      {"9", "10"},     {"1.0", "1.0.1"}, {"1.999999999", "2"},
  };
  for (const Case& row : rows) {
    EXPECT_TRUE(Selector().less(version(row.worse), version(row.better))) << row.better;
    EXPECT_FALSE(Selector().less(version(row.better), version(row.worse))) << row.better;
  }
}

TEST(SimplePluginInfoSelector, NoneOfTwoEqualVersionsIsWorse) {
  for (const char* other : {"1.0", "1", "1.0.0", "01.0"}) {
    EXPECT_FALSE(Selector().less(version("1.0"), version(other))) << other;
    EXPECT_FALSE(Selector().less(version(other), version("1.0"))) << other;
  }
}

}  // namespace
