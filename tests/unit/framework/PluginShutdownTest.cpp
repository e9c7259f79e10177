#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "playerx/framework/PluginContext.h"
#include "tests/unit/framework/RecordingPlugin.h"

namespace {

using framework_test::addRecording;
using framework_test::Behaviour;
using framework_test::find;
using framework_test::Held;
using framework_test::Log;
using playerx::PluginContext;
using Events = std::vector<std::string>;

Behaviour working() {
  Behaviour behaviour;
  behaviour.offersShutdown = true;
  behaviour.holdsItself = true;
  return behaviour;
}

class PluginShutdown : public testing::Test {
 protected:
  Log log;
  std::unique_ptr<PluginContext> context =
      std::make_unique<PluginContext>(std::vector<std::filesystem::path>());
};

TEST_F(PluginShutdown, EndsWorkThenReleases) {
  addRecording(*context, log, "film", working());
  find(*context, "film");
  context->shutdown();
  EXPECT_EQ(log.events(), (Events{"made film", "shutdown film", "destroyed film"}));
  EXPECT_TRUE(context->problems().empty());
}

TEST_F(PluginShutdown, AsksOnlyThoseThatOfferIt) {
  addRecording(*context, log, "film");
  find(*context, "film");
  context->shutdown();
  EXPECT_EQ(log.events(), (Events{"made film", "destroyed film"}));
}

TEST_F(PluginShutdown, WhatWasNeverLoadedIsLeftAlone) {
  addRecording(*context, log, "film", working());
  context->shutdown();
  EXPECT_EQ(log.events(), Events{});
}

TEST_F(PluginShutdown, EndsOneBeforeThoseThatItHadLoaded) {
  Behaviour manager = working();
  manager.whenMade = [](KPIM::Plugin& self) { find(*self.kpimGetPluginContext(), "transfers"); };
  manager.whenShutDown = [](KPIM::Plugin& self) {
    EXPECT_EQ(find(*self.kpimGetPluginContext(), "transfers", false).result, 0);
  };
  addRecording(*context, log, "transfers", working());
  addRecording(*context, log, "manager", manager);
  find(*context, "manager");
  context->shutdown();
  EXPECT_EQ(log.events(),
            (Events{"made manager", "made transfers", "shutdown manager", "shutdown transfers",
                    "destroyed manager", "destroyed transfers"}));
}

TEST_F(PluginShutdown, NothingIsLoadedFromThenOn) {
  addRecording(*context, log, "film", working());
  context->shutdown();
  EXPECT_EQ(find(*context, "film").result, 1);
  EXPECT_EQ(log.events(), Events{});
}

TEST_F(PluginShutdown, ASecondOneDoesNothing) {
  addRecording(*context, log, "film", working());
  find(*context, "film");
  context->shutdown();
  context->shutdown();
  EXPECT_EQ(log.count("shutdown film"), 1);
}

TEST_F(PluginShutdown, ComesWithTheEndOfTheContext) {
  addRecording(*context, log, "film", working());
  find(*context, "film");
  context.reset();
  EXPECT_EQ(log.events(), (Events{"made film", "shutdown film", "destroyed film"}));
}

TEST_F(PluginShutdown, WhatIsStillHeldLivesOnAndIsNamed) {
  addRecording(*context, log, "film", working());
  Held held = find(*context, "film").plugin;
  context->shutdown();
  EXPECT_EQ(log.events(), (Events{"made film", "shutdown film"}));
  EXPECT_EQ(held->kpimHoldCount(), 1);
  EXPECT_EQ(held->kpimGetPluginInfo(), nullptr);
  EXPECT_EQ(context->problems(), Events{"Plug-in film: It is still held."});
  held.reset();
  EXPECT_EQ(log.count("destroyed film"), 1);
}

TEST_F(PluginShutdown, AFailureOfOneDoesNotKeepTheOthersFromEnding) {
  Behaviour failing;
  failing.offersShutdown = true;
  failing.whenShutDown = [](KPIM::Plugin&) { throw std::runtime_error("no end"); };
  addRecording(*context, log, "film", failing);
  addRecording(*context, log, "sound", working());
  find(*context, "film");
  find(*context, "sound");
  context->shutdown();
  EXPECT_EQ(log.count("shutdown sound"), 1);
  EXPECT_EQ(log.count("destroyed film"), 1);
  EXPECT_EQ(context->problems(), Events{"Plug-in film: Its Shutdown failed: no end."});
}

}  // namespace
