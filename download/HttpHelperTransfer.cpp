// The part of HttpHelper that runs and ends transfers.

#include <set>
#include <utility>

#include "download/HttpCallback.h"
#include "download/HttpHelper.h"

std::atomic<std::int32_t> HttpHelper::sDownloadCancelled{0};

namespace {

/// The transfers under way in this process. The flag is only looked at when bytes arrive; this is
/// how a cancel reaches those that wait for a dead server.
class RunningTransfers {
 public:
  /// `obeysFlag`: whether a cancel that came before the transfer was entered counts.
  void enter(kvsc::CancelToken& token, bool obeysFlag) {
    const kvpm::MutexLock lock(mutex_);
    tokens_.insert(&token);
    if (obeysFlag && HttpHelper::sDownloadCancelled != 0) token.cancel();
  }

  void leave(kvsc::CancelToken& token) {
    const kvpm::MutexLock lock(mutex_);
    tokens_.erase(&token);
  }

  void cancelAll() {
    const kvpm::MutexLock lock(mutex_);
    HttpHelper::sDownloadCancelled = -1;
    for (kvsc::CancelToken* const token : tokens_) token->cancel();
  }

 private:
  kvpm::Mutex mutex_;
  std::set<kvsc::CancelToken*> tokens_ KVPM_GUARDED_BY(mutex_);
};

RunningTransfers& runningTransfers() {
  static RunningTransfers transfers;
  return transfers;
}

}  // namespace

void HttpHelper::cancelDownload() {
  runningTransfers().cancelAll();
  ownToken_.cancel();
  markAborted();
}

void HttpHelper::abort() {
  std::unique_ptr<kvpm::Thread> ended;  // joined on the way out, without the lock
  bool running = false;
  {
    const kvpm::MutexLock lock(mutex_);
    running = thread_ != nullptr && thread_->isRunning();
    if (running) thread_->stop();
    if (!isOnOwnThread()) ended = std::move(thread_);
  }
  ownToken_.cancel();
  if (running) cancelDownload();
}

/// A transfer that has reported its end may be followed by the next one at once, although its
/// thread takes another moment to end.
void HttpHelper::replaceEndedThread() {
  std::unique_ptr<kvpm::Thread> ended;  // joined on the way out, without the lock
  const kvpm::MutexLock lock(mutex_);
  if (thread_ == nullptr || !progress_.ended || isOnOwnThread()) return;
  ended = std::exchange(thread_, std::make_unique<kvpm::Thread>(this));
}

void HttpHelper::allowTransfers() {
  sDownloadCancelled = 0;
  const kvpm::MutexLock lock(mutex_);
  progress_.aborted = false;
}

bool HttpHelper::startTransfer(const std::string& method, const std::string& requestData,
                               HttpResult& result) {
  replaceEndedThread();
  const kvpm::MutexLock lock(mutex_);
  if (thread_ == nullptr) return false;
  if (thread_->isRunning()) return true;
  method_ = method;
  requestData_ = requestData;
  ownToken_.reset();
  bodyRefused_ = false;
  configure(result);
  currentResult_ = &result;
  progress_.bodyStarted = progress_.ended = progress_.cancelled = false;
  return thread_->start();
}

void HttpHelper::runThread(kvpm::Thread*) {
  ownThread_ = std::this_thread::get_id();
  runningTransfers().enter(ownToken_, method_ == "get");
  const kvsc::HttpErrorIds error = transfer();
  runningTransfers().leave(ownToken_);
  // A body that its receiver refused was ended by this helper's own cancel.
  const bool refused = error == kvsc::HTTP_ERROR_CANCELLED && bodyRefused_;
  end(refused ? kvsc::HTTP_ERROR_FAILED : error);
  ownThread_ = std::thread::id();
}

kvsc::HttpErrorIds HttpHelper::transfer() {
  kvsc::HttpErrorIds error = kvsc::HTTP_ERROR_NONE;
  if (method_ == "get") {
    client_->httpGet(url_, 0, &error, session_.get(), "", requestData_, kvsc::SSLV3);
  } else {
    client_->httpPost(url_, std::string(), &error, session_.get(), requestData_, "", kvsc::SSLV3,
                      false);
  }
  return error;
}

void HttpHelper::end(kvsc::HttpErrorIds error) {
  HttpCallback* const receiver = method_ == "get" ? callbacks_.load() : nullptr;
  const bool cancelled = error == kvsc::HTTP_ERROR_CANCELLED;
  const bool broken = receiver != nullptr && error != kvsc::HTTP_ERROR_NONE && !cancelled;
  {
    const kvpm::MutexLock lock(mutex_);
    progress_.ended = true;
    progress_.cancelled = cancelled;
    if (broken) progress_.aborted = true;
    progressed_.notify_all();
  }
  if (broken) receiver->transferBroke(-1);
  if (receiver != nullptr && error == kvsc::HTTP_ERROR_NONE) receiver->transferComplete(1);
}

void HttpHelper::markAborted() {
  const kvpm::MutexLock lock(mutex_);
  progress_.aborted = true;
  progressed_.notify_all();
}

void HttpHelper::refuseBody() {
  bodyRefused_ = true;
  ownToken_.cancel();
}
