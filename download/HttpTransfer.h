#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "download/HttpResult.h"
#include "kvpm/Mutex.h"
#include "kvpm/Thread.h"
#include "kvsc/CancelToken.h"
#include "kvsc/HttpErrorIds.h"

namespace download {

/// The transfers of an `HttpHelper`, one at a time on a thread of their own: how far the present or
/// last one has got, and the result that its headers fill.
///
/// `allow`, `start` and `waitForBody` are for the thread that uses the helper; `cancel`, `end` and
/// `isRunning` for any.
class HttpTransfer {
 public:
  /// `body` carries a transfer out; not owned, outlives this.
  explicit HttpTransfer(kvpm::IRunnable& body) : body_(body) {}

  /// Lets transfers start, which they do not before, nor after `end`. None may be running.
  void allow();

  /// Starts a transfer; one that runs already goes on instead. Calls `prepare` right before the
  /// start. Returns whether a transfer runs now.
  bool start(HttpCallback* receiver, const std::function<void()>& prepare);

  /// Waits for the first piece of the body, or the end or failure before it, for which it looks
  /// every 100 ms. Returns a copy of the transfer's result: the transfer goes on writing its own.
  std::unique_ptr<HttpResult> waitForBody();

  bool isRunning();

  /// Makes the transfer fail.
  void cancel();

  /// Ends the transfer and waits for its thread, unless that is the calling one.
  void end();

  /// Ends the waits of the client.
  kvsc::CancelToken& token() { return token_; }

  /// Has headers noted in `result`, not owned, until the next transfer starts.
  void fill(HttpResult& result);

  /// Takes note of a header. Returns the receiver to tell, which may be null; nullopt when there is
  /// no result to fill.
  std::optional<HttpCallback*> noteHeader(const std::string& line);

  // Called on the transfer's own thread. `enter` comes first, `leave` last.
  void enter() { runner_ = std::this_thread::get_id(); }
  void leave() { runner_ = std::thread::id(); }

  void notePiece();

  /// The receiver did not take a piece. Ends the transfer, since the client does not look at what
  /// its callbacks return.
  void noteRefusal();

  /// Returns the outcome of the transfer: one that was ended because its receiver refused the body
  /// has failed, it was not cancelled.
  kvsc::HttpErrorIds noteEnd(kvsc::HttpErrorIds error);

 private:
  struct Progress {
    bool bodyStarted = false;
    bool refused = false;  ///< by the receiver
    bool aborted = false;  ///< or failed
    bool ended = true;
  };

  void joinEnded();
  bool isBodyAwaited();

  // Constant after construction or synchronised by themselves.
  kvpm::IRunnable& body_;
  std::atomic<std::thread::id> runner_{};  // the thread that is inside the transfer
  kvsc::CancelToken token_;

  kvpm::Mutex mutex_;
  Progress progress_ KVPM_GUARDED_BY(mutex_);
  std::unique_ptr<kvpm::Thread> thread_ KVPM_GUARDED_BY(mutex_);  // null unless allowed
  HttpResult* currentResult_ KVPM_GUARDED_BY(mutex_) = nullptr;
  HttpResult transferResult_ KVPM_GUARDED_BY(mutex_);  // of the present or last transfer
};

}  // namespace download
