#include "plugin/Confirmations.h"

#include <exception>
#include <utility>

#include "download/BackgroundThread.h"

namespace plugin {
namespace {

thread_local bool isTelling = false;

}  // namespace

Confirmations::Confirmations(Tell tell, EventCount& events)
    : tell_(std::move(tell)), events_(events) {}

Confirmations::~Confirmations() { finish(); }

void Confirmations::confirm(long ticketId, std::uint64_t bytes,
                            const std::function<bool()>& mayWait) {
  const std::uint64_t number = enqueue({ticketId, bytes});
  if (isTelling) return;  // its turn comes when the services have returned
  if (!ensureThread()) {
    while (tellNext()) {
    }
  }
  for (;;) {
    const EventCount::Key key = events_.key();
    if (isTold(number) || !mayWait()) return;
    events_.wait(key);
  }
}

void Confirmations::finish() {
  {
    const kvpm::MutexLock lock(mutex_);
    finishing_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

/// The number of the notice, in the order in which they are told.
std::uint64_t Confirmations::enqueue(const Notice& notice) {
  const kvpm::MutexLock lock(mutex_);
  waiting_.push_back(notice);
  changed_.notify_all();
  return ++reported_;
}

/// False when no thread can be started.
bool Confirmations::ensureThread() {
  const kvpm::MutexLock lock(mutex_);
  if (thread_.joinable()) return true;
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

bool Confirmations::isTold(std::uint64_t number) const {
  const kvpm::MutexLock lock(mutex_);
  return told_ >= number;
}

void Confirmations::run() {
  const download::BackgroundThread mark;
  while (waitForNext()) tellNext();
}

/// False when everything has been told and nothing will come.
bool Confirmations::waitForNext() {
  const kvpm::MutexLock lock(mutex_);
  while (waiting_.empty() && !finishing_) changed_.wait(mutex_);
  return !waiting_.empty();
}

/// False when there is nothing to tell.
bool Confirmations::tellNext() {
  Notice next{};
  {
    const kvpm::MutexLock lock(mutex_);
    if (waiting_.empty()) return false;
    next = waiting_.front();
    waiting_.pop_front();
  }
  isTelling = true;
  try {
    tell_(next.ticketId, next.bytes);
  } catch (...) {  // no memory, at worst: those behind it are told all the same
  }
  isTelling = false;
  {
    const kvpm::MutexLock lock(mutex_);
    ++told_;
  }
  events_.raise();
  return true;
}

}  // namespace plugin
