#pragma once

#include <memory>
#include <optional>

#include "item/DownloadItem.h"
#include "kvpm/IRunnable.h"
#include "kvpm/Thread.h"
#include "plugin/Moves.h"
#include "plugin/Progress.h"
#include "plugin/TransferControl.h"

namespace plugin {

/// The thread that works through the queue: picks the first item that may be downloaded, has it
/// downloaded, and records the outcome.
///
/// It never waits for an operation of the host, which may be waiting for this thread: it tries the
/// operation lock, and sleeps on the event of its release. `start` is called by one thread at a
/// time, everything else on any.
class Scheduler : private kvpm::IRunnable {
 public:
  /// Nothing is owned, and all outlives this object.
  Scheduler(SharedQueue& queue, OperationLock& lock, TransferControl& transfers, Moves& moves,
            Progress& progress);

  /// Stops.
  ~Scheduler() override { stop(); }

  /// Starts the thread, unless it is running already or no transfer is to start any more.
  void start();

  /// Has the thread end and waits for it. A transfer that runs has to be stopped before.
  void stop();

  /// An operation of the interface: takes the operation lock, and does nothing when it has to give
  /// way.
  void retry(unsigned int id);

  /// Puts an item at the top and restarts the queue with it.
  void continueWith(unsigned int id) KVPM_REQUIRES(kOperationLock);

 private:
  void runThread(kvpm::Thread* thread) override;
  void awaitCalm();
  bool runNext();
  std::unique_ptr<DownloadItem> pick();
  std::unique_ptr<DownloadItem> pickFirst() KVPM_REQUIRES(kOperationLock);
  std::unique_ptr<DownloadItem> prepare(unsigned int id) KVPM_REQUIRES(kOperationLock);
  std::optional<unsigned int> candidate();
  bool enterUnlessStopped() KVPM_TRY_ACQUIRE(true, kOperationLock);
  void record(DownloadItem& copy, DownloadStatusEnumType result) KVPM_REQUIRES(kOperationLock);

  SharedQueue& queue_;
  OperationLock& lock_;
  TransferControl& transfers_;
  Moves& moves_;
  Progress& progress_;

  bool startsIdle_ = false;    // written before the thread starts
  kvpm::Thread thread_{this};  // last: it ends before anything that it uses
};

}  // namespace plugin
