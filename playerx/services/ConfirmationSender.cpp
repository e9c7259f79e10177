#include "playerx/services/ConfirmationSender.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace playerx {

namespace {

constexpr std::chrono::milliseconds kLongestPause(60'000);

}  // namespace

ConfirmationSender::ConfirmationSender(Send send, std::chrono::milliseconds firstPause)
    : send_(std::move(send)), firstPause_(firstPause), thread_([this] { run(); }) {}

ConfirmationSender::~ConfirmationSender() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ending_ = true;
  }
  wake_.notify_all();
  thread_.join();
}

void ConfirmationSender::enqueue(std::string request) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    requests_.push_back(std::move(request));
  }
  wake_.notify_all();
}

void ConfirmationSender::run() {
  std::chrono::milliseconds pause = firstPause_;
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return ending_ || !requests_.empty(); });
    if (requests_.empty()) return;
    const std::string request = requests_.front();
    const bool lastTry = ending_;
    lock.unlock();
    const bool arrived = send_(request);
    lock.lock();
    if (lastTry && !arrived) return;
    if (arrived) {
      requests_.pop_front();
      pause = firstPause_;
    } else {
      wake_.wait_for(lock, pause, [this] { return ending_; });
      pause = std::min(pause * 2, kLongestPause);
    }
  }
}

}  // namespace playerx
