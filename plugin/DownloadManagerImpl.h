#pragma once

#include "download/HttpDownloadThread.h"
#include "plugin/DownloadManager.h"
#include "plugin/Intake.h"
#include "plugin/Moves.h"
#include "plugin/OperationLock.h"
#include "plugin/Playback.h"
#include "plugin/Progress.h"
#include "plugin/Scheduler.h"
#include "plugin/ServicesLookup.h"
#include "plugin/SharedQueue.h"
#include "plugin/TransferControl.h"

/// The parts of the manager, each of which knows only those above it here, and their common start
/// and end.
///
/// Owned by the manager and by the operations that are running in it. All operations but
/// `setViewInterface` are called once, on the host's thread.
class DownloadManager::DownloadManagerImpl {
 public:
  /// `owner` is what the worker reports to; neither it nor `context` is owned.
  DownloadManagerImpl(DownloadManager* owner, KPIM::Context* context);

  /// Reads the queue and starts the scheduler.
  void open();

  /// Stops everything: once it returns, no thread of the module runs.
  void close();

  void setViewInterface(View* view);

  plugin::SharedQueue queue;
  plugin::OperationLock lock{queue.events()};
  plugin::ServicesLookup services;
  HttpDownloadThread worker;
  plugin::TransferControl transfers{queue, lock, worker};
  plugin::Moves moves{queue, lock, transfers};
  plugin::Progress progress;
  plugin::Scheduler scheduler{queue, lock, transfers, moves, progress};
  plugin::Playback playback;
  plugin::Intake intake{queue, lock, transfers, moves, scheduler, services};

 private:
  void attach(View* view);

  DownloadManager* const owner_;
};
