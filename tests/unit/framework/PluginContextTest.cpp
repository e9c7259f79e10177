#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "playerx/framework/PluginContext.h"
#include "tests/unit/framework/RecordingPlugin.h"

namespace {

using framework_test::addRecording;
using framework_test::Behaviour;
using framework_test::find;
using framework_test::Found;
using framework_test::Held;
using framework_test::Log;
using playerx::PluginContext;
using Events = std::vector<std::string>;

class PluginContextTest : public testing::Test {
 protected:
  void addBroken(const std::string& id, const std::string& version, const std::string& interface) {
    context.add({id, version, {interface}}, [this](KPIM::Context*, void**) -> KPIM::VESK_RESULT {
      log.add("tried");
      throw std::runtime_error("broken");
    });
  }

  Log log;
  PluginContext context{{}};
};

TEST_F(PluginContextTest, LoadsNothingUntilItIsWanted) {
  addRecording(context, log, "film");
  EXPECT_EQ(log.events(), Events{});
  const Found found = find(context, "film");
  EXPECT_EQ(found.result, 0);
  EXPECT_EQ(log.events(), Events{"made film"});
}

TEST_F(PluginContextTest, AnswersOneWhenNoneQualifies) {
  addRecording(context, log, "film");
  KPIM::Plugin* const untouched = reinterpret_cast<KPIM::Plugin*>(this);
  KPIM::Plugin* out = untouched;
  EXPECT_EQ(context.getPluginInstance(KPIM::Context::PluginInterfaceFilter("sound"),
                                      KPIM::Context::SimplePluginInfoSelector(), true, &out),
            1);
  EXPECT_EQ(out, untouched);
  EXPECT_EQ(log.events(), Events{});
}

TEST_F(PluginContextTest, LoadsNothingWhereItMayNot) {
  addRecording(context, log, "film");
  EXPECT_EQ(find(context, "film", false).result, 1);
  EXPECT_EQ(log.events(), Events{});
  const Held held = find(context, "film").plugin;
  const Found again = find(context, "film", false);
  EXPECT_EQ(again.result, 0);
  EXPECT_EQ(again.plugin, held);
}

TEST_F(PluginContextTest, EveryCallerGetsAHoldOfItsOwn) {
  addRecording(context, log, "film");
  const Held first = find(context, "film").plugin;
  EXPECT_EQ(first->kpimHoldCount(), 2);  // the context's and ours
  {
    const Held second = find(context, "film").plugin;
    EXPECT_EQ(second, first);
    EXPECT_EQ(first->kpimHoldCount(), 3);
  }
  EXPECT_EQ(first->kpimHoldCount(), 2);
  EXPECT_EQ(log.count("made film"), 1);
}

TEST_F(PluginContextTest, StaysLoadedWhenAllHoldsAreGivenBack) {
  addRecording(context, log, "film");
  find(context, "film");
  find(context, "film");
  EXPECT_EQ(log.events(), Events{"made film"});
}

TEST_F(PluginContextTest, LoadsTheBest) {
  addRecording(context, log, "old", {}, "1.9");
  context.add({"older", "1.2", {"film"}}, nullptr);
  context.add({"newest", "1.10", {"film"}}, [this](KPIM::Context* host, void** out) {
    *out = new framework_test::RecordingPlugin(host, "newest", log, {});
    return KPIM::kSuccess;
  });
  find(context, "film");
  EXPECT_EQ(log.events(), Events{"made newest"});
}

TEST_F(PluginContextTest, PrefersALoadedOneToABetterOneThatIsNot) {
  const auto factory = [this](const std::string& name) {
    return [this, name](KPIM::Context* host, void** out) {
      *out = new framework_test::RecordingPlugin(host, name, log, {});
      return KPIM::kSuccess;
    };
  };
  context.add({"old", "1.0", {"film", "old"}}, factory("old"));
  context.add({"new", "2.0", {"film"}}, factory("new"));
  const Held old = find(context, "old").plugin;
  EXPECT_EQ(find(context, "film").plugin, old);
  EXPECT_EQ(log.events(), Events{"made old"});
}

TEST_F(PluginContextTest, ABrokenOneGivesWayToTheNextBest) {
  addBroken("broken", "9.0", "film");
  addRecording(context, log, "film");
  EXPECT_EQ(find(context, "film").result, 0);
  EXPECT_EQ(log.events(), (Events{"tried", "made film"}));
}

TEST_F(PluginContextTest, AnswersTwoWhenWhatQualifiesCannotBeLoaded) {
  addBroken("broken", "1.0", "film");
  KPIM::Plugin* const untouched = reinterpret_cast<KPIM::Plugin*>(this);
  KPIM::Plugin* out = untouched;
  EXPECT_EQ(context.getPluginInstance(KPIM::Context::PluginInterfaceFilter("film"),
                                      KPIM::Context::SimplePluginInfoSelector(), true, &out),
            2);
  EXPECT_EQ(out, untouched);
}

TEST_F(PluginContextTest, ABrokenOneIsTriedAgainAndNamedOnce) {
  addBroken("broken", "1.0", "film");
  EXPECT_EQ(find(context, "film").result, 2);
  EXPECT_EQ(find(context, "film").result, 2);
  EXPECT_EQ(log.count("tried"), 2);
  EXPECT_EQ(context.problems(), Events{"Plug-in broken: Its getPlugin failed: broken."});
}

TEST_F(PluginContextTest, AFactoryThatMakesNothingIsAFailure) {
  context.add({"nothing", "1.0", {"film"}}, [](KPIM::Context*, void**) { return KPIM::kSuccess; });
  context.add({"refusing", "2.0", {"film"}}, [](KPIM::Context*, void**) { return 7; });
  context.add({"odd", "3.0", {"film"}},
              [](KPIM::Context*, void**) -> KPIM::VESK_RESULT { throw 3; });
  EXPECT_EQ(find(context, "film").result, 2);
  EXPECT_EQ(context.problems(),
            (Events{"Plug-in odd: Its getPlugin failed.",
                    "Plug-in refusing: Its getPlugin made no plug-in (result 7).",
                    "Plug-in nothing: Its getPlugin made no plug-in (result 0)."}));
}

TEST_F(PluginContextTest, APluginKnowsItsDescriptionAndContext) {
  addRecording(context, log, "film", {}, "1.5");
  const Held held = find(context, "film").plugin;
  ASSERT_NE(held->kpimGetPluginInfo(), nullptr);
  EXPECT_EQ(held->kpimGetPluginInfo()->id, "film");
  EXPECT_EQ(held->kpimGetPluginInfo()->version, "1.5");
  EXPECT_EQ(held->kpimGetPluginContext(), &context);
}

TEST_F(PluginContextTest, APluginOfAnotherContextIsNotKnown) {
  PluginContext other{{}};
  addRecording(context, log, "film");
  const Held held = find(context, "film").plugin;
  EXPECT_EQ(other.infoOf(*held), nullptr);
}

TEST_F(PluginContextTest, APluginMayAskForAnotherWhileItIsMade) {
  Behaviour behaviour;
  behaviour.whenMade = [](KPIM::Plugin& self) {
    EXPECT_EQ(find(*self.kpimGetPluginContext(), "sound").result, 0);
  };
  addRecording(context, log, "film", behaviour);
  addRecording(context, log, "sound");
  EXPECT_EQ(find(context, "film").result, 0);
  EXPECT_EQ(log.events(), (Events{"made film", "made sound"}));
}

TEST_F(PluginContextTest, APluginThatAsksForItselfWhileItIsMadeIsRefused) {
  Behaviour behaviour;
  behaviour.whenMade = [](KPIM::Plugin& self) {
    EXPECT_EQ(find(*self.kpimGetPluginContext(), "film").result, 2);
  };
  addRecording(context, log, "film", behaviour);
  EXPECT_EQ(find(context, "film").result, 0);
}

TEST_F(PluginContextTest, FiltersSelectorsAndPluginsMayCallBack) {
  class Calling : public KPIM::Context::PluginFilter, public KPIM::Context::PluginInfoSelector {
   public:
    explicit Calling(PluginContext& context) : context_(context) {}
    bool accepts(const KPIM::PluginInfo& /*info*/) const override {
      return find(context_, "other").result == 0;
    }
    bool less(const KPIM::PluginInfo& left, const KPIM::PluginInfo& right) const override {
      find(context_, "other");
      return left.id < right.id;
    }

   private:
    PluginContext& context_;
  } calling(context);
  Behaviour behaviour;
  behaviour.whenRetained = [](KPIM::Plugin& self) {
    find(*self.kpimGetPluginContext(), "other");
    EXPECT_NE(self.kpimGetPluginInfo(), nullptr);
  };
  addRecording(context, log, "film", behaviour);
  addRecording(context, log, "sound", behaviour);
  addRecording(context, log, "other");
  KPIM::Plugin* plugin = nullptr;
  ASSERT_EQ(context.getPluginInstance(calling, calling, true, &plugin), 0);
  const Held held(plugin);
}

TEST_F(PluginContextTest, UnloadsWhatAnUnloadedOneHeld) {
  auto* inner = new Held;
  Behaviour behaviour;
  behaviour.whenMade = [inner](KPIM::Plugin& self) {
    *inner = find(*self.kpimGetPluginContext(), "sound").plugin;
  };
  behaviour.whenDestroyed = [inner](KPIM::Plugin& /*self*/) { delete inner; };
  addRecording(context, log, "sound");
  addRecording(context, log, "film", behaviour);
  find(context, "film");
  context.shutdown();
  EXPECT_EQ(log.events(), (Events{"made film", "made sound", "destroyed film", "destroyed sound"}));
}

TEST_F(PluginContextTest, APluginMayAskWhileItIsDestroyed) {
  Behaviour behaviour;
  behaviour.whenDestroyed = [this](KPIM::Plugin& self) {
    EXPECT_NE(self.kpimGetPluginInfo(), nullptr);
    EXPECT_EQ(find(context, "sound").result, 0);
    EXPECT_NE(find(context, "film").result, 0);  // itself, no more
  };
  addRecording(context, log, "film", behaviour);
  addRecording(context, log, "sound");
  find(context, "film");
  find(context, "sound");
  context.shutdown();
  EXPECT_EQ(log.events(), (Events{"made film", "made sound", "destroyed film", "destroyed sound"}));
}

class Throwing : public KPIM::Context::PluginFilter, public KPIM::Context::PluginInfoSelector {
 public:
  bool accepts(const KPIM::PluginInfo&) const override { throw std::runtime_error("no filter"); }
  bool less(const KPIM::PluginInfo&, const KPIM::PluginInfo&) const override {
    throw std::runtime_error("no selector");
  }
};

TEST_F(PluginContextTest, AFilterOrSelectorThatThrowsFindsNothing) {
  for (const char* version : {"1.0", "2.0"}) addRecording(context, log, "film", {}, version);
  const KPIM::Context::PluginInterfaceFilter filter("film");
  const KPIM::Context::SimplePluginInfoSelector selector;
  const Throwing throwing;
  KPIM::Plugin* out = nullptr;
  EXPECT_EQ(context.getPluginInstance(throwing, selector, true, &out), 1);
  EXPECT_EQ(context.getPluginInstance(filter, throwing, true, &out), 1);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(find(context, "film").result, 0) << "and breaks nothing";
}

TEST_F(PluginContextTest, WithoutAPlaceForThePluginNothingIsLoaded) {
  addRecording(context, log, "film");
  EXPECT_EQ(context.getPluginInstance(KPIM::Context::PluginInterfaceFilter("film"),
                                      KPIM::Context::SimplePluginInfoSelector(), true, nullptr),
            1);
  EXPECT_EQ(log.events(), Events{});
}

}  // namespace
