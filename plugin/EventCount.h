#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>

#include "kvpm/Mutex.h"

namespace plugin {

/// Ends waits when something has happened, without losing anything that happens just before one.
///
/// Take a ticket, look whether there is something to do, and if not, wait on the ticket: an event
/// raised after the ticket was taken ends the wait at once. Safe on all threads; nothing fails.
class EventCount {
 public:
  using Ticket = std::uint64_t;

  EventCount() = default;
  EventCount(const EventCount&) = delete;
  EventCount& operator=(const EventCount&) = delete;

  Ticket ticket() const;

  /// Ends every wait on a ticket taken before.
  void raise();

  /// Returns when an event is raised after `ticket` was taken, and after `longest` at the latest.
  void wait(Ticket ticket, std::chrono::milliseconds longest = kLongestWait) const;

  /// How long a wait lasts that no event ends: the caller then looks for itself.
  static constexpr std::chrono::milliseconds kLongestWait{500};

 private:
  mutable kvpm::Mutex mutex_;
  mutable std::condition_variable_any raised_;
  Ticket count_ KVPM_GUARDED_BY(mutex_) = 0;
};

}  // namespace plugin
