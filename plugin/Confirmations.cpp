#include "plugin/Confirmations.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace plugin {
namespace {

/// The longest that a report waits without looking; an event wakes it at once.
constexpr std::chrono::milliseconds kInterval{500};

}  // namespace

Confirmations::Confirmations(Tell tell, EventCount& events)
    : tell_(std::move(tell)), events_(events) {}

Confirmations::~Confirmations() { finish(); }

void Confirmations::confirm(long ticketId, std::uint64_t bytes,
                            const std::function<bool()>& mayWait) {
  const std::uint64_t number = enqueue({ticketId, bytes});
  if (!ensureThread()) tellNext();
  for (;;) {
    const EventCount::Ticket ticket = events_.ticket();
    if (isTold(number) || !mayWait()) return;
    events_.wait(ticket, kInterval);
  }
}

void Confirmations::finish() {
  {
    const std::lock_guard lock(mutex_);
    finishing_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

/// The number of the notice, in the order in which they are told.
std::uint64_t Confirmations::enqueue(const Notice& notice) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(notice);
  changed_.notify_all();
  return ++reported_;
}

/// False when the system has no thread to give.
bool Confirmations::ensureThread() {
  const std::lock_guard lock(mutex_);
  if (thread_.joinable()) return true;
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

bool Confirmations::isTold(std::uint64_t number) const {
  const std::lock_guard lock(mutex_);
  return told_ >= number;
}

void Confirmations::run() {
  while (waitForNext()) tellNext();
}

/// False when there is nothing to be told and nothing will come.
bool Confirmations::waitForNext() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !waiting_.empty() || finishing_; });
  return !waiting_.empty();
}

void Confirmations::tellNext() {
  Notice next{};
  {
    const std::lock_guard lock(mutex_);
    if (waiting_.empty()) return;
    next = waiting_.front();
    waiting_.pop_front();
  }
  tell_(next.ticketId, next.bytes);
  {
    const std::lock_guard lock(mutex_);
    ++told_;
  }
  events_.raise();
}

}  // namespace plugin
