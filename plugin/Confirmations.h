#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "plugin/EventCount.h"

namespace plugin {

/// Tells the online services, in order, how much of a ticket's download has arrived.
///
/// The services may take as long as their deadlines allow. So they are told on a thread of this
/// object's own, and whoever reports something waits for that only as long as nobody waits for him.
/// `confirm` is safe on all threads. Nothing that was reported is dropped.
class Confirmations {
 public:
  using Tell = std::function<void(long ticketId, std::uint64_t bytes)>;

  /// `tell` tells the services. `events` is not owned: it is raised when they were told something,
  /// and whoever takes a reason to wait away raises it too.
  Confirmations(Tell tell, EventCount& events);

  Confirmations(const Confirmations&) = delete;
  Confirmations& operator=(const Confirmations&) = delete;

  /// Waits until everything has been told.
  ~Confirmations();

  /// Returns when the services have been told, or when `mayWait` is false; they are told then, too,
  /// in their time.
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
  void tellNext();

  const Tell tell_;
  EventCount& events_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Notice> waiting_;  // guarded by mutex_
  std::uint64_t reported_ = 0;  // guarded by mutex_
  std::uint64_t told_ = 0;      // guarded by mutex_
  bool finishing_ = false;      // guarded by mutex_
  /// Guarded by mutex_ until finishing_. Not one of the platform's: a host that holds those back
  /// may report all the same, and would wait for it.
  std::thread thread_;
};

}  // namespace plugin
