#include <gtest/gtest.h>

#include <thread>

#include "plugin/EventCount.h"

namespace plugin {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kForever{60'000};

TEST(EventCount, AnEventAfterTheTicketEndsTheWaitAtOnce) {
  EventCount events;
  const EventCount::Ticket ticket = events.ticket();
  events.raise();
  events.wait(ticket, kForever);
  EXPECT_NE(events.ticket(), ticket);
}

TEST(EventCount, AnEventDuringTheWaitEndsIt) {
  EventCount events;
  const EventCount::Ticket ticket = events.ticket();
  std::thread other([&events] { events.raise(); });
  events.wait(ticket, kForever);
  EXPECT_NE(events.ticket(), ticket);
  other.join();
}

TEST(EventCount, AnEventBeforeTheTicketEndsNothing) {
  EventCount events;
  events.raise();
  const auto begin = steady_clock::now();
  events.wait(events.ticket(), milliseconds(20));
  EXPECT_GE(steady_clock::now() - begin, milliseconds(20));
}

TEST(EventCount, OneEventEndsEveryWait) {
  EventCount events;
  const EventCount::Ticket ticket = events.ticket();
  std::thread one([&] { events.wait(ticket, kForever); });
  std::thread other([&] { events.wait(ticket, kForever); });
  events.raise();
  one.join();
  other.join();
}

}  // namespace
}  // namespace plugin
