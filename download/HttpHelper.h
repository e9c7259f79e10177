#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

#include "download/HttpResult.h"
#include "kvpm/IRunnable.h"
#include "kvpm/Mutex.h"
#include "kvpm/Thread.h"
#include "kvsc/CancelToken.h"
#include "kvsc/SSLClient.h"
#include "kvsc/SSLSession.h"

class HttpCallback;

/// A small synchronous face of the secure HTTP client: asks for a file's size and whereabouts, or
/// streams a transfer to an `HttpCallback` on a thread of its own.
///
/// Set up once per address, used for one operation at a time by one thread; `cancelDownload` and
/// `abort` may come from any other. Every operation answers with an `HttpResult` that belongs to
/// the caller; nothing throws.
class HttpHelper : public kvpm::IRunnable {
 public:
  HttpHelper();

  /// Aborts a running transfer.
  ~HttpHelper() override;

  /// Prepares for `url` with a fresh client, built from `clientArg`, and ends what ran before.
  /// Always returns true.
  bool setup(const std::string& url, const std::string& clientArg);

  /// The receiver of headers, body and outcome; not owned, null for none.
  void setCallbacks(HttpCallback* callbacks) { callbacks_ = callbacks; }

  /// Lets `token` end a `getInfo`, instead of this helper's own cancel; not owned, null for none.
  void setCancelToken(kvsc::CancelToken* token) { infoToken_ = token; }

  /// Asks with HEAD, following up to 10 redirects, on the calling thread.
  HttpResult* getInfo();

  /// Starts fetching and returns once the first piece of the body was passed on, or the transfer
  /// has failed or ended. The rest of the body and the outcome reach the callbacks later. Takes
  /// back a cancel. `requestData` goes to the client as it is.
  HttpResult* get(const std::string& requestData);

  /// Starts sending a POST and returns once the first piece of the answer was passed on, or the
  /// transfer has ended. The result is `HTTP_RESULT_OK` whatever comes of it.
  HttpResult* post();

  /// Cancels this helper's transfer and those that run in any other helper.
  void cancelDownload();

  /// Cancels as `cancelDownload` does when a transfer of this helper is running, and waits until it
  /// has ended; on the transfer's own thread it does not wait.
  void abort();

  /// The transfer.
  void runThread(kvpm::Thread* thread) override;

  /// What the client calls with this helper as context; each returns the bytes handled.
  static std::size_t downloadHeaderFunc(void* line, std::size_t size, std::size_t count,
                                        void* helper);
  static std::size_t downloadBodyFunc(void* data, std::size_t size, std::size_t count,
                                      void* helper);
  static std::size_t downloadDirectBodyFunc(void* data, std::size_t size, std::size_t count,
                                            void* helper);
  static std::size_t downloadDummyBodyFunc(void* data, std::size_t size, std::size_t count,
                                           void* helper);
  static int progressFunc(void* context, double dltotal, double dlnow, double ultotal,
                          double ulnow);

  /// What `downloadDirectBodyFunc` has collected.
  const std::string& getScratchText() const { return scratchText_; }

  /// 0 while transfers may run, -1 once cancelled; shared by every helper.
  static std::atomic<std::int32_t> sDownloadCancelled;

 private:
  /// What the waiting caller looks at.
  struct Progress {
    bool bodyStarted = false;
    bool aborted = false;
    bool ended = false;
    bool cancelled = false;  ///< ended with the client's word for a cancelled transfer
  };

  std::size_t takeHeader(const std::string& line);
  std::size_t takeBody(const char* data, std::size_t length);
  void refuseBody();
  void askForInfo(HttpResult& result);
  void judgeInfo(HttpResult& result);
  void allowTransfers();
  void replaceEndedThread();
  bool startTransfer(const std::string& method, const std::string& requestData, HttpResult& result);
  void configure(HttpResult& result);
  Progress waitForBody(bool untilAborted);
  HttpResult* handOver(std::unique_ptr<HttpResult> result);
  kvsc::HttpErrorIds transfer();
  void end(kvsc::HttpErrorIds error);
  void markAborted();
  bool isOnOwnThread() const { return ownThread_ == std::this_thread::get_id(); }

  std::atomic<HttpCallback*> callbacks_{nullptr};
  std::string scratchText_;
  std::string url_;
  std::string method_;
  std::unique_ptr<kvsc::SSLClient> client_;
  std::unique_ptr<kvsc::SSLSession> session_;
  std::string requestData_;

  kvsc::CancelToken ownToken_;  // ends this helper's operation
  kvsc::CancelToken* infoToken_ = nullptr;
  std::atomic<bool> bodyRefused_{false};
  std::atomic<std::thread::id> ownThread_{};

  kvpm::Mutex mutex_;
  std::condition_variable_any progressed_;
  HttpResult* currentResult_ KVPM_GUARDED_BY(mutex_) = nullptr;
  HttpResult ownResult_ KVPM_GUARDED_BY(mutex_);
  Progress progress_ KVPM_GUARDED_BY(mutex_);
  std::unique_ptr<kvpm::Thread> thread_ KVPM_GUARDED_BY(mutex_);
};
