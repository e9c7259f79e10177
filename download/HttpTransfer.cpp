#include "download/HttpTransfer.h"

#include <cstdint>
#include <utility>

#include "download/ResultHeaders.h"
#include "kvpm/TimeTools.h"

namespace download {
namespace {

constexpr std::uint32_t kLookMilliseconds = 100;

}  // namespace

void HttpTransfer::allow() {
  const kvpm::MutexLock lock(mutex_);
  progress_ = {};
  thread_ = std::make_unique<kvpm::Thread>(&body_);
}

bool HttpTransfer::start(HttpCallback* receiver, const std::function<void()>& prepare) {
  joinEnded();
  const kvpm::MutexLock lock(mutex_);
  if (thread_ == nullptr) return false;
  if (!progress_.ended) return true;
  prepare();
  token_.reset();
  progress_ = {};
  transferResult_ = HttpResult();
  transferResult_.setHttpCallbacks(receiver);
  currentResult_ = &transferResult_;
  progress_.ended = !thread_->start();
  return !progress_.ended;
}

/// A transfer that has told its end may be followed by the next one at once, although its thread
/// takes another moment to leave.
void HttpTransfer::joinEnded() {
  std::unique_ptr<kvpm::Thread> leaving;  // joined without the lock, which its callbacks may need
  const kvpm::MutexLock lock(mutex_);
  if (thread_ == nullptr || !progress_.ended) return;
  leaving = std::exchange(thread_, std::make_unique<kvpm::Thread>(&body_));
}

std::unique_ptr<HttpResult> HttpTransfer::waitForBody() {
  // Not at once when something happens: by the first look a short answer has usually been passed on
  // whole.
  do {
    kvpm::TimeTools::sleep(kLookMilliseconds);
  } while (isBodyAwaited());
  const kvpm::MutexLock lock(mutex_);
  auto result = std::make_unique<HttpResult>(transferResult_);
  if (!progress_.aborted) result->setResult(HTTP_RESULT_OK);
  return result;
}

bool HttpTransfer::isBodyAwaited() {
  const kvpm::MutexLock lock(mutex_);
  return !progress_.bodyStarted && !progress_.ended && !progress_.aborted;
}

bool HttpTransfer::isRunning() {
  const kvpm::MutexLock lock(mutex_);
  return thread_ != nullptr && !progress_.ended;
}

void HttpTransfer::cancel() {
  const kvpm::MutexLock lock(mutex_);
  token_.cancel();
  progress_.aborted = true;
}

void HttpTransfer::end() {
  std::unique_ptr<kvpm::Thread> leaving;  // joined without the lock, which its callbacks may need
  const kvpm::MutexLock lock(mutex_);
  token_.cancel();
  if (runner_ == std::this_thread::get_id()) return;
  leaving = std::move(thread_);
  progress_.aborted = progress_.aborted || !progress_.ended;
}

void HttpTransfer::fill(HttpResult& result) {
  const kvpm::MutexLock lock(mutex_);
  currentResult_ = &result;
}

std::optional<HttpCallback*> HttpTransfer::noteHeader(const std::string& line) {
  const kvpm::MutexLock lock(mutex_);
  if (currentResult_ == nullptr) return std::nullopt;
  download::noteHeader(line, *currentResult_);
  return currentResult_->getHttpCallbacks();
}

void HttpTransfer::notePiece() {
  const kvpm::MutexLock lock(mutex_);
  progress_.bodyStarted = true;
}

void HttpTransfer::noteRefusal() {
  const kvpm::MutexLock lock(mutex_);
  if (token_.isCancelled()) return;  // the receiver may refuse what it has cancelled
  progress_.refused = true;
  token_.cancel();
}

kvsc::HttpErrorIds HttpTransfer::noteEnd(kvsc::HttpErrorIds error) {
  const kvpm::MutexLock lock(mutex_);
  if (error == kvsc::HTTP_ERROR_CANCELLED && progress_.refused) error = kvsc::HTTP_ERROR_FAILED;
  if (error != kvsc::HTTP_ERROR_NONE) progress_.aborted = true;
  progress_.ended = true;
  return error;
}

}  // namespace download
