#pragma once

#include <atomic>

#include "download/DownloadThreadInterface.h"
#include "plugin/OperationLock.h"
#include "plugin/SharedQueue.h"

namespace plugin {

/// Pauses, resumes and stops the transfers. Only this part of the manager drives the worker.
///
/// Safe on all threads. Operations of the interface take the operation lock by themselves and do
/// nothing when they have to give way.
class TransferControl {
 public:
  /// Nothing is owned, and all outlives this object.
  TransferControl(SharedQueue& queue, OperationLock& lock, DownloadThreadInterface& worker)
      : queue_(queue), lock_(lock), worker_(worker) {}
  TransferControl(const TransferControl&) = delete;
  TransferControl& operator=(const TransferControl&) = delete;

  // Operations of the interface.

  bool isPaused() const { return isPausedByUser() || changingHead_; }
  void pause();
  void resume();

  /// Stops the present transfer and waits for its end.
  void cancel();

  // For the parts above.

  bool isPausedByUser() const { return paused_; }

  /// Sets a status on the host's behalf. Where that queues an item anew which has failed in the
  /// present transfer, the failure is not recorded a second time. False when it is not queued.
  bool setStatus(unsigned int id, DownloadStatusEnumType status) KVPM_REQUIRES(kOperationLock);

  /// A transfer of the item is about to begin: a stop from here on counts against it.
  void prepare(unsigned int id) KVPM_REQUIRES(kOperationLock);

  /// Downloads `item`, which becomes the worker's; blocks until it has ended.
  DownloadStatusEnumType run(VeskPlayerX::DownloadItemInterface* item);

  /// The transfer has ended. Returns whether its failure, if it failed, still counts.
  bool finish() KVPM_REQUIRES(kOperationLock);

  /// Whether the present transfer is that of the item.
  bool isRunning(unsigned int id) const { return id != 0 && runId_ == id; }

  /// From now on no transfer starts.
  void close() { closing_ = true; }
  bool isClosing() const { return closing_; }

  /// Keeps the queue as if paused while its first item changes, unless it is paused already.
  class HeadChange {
   public:
    HeadChange(TransferControl& control, bool isNeeded) KVPM_REQUIRES(kOperationLock);
    HeadChange(const HeadChange&) = delete;
    HeadChange& operator=(const HeadChange&) = delete;
    ~HeadChange() KVPM_REQUIRES(kOperationLock);

    /// False when nothing had to be done.
    bool isActive() const { return active_; }

   private:
    TransferControl& control_;
    const bool active_;
  };

  /// Sees to it that a pause which an operation begins for its own ends does not outlive the
  /// operation, even when a view throws.
  class ResumeAtEnd {
   public:
    explicit ResumeAtEnd(TransferControl& control) KVPM_REQUIRES(kOperationLock)
        : control_(control) {}
    ResumeAtEnd(const ResumeAtEnd&) = delete;
    ResumeAtEnd& operator=(const ResumeAtEnd&) = delete;
    ~ResumeAtEnd() KVPM_REQUIRES(kOperationLock);

    /// Resumes now. A pause from here on, by a view that is told of it, is the user's.
    void resume() KVPM_REQUIRES(kOperationLock);

   private:
    TransferControl& control_;
    bool resumed_ = false;
  };

 private:
  void endPause() KVPM_REQUIRES(kOperationLock);

  SharedQueue& queue_;
  OperationLock& lock_;
  DownloadThreadInterface& worker_;

  std::atomic<bool> paused_{false};        ///< by the user
  std::atomic<bool> changingHead_{false};  ///< see HeadChange
  std::atomic<bool> closing_{false};
  std::atomic<unsigned int> runId_{0};  ///< the item of the present transfer; 0 between transfers

  /// The item failed in the present transfer, and the host has queued it anew since.
  bool superseded_ KVPM_GUARDED_BY(kOperationLock) = false;
};

}  // namespace plugin
