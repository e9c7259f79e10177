#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>

#include "kvpm/Mutex.h"

namespace plugin {

/// Ends waits when something has happened, without losing anything that happens just before one.
///
/// Take a key, look whether there is something to do, and if not, wait on the key: an event
/// raised after the key was taken ends the wait at once. Safe on all threads; nothing fails.
class EventCount {
 public:
  using Key = std::uint64_t;

  EventCount() = default;
  EventCount(const EventCount&) = delete;
  EventCount& operator=(const EventCount&) = delete;

  Key key() const;

  /// Ends every wait on a key taken before.
  void raise();

  /// Returns when an event is raised after `key` was taken, and after `longest` at the latest.
  void wait(Key key, std::chrono::milliseconds longest = kLongestWait) const;

  /// How long a wait lasts that no event ends: the caller then looks for itself.
  static constexpr std::chrono::milliseconds kLongestWait{500};

 private:
  mutable kvpm::Mutex mutex_;
  mutable std::condition_variable_any raised_;
  Key count_ KVPM_GUARDED_BY(mutex_) = 0;
};

}  // namespace plugin
