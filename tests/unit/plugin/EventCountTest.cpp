#include <gtest/gtest.h>

#include <thread>

#include "plugin/EventCount.h"

namespace plugin {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kForever{60'000};

TEST(EventCount, AnEventAfterTheKeyEndsTheWaitAtOnce) {
  EventCount events;
  const EventCount::Key key = events.key();
  events.raise();
  events.wait(key, kForever);
  EXPECT_NE(events.key(), key);
}

TEST(EventCount, AnEventDuringTheWaitEndsIt) {
  EventCount events;
  const EventCount::Key key = events.key();
  std::thread other([&events] { events.raise(); });
  events.wait(key, kForever);
  EXPECT_NE(events.key(), key);
  other.join();
}

TEST(EventCount, AnEventBeforeTheKeyEndsNothing) {
  EventCount events;
  events.raise();
  const auto begin = steady_clock::now();
  events.wait(events.key(), milliseconds(20));
  EXPECT_GE(steady_clock::now() - begin, milliseconds(20));
}

TEST(EventCount, OneEventEndsEveryWait) {
  EventCount events;
  const EventCount::Key key = events.key();
  std::thread one([&] { events.wait(key, kForever); });
  std::thread other([&] { events.wait(key, kForever); });
  events.raise();
  one.join();
  other.join();
}

}  // namespace
}  // namespace plugin
