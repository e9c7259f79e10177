#pragma once

#include <chrono>
#include <condition_variable>
#include <thread>
#include <vector>

#include "VeskPlayerX/DownloadStatus.h"
#include "kvpm/Mutex.h"
#include "kvsc/CancelToken.h"

namespace download {

/// How far the worker's run has got, and whether it is to stop.
///
/// A run is downloading until it reaches one outcome: completed, stopped or failed. The
/// first outcome stays. Between runs a stop changes nothing. Owner: the worker. Threads: any.
class RunState {
 public:
  /// Makes room for the run, so that entering it cannot fail.
  RunState() { inside_.reserve(1); }

  /// Announces a run: it is running, unless stops are under way, and a stop counts against it.
  void prepare();

  /// The calling thread enters a run. Announces it unless one is announced already.
  void begin();

  /// The calling thread leaves its run, which is over; the state stays as it is. Touches nothing of
  /// the worker afterwards.
  void end();

  /// Waits until every run that was begun has ended; not for one of the calling thread's own.
  void waitForEnd() const;

  /// Downloading, or the outcome of the present or last run.
  DownloadStatusEnumType status() const;
  bool isRunning() const { return status() == DownloadStatusDownloading; }

  /// Ends a running run with `outcome`. Returns false when it had an outcome already.
  bool reach(DownloadStatusEnumType outcome);

  /// A stop begins: a running run is stopped, every wait for it ends, and so does every run that
  /// begins before `stopDone`.
  void askToStop();
  void stopDone();

  /// Whether a stop was asked for since the run was announced, whatever its outcome.
  bool isStopping() const;

  /// Waits while the run is running.
  void waitForOutcome();

  /// Waits until `ended`, a function of state that is followed by `wake`, is true. Returns false as
  /// soon as a stop is asked for before that.
  template <class Ended>
  bool waitUnlessStopped(Ended ended);

  /// Has waits look again.
  void wake();

  /// Cancelled while the run is to stop; for network waits that belong to the run.
  kvsc::CancelToken& cancelToken() { return cancelToken_; }

 private:
  /// The longest that a wait sleeps without looking.
  static constexpr std::chrono::milliseconds kInterval{1000};

  void announce() KVPM_REQUIRES(mutex_);
  bool isInsideRun() const KVPM_REQUIRES(mutex_);

  kvsc::CancelToken cancelToken_;

  mutable kvpm::Mutex mutex_;
  mutable std::condition_variable_any changed_;
  DownloadStatusEnumType status_ KVPM_GUARDED_BY(mutex_) = DownloadStatusStopped;
  bool announced_ KVPM_GUARDED_BY(mutex_) = false;
  bool stopping_ KVPM_GUARDED_BY(mutex_) = false;
  int stops_ KVPM_GUARDED_BY(mutex_) = 0;
  std::vector<std::thread::id> inside_ KVPM_GUARDED_BY(mutex_);  // a thread for each entered run
};

template <class Ended>
bool RunState::waitUnlessStopped(Ended ended) {
  const kvpm::MutexLock lock(mutex_);
  while (!ended() && !stopping_) changed_.wait_for(mutex_, kInterval);
  return ended();
}

}  // namespace download
