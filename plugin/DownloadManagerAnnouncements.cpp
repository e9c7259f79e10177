#include "persistence/DownloadManagerPersistence.h"
#include "plugin/DownloadManagerImpl.h"

// Announcing is one visit to the view, writing included: once a view is detached, nothing is
// written on its behalf any more. The view itself is told with the queue unlocked.

void DownloadManager::DownloadManagerImpl::updateListChanged() {
  view_.notify([this](View& view) {
    {
      const kvpm::CritLock lock(queueLock_);
      writeQueue();
    }
    view.downloadListChanged();
  });
}

void DownloadManager::DownloadManagerImpl::updateItemChanged(unsigned int id) {
  view_.notify([this, id](View& view) {
    {
      const kvpm::CritLock lock(queueLock_);
      if (queue_.find(id) == nullptr) return;
      writeQueue();
    }
    view.downloadItemChanged(id);
  });
}

void DownloadManager::DownloadManagerImpl::writeQueue() {
  DownloadManagerPersistence::writeDownloadQueue(queueFile_, queue_.items());
}
