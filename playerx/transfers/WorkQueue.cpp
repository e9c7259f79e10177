#include "playerx/transfers/WorkQueue.h"

#include <utility>

#include "playerx/platform/QuietThread.h"

namespace playerx::transfers {

WorkQueue::WorkQueue() : thread_(startQuietThread([this] { run(); })) {}

WorkQueue::~WorkQueue() {
  {
    const GuardLock lock(mutex_);
    isClosing_ = true;
  }
  changed_.notifyAll();
  thread_.join();
}

void WorkQueue::post(std::function<void()> work) {
  {
    const GuardLock lock(mutex_);
    works_.push_back(std::move(work));
  }
  changed_.notifyAll();
}

void WorkQueue::run() {
  while (const std::function<void()> work = next()) work();
}

bool WorkQueue::isIdle() {
  const GuardLock lock(mutex_);
  return works_.empty() && !isWorking_;
}

// Empty once the queue is closing and nothing is left.
std::function<void()> WorkQueue::next() {
  const GuardLock lock(mutex_);
  isWorking_ = false;
  while (works_.empty() && !isClosing_) changed_.wait(mutex_);
  if (works_.empty()) return {};
  isWorking_ = true;
  std::function<void()> work = std::move(works_.front());
  works_.pop_front();
  return work;
}

}  // namespace playerx::transfers
