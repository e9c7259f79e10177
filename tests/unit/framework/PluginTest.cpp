#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "KPIM/Context.h"
#include "KPIM/Plugin.h"

namespace {

class NoContext : public KPIM::Context {
 public:
  KPIM::VESK_RESULT getPluginInstance(const PluginFilter& /*filter*/,
                                      const PluginInfoSelector& /*selector*/, bool /*mayLoad*/,
                                      KPIM::Plugin** /*out*/) override {
    return KPIM::kNoSuchPlugin;
  }
};

class Noticing : public KPIM::Plugin {
 public:
  Noticing(KPIM::Context* context, bool& gone) : Plugin(context), gone_(gone) {}
  ~Noticing() override { gone_ = true; }

 private:
  bool& gone_;
};

class PluginTest : public testing::Test {
 protected:
  ~PluginTest() override {
    if (!gone) plugin->kpimRelease();
  }

  NoContext context;
  bool gone = false;
  KPIM::Plugin* plugin = new Noticing(&context, gone);
};

TEST_F(PluginTest, IsBornWithOneHold) { EXPECT_EQ(plugin->kpimHoldCount(), 1); }

TEST_F(PluginTest, RetainAndReleaseAnswerTheCountThatResults) {
  EXPECT_EQ(plugin->kpimRetain(), 2);
  EXPECT_EQ(plugin->kpimRetain(), 3);
  EXPECT_EQ(plugin->kpimHoldCount(), 3);
  EXPECT_EQ(plugin->kpimRelease(), 2);
  EXPECT_EQ(plugin->kpimRelease(), 1);
  EXPECT_FALSE(gone);
}

TEST_F(PluginTest, TheLastReleaseDestroysIt) {
  EXPECT_EQ(plugin->kpimRelease(), 0);
  EXPECT_TRUE(gone);
}

TEST_F(PluginTest, KnowsItsContext) { EXPECT_EQ(plugin->kpimGetPluginContext(), &context); }

TEST_F(PluginTest, HasNoDescriptionWithoutAContextThatLoadedIt) {
  EXPECT_EQ(plugin->kpimGetPluginInfo(), nullptr);
}

TEST_F(PluginTest, OffersNothingByItself) {
  int untouched = 0;
  void* face = &untouched;
  EXPECT_EQ(plugin->kpimGetInterface("com.vesk.playerX.pluginInterface.Player", &face), 3);
  EXPECT_EQ(face, &untouched);
}

TEST_F(PluginTest, ManyThreadsMayHoldAndRelease) {
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    plugin->kpimRetain();
    threads.emplace_back([this] {
      for (int step = 0; step < 1000; ++step) {
        plugin->kpimRetain();
        plugin->kpimRelease();
      }
      plugin->kpimRelease();
    });
  }
  EXPECT_GT(plugin->kpimRelease(), -1);
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(gone);
}

}  // namespace
