#include "download/HttpTransfer.h"

#include <chrono>
#include <utility>

#include "kvsc/HttpStatus.h"

namespace download {
namespace {

constexpr std::chrono::milliseconds kPoll{100};

}  // namespace

void HttpTransfer::setUp() {
  end();
  const kvpm::MutexLock lock(mutex_);
  progress_ = {};
  thread_ = std::make_unique<kvpm::Thread>(&body_);
}

bool HttpTransfer::start(const std::function<void()>& prepare) {
  joinEnded();
  const kvpm::MutexLock lock(mutex_);
  if (thread_ == nullptr) return false;
  if (thread_->isRunning()) return true;
  prepare();
  token_.reset();
  progress_ = {};
  return thread_->start();
}

/// A transfer that has told its end may be followed by the next one at once, although its thread
/// takes another moment to leave.
void HttpTransfer::joinEnded() {
  std::unique_ptr<kvpm::Thread> ended;
  const kvpm::MutexLock lock(mutex_);
  if (thread_ == nullptr || !progress_.ended) return;
  ended = std::exchange(thread_, std::make_unique<kvpm::Thread>(&body_));
}

void HttpTransfer::waitForBody() {
  const kvpm::MutexLock lock(mutex_);
  while (!progress_.bodyStarted && !progress_.ended && !progress_.aborted) {
    changed_.wait_for(mutex_, kPoll);
  }
}

bool HttpTransfer::hasFailed() {
  const kvpm::MutexLock lock(mutex_);
  // An answer that leads elsewhere may be followed by a failure at once, or by a long silence.
  const auto lastLook = std::chrono::steady_clock::now() + kPoll;
  while (kvsc::isRedirect(progress_.status) && !progress_.ended && !progress_.aborted &&
         changed_.wait_until(mutex_, lastLook) == std::cv_status::no_timeout) {
  }
  if (progress_.aborted || progress_.refused) return true;
  if (progress_.error == kvsc::HTTP_ERROR_CANCELLED) return !progress_.bodyStarted;
  if (progress_.error != kvsc::HTTP_ERROR_NONE) return true;
  return !kvsc::isRedirect(progress_.status) &&
         kvsc::outcomeOfStatus(progress_.status) != kvsc::HTTP_ERROR_NONE;
}

bool HttpTransfer::isRunning() {
  const kvpm::MutexLock lock(mutex_);
  return thread_ != nullptr && thread_->isRunning() && !progress_.ended;
}

void HttpTransfer::abort() {
  const kvpm::MutexLock lock(mutex_);
  token_.cancel();
  progress_.aborted = true;
  changed_.notify_all();
}

void HttpTransfer::end() {
  std::unique_ptr<kvpm::Thread> leaving;
  const kvpm::MutexLock lock(mutex_);
  token_.cancel();
  if (thread_ == nullptr || runner_ == std::this_thread::get_id()) return;
  leaving = std::move(thread_);
  progress_.aborted = progress_.aborted || !progress_.ended;
  changed_.notify_all();
}

void HttpTransfer::enter() {
  const kvpm::MutexLock lock(mutex_);
  runner_ = std::this_thread::get_id();
}

void HttpTransfer::notePiece(int status, bool refused) {
  const kvpm::MutexLock lock(mutex_);
  progress_.bodyStarted = true;
  progress_.status = status;
  if (refused) {
    progress_.refused = true;
    token_.cancel();
  }
  changed_.notify_all();
}

kvsc::HttpErrorIds HttpTransfer::noteEnd(kvsc::HttpErrorIds error) {
  const kvpm::MutexLock lock(mutex_);
  if (error == kvsc::HTTP_ERROR_CANCELLED && progress_.refused) error = kvsc::HTTP_ERROR_FAILED;
  progress_.ended = true;
  progress_.error = error;
  changed_.notify_all();
  return error;
}

void HttpTransfer::leave() {
  const kvpm::MutexLock lock(mutex_);
  runner_ = std::thread::id();
}

}  // namespace download
