// The part of HttpHelper that runs and ends transfers.

#include <algorithm>
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
  const kvpm::MutexLock lock(mutex_);
  transfer_->token.cancel();
  transfer_->progress.aborted = true;
  progressed_.notify_all();
}

void HttpHelper::abort() {
  bool running = false;
  {
    const kvpm::MutexLock lock(mutex_);
    running = retire();
  }
  if (running) cancelDownload();
  joinRetired();
}

/// Asks the present transfer to end and its thread to leave; `joinRetired` is to follow. True when
/// it was running.
bool HttpHelper::retire() {
  ++endings_;
  transfer_->token.cancel();
  if (thread_ == nullptr) return false;
  const bool running = thread_->isRunning() && !transfer_->progress.ended;
  thread_->stop();
  retired_.push_back({transfer_, std::move(thread_)});
  return running;
}

/// Waits for the threads that were told to leave, the latest first: that of an earlier transfer may
/// be waiting for a later one. A transfer's own thread waits for none that is still at work.
void HttpHelper::joinRetired() {
  for (std::vector<Retired> leaving = takeJoinable(); !leaving.empty(); leaving.pop_back()) {
    leaving.back().thread.reset();
    noteEnd(*leaving.back().transfer);  // it may never have begun
  }
  const kvpm::MutexLock lock(mutex_);
  std::erase_if(retired_, [](const Retired& retired) {
    return retired.thread == nullptr && retired.transfer->runner == std::thread::id();
  });
  --endings_;
}

void HttpHelper::noteEnd(Transfer& transfer) {
  const kvpm::MutexLock lock(mutex_);
  transfer.progress.ended = true;
  progressed_.notify_all();
}

std::vector<HttpHelper::Retired> HttpHelper::takeJoinable() {
  const kvpm::MutexLock lock(mutex_);
  const bool waits = !isOnOwnThread();
  std::vector<Retired> joinable;
  for (Retired& retired : retired_) {
    if (retired.thread == nullptr || !(waits || !retired.thread->isRunning())) continue;
    joinable.push_back({retired.transfer, std::move(retired.thread)});
  }
  return joinable;
}

/// A transfer that has reported its end may be followed by the next one at once, although its
/// thread takes another moment to end.
void HttpHelper::replaceEndedThread() {
  {
    const kvpm::MutexLock lock(mutex_);
    if (thread_ == nullptr || !transfer_->progress.ended || isOnOwnThread()) return;
    retire();
    thread_ = std::make_unique<kvpm::Thread>(this);
  }
  joinRetired();
}

void HttpHelper::allowTransfers() {
  sDownloadCancelled = 0;
  const kvpm::MutexLock lock(mutex_);
  transfer_->progress.aborted = false;
}

/// The transfer that runs now; null when none could be started.
HttpHelper::Held HttpHelper::startTransfer(const std::string& method, HttpResult& result) {
  replaceEndedThread();
  const kvpm::MutexLock lock(mutex_);
  currentResult_ = &result;
  if (thread_ == nullptr || endings_ > 0) return nullptr;
  if (thread_->isRunning()) return transfer_;
  transfer_->method = method;
  transfer_->requestData = requestData_;
  transfer_->token.reset();
  transfer_->bodyRefused = false;
  configure(*transfer_);
  Progress fresh;
  fresh.aborted = transfer_->progress.aborted;
  transfer_->progress = fresh;
  return thread_->start() ? transfer_ : nullptr;
}

void HttpHelper::runThread(kvpm::Thread* thread) {
  const Held transfer = enter(thread);
  if (transfer == nullptr) return;
  runningTransfers().enter(transfer->token, transfer->method == "get");
  const kvsc::HttpErrorIds error = run(*transfer);
  runningTransfers().leave(transfer->token);
  // A body that its receiver refused was ended by this helper's own cancel.
  const bool refused = error == kvsc::HTTP_ERROR_CANCELLED && transfer->bodyRefused;
  end(*transfer, refused ? kvsc::HTTP_ERROR_FAILED : error);
  const kvpm::MutexLock lock(mutex_);
  transfer->runner = std::thread::id();
}

/// The transfer that `thread` was started for; null when there is none, or none any more.
HttpHelper::Held HttpHelper::enter(const kvpm::Thread* thread) {
  const kvpm::MutexLock lock(mutex_);
  const auto found =
      std::find_if(retired_.begin(), retired_.end(),
                   [thread](const Retired& retired) { return retired.thread.get() == thread; });
  const bool present = thread == nullptr || thread == thread_.get();
  if (!present && found == retired_.end()) return nullptr;
  const Held transfer = present ? transfer_ : found->transfer;
  const bool asked = transfer->method == "get" || transfer->method == "post";
  if (transfer->client == nullptr || !asked) return nullptr;
  transfer->runner = std::this_thread::get_id();
  return transfer;
}

kvsc::HttpErrorIds HttpHelper::run(Transfer& transfer) {
  kvsc::HttpErrorIds error = kvsc::HTTP_ERROR_NONE;
  kvsc::SSLClient& client = *transfer.client;
  kvsc::SSLSession* const session = transfer.session.get();
  if (transfer.method == "get") {
    client.httpGet(transfer.url, 0, &error, session, "", transfer.requestData, kvsc::SSLV3);
  } else {
    client.httpPost(transfer.url, std::string(), &error, session, transfer.requestData, "",
                    kvsc::SSLV3, false);
  }
  return error;
}

void HttpHelper::end(Transfer& transfer, kvsc::HttpErrorIds error) {
  HttpCallback* receiver = transfer.method == "get" ? callbacks_.load() : nullptr;
  const bool cancelled = error == kvsc::HTTP_ERROR_CANCELLED;
  {
    const kvpm::MutexLock lock(mutex_);
    Progress& progress = transfer.progress;
    if (progress.superseded || cancelled) receiver = nullptr;
    progress.ended = true;
    progress.cancelled = cancelled;
    if (receiver != nullptr && error != kvsc::HTTP_ERROR_NONE) progress.aborted = true;
    progressed_.notify_all();
  }
  if (receiver == nullptr) return;
  if (error == kvsc::HTTP_ERROR_NONE) {
    receiver->transferComplete(1);
  } else {
    receiver->transferBroke(-1);
  }
}
