#include "plugin/DownloadManagerImpl.h"

#include "KPX/OSUtilities.h"

DownloadManager::DownloadManagerImpl::DownloadManagerImpl(DownloadManager* owner,
                                                          KPIM::Context* context)
    : services(context),
      worker(context),
      progress(queue, lock, services, context),
      playback(queue, lock, transfers, moves, context),
      owner_(owner) {}

void DownloadManager::DownloadManagerImpl::open() {
  // The host's `play` may restart the queue; in the middle of a transfer the film flows already.
  worker.setPlayback([this](unsigned int id) { return playback.playRunning(id); });
  worker.setInterfaces(owner_, nullptr);
  queue.open(VeskPlayerX::OSUtilities::getApplicationDataPath().toStdWString());
  queue.announceList();
  scheduler.start();
}

void DownloadManager::DownloadManagerImpl::close() {
  transfers.close();
  const plugin::OperationLock::WaitForBackground wait(lock);
  attach(nullptr);
  transfers.pause();
  scheduler.stop();
  worker.close();
  progress.finish();
}

void DownloadManager::DownloadManagerImpl::setViewInterface(View* view) {
  const plugin::OperationLock::WaitForBackground wait(lock);
  attach(view);
}

/// Waits for notices to the earlier view that run on other threads.
void DownloadManager::DownloadManagerImpl::attach(View* view) {
  queue.view().attach(view);
  worker.setInterfaces(owner_, view);
}
