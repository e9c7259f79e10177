#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

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
/// `abort` may come from any other. A receiver may call these two from its callbacks, on the
/// transfer's own thread, and `setup` as well, followed by `get` or `post` for the next address:
/// none of them waits there for the transfer that is calling. A helper is never destroyed from a
/// callback. Every operation answers with an `HttpResult` that belongs to the caller; nothing
/// throws.
class HttpHelper : public kvpm::IRunnable {
 public:
  HttpHelper();

  /// Aborts a running transfer.
  ~HttpHelper() override;

  /// Prepares for `url` with a fresh client, built from `clientArg`, and ends this helper's earlier
  /// transfer, no other, without a word to the receiver. Always returns true.
  bool setup(const std::string& url, const std::string& clientArg);

  /// The receiver of headers, body and outcome; not owned, null for none.
  void setCallbacks(HttpCallback* callbacks) { callbacks_ = callbacks; }

  /// Lets `token` end a `getInfo`, instead of this helper's own cancel; not owned, null for none.
  void setCancelToken(kvsc::CancelToken* token) { infoToken_ = token; }

  /// Asks with HEAD, following up to 10 redirects, on the calling thread.
  HttpResult* getInfo();

  /// Starts fetching and returns once the first piece of the body was passed on, or the transfer
  /// has failed or ended. The rest of the body and the outcome reach the callbacks later. Takes
  /// back a cancel. `requestData` goes to the client as it is. Failed when the first piece is
  /// refused, or is that of an error. While a transfer runs, nothing is started.
  HttpResult* get(const std::string& requestData);

  /// Starts sending a POST and returns once the first piece of the answer was passed on, or the
  /// transfer has ended. The result is `HTTP_RESULT_OK` whatever comes of it.
  HttpResult* post();

  /// Cancels this helper's transfer and those that run in any other helper.
  void cancelDownload();

  /// Cancels as `cancelDownload` does when a transfer of this helper is running, and waits until it
  /// has ended; on the transfer's own thread it does not wait. The next transfer needs a `setup`.
  void abort();

  /// The transfer; nothing when none was asked for.
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

  /// What the transfers of the present `setup` go by; null before it. Not to be read while one
  /// runs.
  const kvsc::SSLSession* getSession() const { return present()->session.get(); }

  /// 0 while transfers may run, -1 once cancelled; shared by every helper.
  static std::atomic<std::int32_t> sDownloadCancelled;

 private:
  /// What the waiting caller looks at.
  struct Progress {
    bool bodyStarted = false;
    bool aborted = false;
    bool ended = false;
    bool cancelled = false;   ///< ended with the client's word for a cancelled transfer
    bool superseded = false;  ///< nobody listens any more: the helper was set up anew
    int status = 0;           ///< HTTP status of the answer that the latest piece belongs to
  };

  /// What one `setup` has prepared. Written before the transfer's thread starts, then that thread's
  /// own; `progress` and `runner` are under the helper's mutex.
  struct Transfer {
    Progress progress;
    std::string url;
    std::string method;  ///< "get" or "post"; empty before either
    std::unique_ptr<kvsc::SSLClient> client;
    std::unique_ptr<kvsc::SSLSession> session;
    std::string requestData;
    kvsc::CancelToken token;
    std::atomic<bool> bodyRefused{false};
    std::thread::id runner;  ///< the thread that is inside `runThread`
  };
  using Held = std::shared_ptr<Transfer>;

  /// A thread that is to end, and what it works on. It is not joined by itself, nor by a thread
  /// that it may be waiting for.
  struct Retired {
    Held transfer;
    std::unique_ptr<kvpm::Thread> thread;  ///< null while it is being joined
  };

  Held present() const;
  Held mine() const KVPM_REQUIRES(mutex_);
  bool isOnOwnThread() const KVPM_REQUIRES(mutex_);

  std::size_t takeHeader(const std::string& line);
  std::size_t takeBody(const char* data, std::size_t length);
  void askForInfo(Transfer& transfer, HttpResult& result);
  static void judgeInfo(kvsc::SSLClient& client, HttpResult& result);

  void allowTransfers();
  void replaceEndedThread();
  Held startTransfer(const std::string& method, HttpResult& result);
  void configure(Transfer& transfer);
  Progress waitForBody(Transfer& transfer, bool untilAborted);
  void waitForVerdict(Transfer& transfer) KVPM_REQUIRES(mutex_);
  HttpResult* handOver(std::unique_ptr<HttpResult> result);

  Held enter(const kvpm::Thread* thread);
  static kvsc::HttpErrorIds run(Transfer& transfer);
  void end(Transfer& transfer, kvsc::HttpErrorIds error);

  bool retire() KVPM_REQUIRES(mutex_);
  void joinRetired();
  void noteEnd(Transfer& transfer);
  std::vector<Retired> takeJoinable();

  mutable kvpm::Mutex mutex_;
  std::condition_variable_any progressed_;
  HttpResult* currentResult_ KVPM_GUARDED_BY(mutex_) = nullptr;
  std::atomic<HttpCallback*> callbacks_{nullptr};
  std::string scratchText_;
  Held transfer_ KVPM_GUARDED_BY(mutex_) = std::make_shared<Transfer>();  // the present one
  std::unique_ptr<kvpm::Thread> thread_ KVPM_GUARDED_BY(mutex_);
  std::string requestData_ KVPM_GUARDED_BY(mutex_);

  std::vector<Retired> retired_ KVPM_GUARDED_BY(mutex_);
  int endings_ KVPM_GUARDED_BY(mutex_) = 0;  // calls that are ending transfers: none may start
  HttpResult ownResult_ KVPM_GUARDED_BY(mutex_);
  kvsc::CancelToken* infoToken_ = nullptr;
};
