#include "playerx/services/ConfirmationSender.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "playerx/platform/QuietThread.h"

namespace playerx {

namespace {

constexpr std::chrono::milliseconds kLongestPause(60'000);

}  // namespace

ConfirmationSender::ConfirmationSender(Send send, std::chrono::milliseconds firstPause,
                                       std::chrono::milliseconds lastChance)
    : send_(std::move(send)), firstPause_(firstPause), lastChance_(lastChance) {}

ConfirmationSender::~ConfirmationSender() {
  std::thread ending;
  {
    const GuardLock lock(mutex_);
    isEnding_ = true;
    end_ = Condition::Clock::now() + lastChance_;
    ending.swap(thread_);
  }
  wake_.notifyAll();
  if (ending.joinable()) {
    ending.join();
  } else {
    run();
  }
}

void ConfirmationSender::enqueue(std::string request) {
  {
    const GuardLock lock(mutex_);
    requests_.push_back(std::move(request));
    ensureThread();
  }
  wake_.notifyAll();
}

void ConfirmationSender::ensureThread() {
  if (isEnding_ || thread_.joinable()) return;
  try {
    thread_ = startQuietThread([this] { run(); });
  } catch (const std::exception&) {
    // The next request tries again; failing that, the destructor sends what is left.
  }
}

void ConfirmationSender::run() {
  std::chrono::milliseconds pause = firstPause_;
  Try next;
  while (waitForRequest(next)) {
    if (send_(next.request, [this] { return isChanceOver(); })) {
      const GuardLock lock(mutex_);
      requests_.pop_front();
      pause = firstPause_;
      continue;
    }
    if (next.isLast) return;
    pauseFor(pause);
    pause = std::min(pause * 2, kLongestPause);
  }
}

// False once the sender is ending and nothing is left to send.
bool ConfirmationSender::waitForRequest(Try& next) {
  const GuardLock lock(mutex_);
  while (requests_.empty() && !isEnding_) wake_.wait(mutex_);
  if (requests_.empty()) return false;
  next = {requests_.front(), isEnding_};
  return true;
}

bool ConfirmationSender::isChanceOver() {
  const GuardLock lock(mutex_);
  return isEnding_ && Condition::Clock::now() >= end_;
}

void ConfirmationSender::pauseFor(std::chrono::milliseconds pause) {
  const auto deadline = Condition::Clock::now() + pause;
  const GuardLock lock(mutex_);
  while (!isEnding_ && wake_.waitUntil(mutex_, deadline)) {
  }
}

}  // namespace playerx
