#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "KPIM/Helper.h"
#include "tests/unit/framework/RecordingPlugin.h"

namespace {

using framework_test::addRecording;
using framework_test::find;
using framework_test::Held;
using framework_test::Log;

// A recording plug-in's interface is its name.
class HelperTest : public testing::Test {
 protected:
  KPIM::VESK_RESULT load(KPIM::Helper<std::string>& helper, const std::string& interfaceId,
                         bool mayLoad = true) {
    return helper.loadPlugin(&context, KPIM::Context::PluginInterfaceFilter(interfaceId),
                             KPIM::Context::SimplePluginInfoSelector(), mayLoad);
  }

  Log log;
  playerx::PluginContext context{{}};
};

TEST_F(HelperTest, LooksNothingUpByItself) {
  addRecording(context, log, "film");
  const KPIM::Helper<std::string> helper("film");
  EXPECT_EQ(helper.get(), nullptr);
  EXPECT_TRUE(log.events().empty());
}

TEST_F(HelperTest, YieldsTheInterface) {
  addRecording(context, log, "film");
  KPIM::Helper<std::string> helper("film");
  EXPECT_EQ(load(helper, "film"), 0);
  ASSERT_NE(helper.get(), nullptr);
  EXPECT_EQ(*helper.get(), "film");
  EXPECT_EQ(helper->size(), 4U);
}

TEST_F(HelperTest, HoldsThePluginWhileItLives) {
  addRecording(context, log, "film");
  auto helper = std::make_unique<KPIM::Helper<std::string>>("film");
  ASSERT_EQ(load(*helper, "film"), 0);
  const Held held = find(context, "film").plugin;
  EXPECT_EQ(held->kpimHoldCount(), 3);
  helper.reset();
  EXPECT_EQ(held->kpimHoldCount(), 2);
}

TEST_F(HelperTest, AnswersWhatTheContextAnswers) {
  addRecording(context, log, "film");
  KPIM::Helper<std::string> helper("sound");
  EXPECT_EQ(load(helper, "sound"), 1);
  EXPECT_EQ(helper.get(), nullptr);
  KPIM::Helper<std::string> film("film");
  EXPECT_EQ(load(film, "film", false), 1);
}

TEST_F(HelperTest, ReleasesAPluginThatDoesNotOfferTheInterface) {
  addRecording(context, log, "film");
  KPIM::Helper<std::string> helper("other");
  EXPECT_EQ(load(helper, "film"), 3);
  EXPECT_EQ(helper.get(), nullptr);
  EXPECT_EQ(find(context, "film").plugin->kpimHoldCount(), 2);
}

/// Claims to offer its interface, yet has none to hand out.
class EmptyHanded : public framework_test::RecordingPlugin {
 public:
  using RecordingPlugin::RecordingPlugin;

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id != "film") return KPIM::kUnknownInterface;
    *out = nullptr;
    return KPIM::kSuccess;
  }
};

TEST_F(HelperTest, TakesAnInterfaceThatIsNullForNone) {
  context.add({"film", "1.0", {"film"}}, [this](KPIM::Context* host, void** out) {
    *out =
        static_cast<KPIM::Plugin*>(new EmptyHanded(host, "film", log, framework_test::Behaviour{}));
    return KPIM::kSuccess;
  });
  KPIM::Helper<std::string> helper("film");
  EXPECT_EQ(load(helper, "film"), 3);
  EXPECT_EQ(helper.get(), nullptr);
  EXPECT_EQ(find(context, "film").plugin->kpimHoldCount(), 2) << "released again";
}

TEST_F(HelperTest, AnotherLoadReleasesTheOneBefore) {
  addRecording(context, log, "film");
  KPIM::Helper<std::string> helper("film");
  ASSERT_EQ(load(helper, "film"), 0);
  ASSERT_EQ(load(helper, "film"), 0);
  EXPECT_EQ(find(context, "film").plugin->kpimHoldCount(), 3);
  EXPECT_EQ(load(helper, "sound"), 1);
  EXPECT_EQ(helper.get(), nullptr);
  EXPECT_EQ(find(context, "film").plugin->kpimHoldCount(), 2);
}

TEST_F(HelperTest, ANullContextHasNoPlugins) {
  KPIM::Helper<std::string> helper("film");
  const KPIM::Context::PluginInterfaceFilter filter("film");
  const KPIM::Context::SimplePluginInfoSelector selector;
  EXPECT_EQ(helper.loadPlugin(nullptr, filter, selector, true), 1);
  EXPECT_EQ(helper.get(), nullptr);
}

/// Claims to have found a plug-in, yet has none to hand out.
class EmptyHandedContext : public KPIM::Context {
 public:
  KPIM::VESK_RESULT getPluginInstance(const PluginFilter&, const PluginInfoSelector&, bool,
                                      KPIM::Plugin**) override {
    return KPIM::kSuccess;
  }
};

TEST_F(HelperTest, TakesAPluginThatIsNullForNone) {
  EmptyHandedContext emptyHanded;
  EXPECT_EQ(KPIM::load<std::string>(&emptyHanded, "film"), nullptr);
  KPIM::Helper<std::string> helper("film");
  EXPECT_EQ(helper.loadPlugin(&emptyHanded, KPIM::Context::PluginInterfaceFilter("film"),
                              KPIM::Context::SimplePluginInfoSelector(), true),
            1);
}

// Looking a plug-in up in one step.

TEST_F(HelperTest, OneStepYieldsTheInterfaceForAsLongAsItIsUsed) {
  addRecording(context, log, "film");
  auto film = KPIM::load<std::string>(&context, "film");
  ASSERT_NE(film, nullptr);
  EXPECT_EQ(*film->get(), "film");
  const Held held = find(context, "film").plugin;
  EXPECT_EQ(held->kpimHoldCount(), 3);
  film.reset();
  EXPECT_EQ(held->kpimHoldCount(), 2);
}

TEST_F(HelperTest, OneStepYieldsNullWithoutSuchAPlugin) {
  EXPECT_EQ(KPIM::load<std::string>(&context, "film"), nullptr);
  EXPECT_EQ(KPIM::load<std::string>(nullptr, "film"), nullptr);
}

}  // namespace
