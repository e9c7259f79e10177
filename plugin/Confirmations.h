#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <thread>

#include "kvpm/Mutex.h"
#include "plugin/EventCount.h"

namespace plugin {

/// Tells the online services, in order, how much of a ticket's download has arrived.
///
/// The services may take as long as their deadlines allow. So they are told on a thread of this
/// object's own, and a report waits for that unless a stop is waiting for the report, or the
/// services may want a lock of its caller. `confirm` is safe on all threads. Nothing that was
/// reported is dropped.
class Confirmations {
 public:
  using Tell = std::function<void(long ticketId, std::uint64_t bytes)>;

  /// `tell` tells the services. `events` is not owned: it is raised when they were told something,
  /// and has to be raised when a `mayWait` turns false.
  Confirmations(Tell tell, EventCount& events);

  Confirmations(const Confirmations&) = delete;
  Confirmations& operator=(const Confirmations&) = delete;

  /// Waits until everything has been told.
  ~Confirmations();

  /// Returns when the services have been told, or when `mayWait` is false; they are told then, too,
  /// in their time. From inside `tell` it returns at once.
  void confirm(long ticketId, std::uint64_t bytes, const std::function<bool()>& mayWait);

  /// Waits until everything has been told. Afterwards nothing may be reported any more.
  void finish();

 private:
  struct Notice {
    long ticketId;
    std::uint64_t bytes;
  };

  void run();
  std::uint64_t enqueue(const Notice& notice);
  bool ensureThread();
  bool isTold(std::uint64_t number) const;
  bool waitForNext();
  bool tellNext();

  const Tell tell_;
  EventCount& events_;

  mutable kvpm::Mutex mutex_;
  std::condition_variable_any changed_;
  std::deque<Notice> waiting_ KVPM_GUARDED_BY(mutex_);
  std::uint64_t reported_ KVPM_GUARDED_BY(mutex_) = 0;
  std::uint64_t told_ KVPM_GUARDED_BY(mutex_) = 0;
  bool finishing_ KVPM_GUARDED_BY(mutex_) = false;

  /// Written under mutex_ until finishing_. Not one of the platform's: a host that holds those back
  /// may report all the same, and would wait for it.
  std::thread thread_;
};

}  // namespace plugin
