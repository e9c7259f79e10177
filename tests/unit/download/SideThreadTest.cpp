#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <thread>

#include "download/SideThread.h"
#include "tests/support/Gate.h"

namespace download {
namespace {

TEST(SideThread, RunsACallOnAThreadOfItsOwn) {
  std::thread::id ran;
  SideThread side([] {});
  EXPECT_TRUE(side.start([&] { ran = std::this_thread::get_id(); }));
  side.finish();
  EXPECT_NE(ran, std::thread::id());
  EXPECT_NE(ran, std::this_thread::get_id());
}

TEST(SideThread, RunsOneCallAtATime) {
  support::Gate gate;
  SideThread side([] {});
  EXPECT_TRUE(side.start([&] { gate.wait(); }));
  EXPECT_TRUE(side.isBusy());
  EXPECT_FALSE(side.start([] { FAIL(); }));
  gate.open();
}

TEST(SideThread, TellsTheEndWhenItIsFreeAgain) {
  support::Gate ended;
  bool busy = true;
  SideThread* self = nullptr;
  SideThread side([&] {
    busy = self->isBusy();
    ended.open();
  });
  self = &side;
  side.start([] {});
  ASSERT_TRUE(ended.wait());
  side.finish();
  EXPECT_FALSE(busy);
}

TEST(SideThread, RunsAnotherCallAfterTheFirst) {
  int calls = 0;
  SideThread side([] {});
  for (int time = 0; time < 20; ++time) {
    EXPECT_TRUE(side.start([&] { ++calls; }));
    side.finish();
  }
  EXPECT_EQ(calls, 20);
}

TEST(SideThread, LetsGoOfWhatACallHolds) {
  const auto held = std::make_shared<int>(1);
  SideThread side([] {});
  side.start([held] {});
  side.finish();
  EXPECT_EQ(held.use_count(), 1);
}

TEST(SideThread, OutlivesACallThatThrows) {
  SideThread side([] {});
  side.start([] { throw std::runtime_error("no"); });
  side.finish();
  EXPECT_FALSE(side.isBusy());
}

TEST(SideThread, WaitsForTheCallWhenItIsDestroyed) {
  bool ended = false;
  {
    SideThread side([] {});
    side.start([&] { ended = true; });
  }
  EXPECT_TRUE(ended);
}

}  // namespace
}  // namespace download
