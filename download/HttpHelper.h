#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "download/HttpResult.h"
#include "download/HttpTransfer.h"
#include "kvpm/IRunnable.h"
#include "kvsc/CancelToken.h"
#include "kvsc/HttpErrorIds.h"
#include "kvsc/SSLSession.h"

class HttpCallback;

namespace kvsc {
class SSLClient;
}

/// A small synchronous facade of the secure HTTP client: asks for a file's size and location, or
/// streams a transfer to an `HttpCallback` on a thread of its own.
///
/// Set up once per address, used for one operation at a time by one thread; `cancelDownload` and
/// `abort` may come from any other. A receiver may call these two from its callbacks, and nothing
/// else. Every operation answers with an `HttpResult` that belongs to the caller; nothing throws.
class HttpHelper : public kvpm::IRunnable {
 public:
  HttpHelper();

  /// Aborts a running transfer.
  ~HttpHelper() override;

  /// Prepares for `url` with a fresh client, built from `clientArg`. First ends this helper's
  /// earlier transfer, no other, and waits for it. Always returns true.
  bool setup(const std::string& url, const std::string& clientArg);

  /// The receiver of headers, body and outcome; not owned, may be null.
  void setCallbacks(HttpCallback* callbacks) { callbacks_ = callbacks; }

  /// Lets `token` end a `getInfo`, instead of this helper's own cancel; not owned, may be null.
  void setCancelToken(kvsc::CancelToken* token) { infoToken_ = token; }

  /// Asks with HEAD, following up to 10 redirects, on the calling thread.
  HttpResult* getInfo();

  /// Starts fetching, looks every 100 ms, and returns once the first piece of the body was passed
  /// on, or the transfer has failed or ended. The rest of the body and the outcome reach the
  /// callbacks later. Takes back a cancel. `requestData` goes to the client as it is. Failed when
  /// the first piece is refused, or is that of an error. While a transfer runs, nothing is started.
  HttpResult* get(const std::string& requestData);

  /// Starts sending a POST and returns as `get` does, once the answer's body flows. The result is
  /// `HTTP_RESULT_OK` whatever the outcome.
  HttpResult* post();

  /// Cancels this helper's transfer and those that run in any other helper.
  void cancelDownload();

  /// Cancels as `cancelDownload` does when a transfer of this helper is running, and waits until it
  /// has ended; on the transfer's own thread it does not wait. The next transfer needs a `setup`.
  void abort();

  /// Runs the transfer that was started; does nothing without one.
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
  const kvsc::SSLSession* getSession() const { return session_.get(); }

  /// 0 while transfers may run, -1 once cancelled; shared by every helper.
  static std::atomic<std::int32_t> sDownloadCancelled;

 private:
  void askForInfo(HttpResult& result);
  std::unique_ptr<HttpResult> transfer(const std::string& method, const std::string& requestData,
                                       HttpCallback* receiver);
  void prepareClient();
  kvsc::HttpErrorIds exchange();

  // Written by the caller's thread while no transfer runs.
  std::string url_;
  std::string method_;  // "get" or "post"; empty before either
  std::string requestData_;
  std::unique_ptr<kvsc::SSLClient> client_;
  std::unique_ptr<kvsc::SSLSession> session_;
  kvsc::CancelToken* infoToken_ = nullptr;
  std::string scratchText_;

  // Synchronised by themselves.
  std::atomic<HttpCallback*> callbacks_{nullptr};
  download::HttpTransfer transfer_{*this};
};
