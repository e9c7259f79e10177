#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "playerx/framework/PluginContext.h"
#include "tests/support/Gate.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/framework/RecordingPlugin.h"

namespace {

using framework_test::addRecording;
using framework_test::Behaviour;
using framework_test::find;
using framework_test::Found;
using framework_test::Held;
using framework_test::Log;
using playerx::PluginContext;
using support::Gate;

class PluginThreads : public testing::Test {
 protected:
  Log log;
  PluginContext context{{}};
};

TEST_F(PluginThreads, ManyThatWantOnePluginLoadItOnce) {
  Gate go;
  Behaviour slow;
  slow.whenMade = [&go](KPIM::Plugin&) { go.wait(); };
  addRecording(context, log, "film", slow);
  std::atomic<int> got{0};
  std::vector<std::thread> threads;
  for (int number = 0; number < 6; ++number) {
    threads.emplace_back([&] {
      if (find(context, "film").result == 0) ++got;
    });
  }
  EXPECT_TRUE(support::waitFor([&] { return log.count("made film") == 1; }));
  go.open();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(got, 6);
  EXPECT_EQ(log.count("made film"), 1);
}

TEST_F(PluginThreads, OneThatIsSlowToLoadDoesNotHoldUpOthers) {
  Gate go;
  Gate loading;
  Behaviour slow;
  slow.whenMade = [&](KPIM::Plugin&) {
    loading.open();
    go.wait();
  };
  addRecording(context, log, "slow", slow);
  addRecording(context, log, "film");
  std::thread loader([&] { EXPECT_EQ(find(context, "slow").result, 0); });
  ASSERT_TRUE(loading.wait());
  EXPECT_EQ(find(context, "film").result, 0);
  EXPECT_EQ(find(context, "slow", false).result, 1);
  EXPECT_TRUE(context.problems().empty());
  go.open();
  loader.join();
}

TEST_F(PluginThreads, TwoThatWantEachOtherWhileTheyAreMadeDoNotWaitForEver) {
  Gate filmBegun;
  Gate soundBegun;
  std::atomic<int> refused{0};
  const auto asking = [&](Gate& mine, Gate& theirs, const std::string& other) {
    Behaviour behaviour;
    behaviour.whenMade = [&, other](KPIM::Plugin& self) {
      mine.open();
      theirs.wait();
      if (find(*self.kpimGetPluginContext(), other).result == 2) ++refused;
    };
    return behaviour;
  };
  addRecording(context, log, "film", asking(filmBegun, soundBegun, "sound"));
  addRecording(context, log, "sound", asking(soundBegun, filmBegun, "film"));
  std::thread film([&] { EXPECT_EQ(find(context, "film").result, 0); });
  std::thread sound([&] { EXPECT_EQ(find(context, "sound").result, 0); });
  film.join();
  sound.join();
  EXPECT_EQ(refused, 1);  // one had to give in, the other waited for it
}

TEST_F(PluginThreads, AShutdownNeverTakesWhatAnotherThreadHolds) {
  std::atomic<int> alive{0};
  Behaviour behaviour;
  behaviour.whenMade = [&](KPIM::Plugin&) { ++alive; };
  behaviour.whenDestroyed = [&](KPIM::Plugin&) { --alive; };
  addRecording(context, log, "film", behaviour);
  Gate found;
  std::vector<std::thread> threads;
  for (int number = 0; number < 3; ++number) {
    threads.emplace_back([&] {
      for (int result = 0; result == 0;) {
        const Found film = find(context, "film");
        result = film.result;
        EXPECT_TRUE(result != 0 || alive == 1);
        found.open();
      }
    });
  }
  ASSERT_TRUE(found.wait());
  context.shutdown();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(alive, 0);
}

TEST_F(PluginThreads, AShutdownWaitsForALoadThatHasBegun) {
  Gate loading;
  Gate go;
  Behaviour slow;
  slow.offersShutdown = true;
  slow.holdsItself = true;
  slow.whenMade = [&](KPIM::Plugin&) {
    loading.open();
    go.wait();
  };
  addRecording(context, log, "film", slow);
  std::thread loader([&] { find(context, "film"); });
  ASSERT_TRUE(loading.wait());
  std::thread ender([&] { context.shutdown(); });
  go.open();
  loader.join();
  ender.join();
  EXPECT_EQ(log.count("made film"), 1);
  EXPECT_EQ(log.count("destroyed film"), 1);
}

}  // namespace
