#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <thread>

#include "kvpm/IRunnable.h"
#include "kvpm/Mutex.h"
#include "kvpm/Thread.h"
#include "kvsc/CancelToken.h"
#include "kvsc/HttpErrorIds.h"

namespace download {

/// The thread of a streamed transfer, and how far the transfer has got.
///
/// Owner: the helper whose `runThread` is the transfer. One thread sets up, starts and waits; the
/// transfer's own thread tells of its progress; any thread may end it.
class HttpTransfer {
 public:
  /// `body` is not owned and outlives this object.
  explicit HttpTransfer(kvpm::IRunnable& body) : body_(body) {}

  /// Ends every wait of the exchange when it is cancelled.
  kvsc::CancelToken& token() { return token_; }

  /// Ends the earlier transfer, then makes a thread for the next one.
  void setUp();

  /// Calls `prepare` and starts a transfer, unless one is running. Returns whether one runs now:
  /// none does without `setUp`, or when the system has no thread to give.
  bool start(const std::function<void()>& prepare);

  /// Waits until the first piece of the body was passed on, or the transfer has ended or is
  /// aborted.
  void waitForBody();

  /// Whether the transfer was aborted, has failed, or brings the text of an error.
  bool hasFailed();

  /// From the start to the end of the exchange.
  bool isRunning();

  /// Ends the exchange and every wait for it; the thread leaves in its own time.
  void abort();

  /// Ends the exchange, waits for the thread and forgets it. On that very thread it only does the
  /// first.
  void end();

  // Called on the transfer's thread.

  void enter();

  /// A piece of an answer with this HTTP status has reached the receiver. One that was refused ends
  /// the exchange, since the client does not look at what its callbacks return.
  void notePiece(int status, bool refused);

  /// The exchange is over. Returns what came of it: a refused body has failed, not been cancelled.
  kvsc::HttpErrorIds noteEnd(kvsc::HttpErrorIds error);

  void leave();

 private:
  struct Progress {
    bool bodyStarted = false;
    bool refused = false;
    bool aborted = false;
    bool ended = false;
    kvsc::HttpErrorIds error = kvsc::HTTP_ERROR_NONE;
    int status = 0;  ///< of the answer that the latest piece belongs to
  };

  void joinEnded();

  kvpm::IRunnable& body_;
  kvsc::CancelToken token_;

  kvpm::Mutex mutex_;
  std::condition_variable_any changed_;
  Progress progress_ KVPM_GUARDED_BY(mutex_);
  std::unique_ptr<kvpm::Thread> thread_ KVPM_GUARDED_BY(mutex_);
  std::thread::id runner_ KVPM_GUARDED_BY(mutex_);  // the thread that is inside the transfer
};

}  // namespace download
