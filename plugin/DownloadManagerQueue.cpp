#include "kvpm/PathTools.h"
#include "plugin/DownloadManagerImpl.h"

using Item = VeskPlayerX::DownloadItemInterface;

std::vector<Item*>* DownloadManager::DownloadManagerImpl::getCopyofQueue() {
  auto copy = std::make_unique<std::vector<Item*>>();
  const kvpm::CritLock lock(queueLock_);
  copy->reserve(queue_.size());
  for (const Item* const item : queue_.items()) copy->push_back(new DownloadItem(item));
  return copy.release();
}

unsigned int DownloadManager::DownloadManagerImpl::getNumberOfVideosInQueue() {
  const kvpm::CritLock lock(queueLock_);
  return static_cast<unsigned int>(queue_.size());
}

Item* DownloadManager::DownloadManagerImpl::get(unsigned int id) {
  const kvpm::CritLock lock(queueLock_);
  return queue_.find(id);
}

Item* DownloadManager::DownloadManagerImpl::get(const std::wstring& url) {
  const kvpm::CritLock lock(queueLock_);
  return queue_.findUrl(url);
}

Item* DownloadManager::DownloadManagerImpl::getByTicket(const std::string& ticket) {
  const kvpm::CritLock lock(queueLock_);
  return queue_.findTicket(ticket);
}

Item* DownloadManager::DownloadManagerImpl::getByPath(const std::wstring& path) {
  const kvpm::CritLock lock(queueLock_);
  return queue_.findPath(path, pathSeparator());
}

wchar_t DownloadManager::DownloadManagerImpl::pathSeparator() {
  static const wchar_t separator = kvpm::PathTools::getWPathSeparator()[0];
  return separator;
}

std::optional<DownloadManager::DownloadManagerImpl::Known>
DownloadManager::DownloadManagerImpl::known(const Item* item) {
  return item == nullptr ? std::nullopt
                         : std::make_optional(Known{item->getId(), item->getStatus()});
}

Item* DownloadManager::DownloadManagerImpl::at(unsigned int index) {
  const kvpm::CritLock lock(queueLock_);
  return queue_.at(index);
}

bool DownloadManager::DownloadManagerImpl::remove(unsigned int id) {
  const plugin::OperationHold download(downloadLock_);
  {
    const kvpm::CritLock lock(queueLock_);
    if (!queue_.remove(id)) return false;
  }
  updateListChanged();
  return true;
}

void DownloadManager::DownloadManagerImpl::clearCompletedDownloads() {
  const auto isCompleted = [](const Item& item) {
    return item.getStatus() == DownloadStatusCompleted;
  };
  const plugin::OperationHold download(downloadLock_);
  {
    const kvpm::CritLock lock(queueLock_);
    if (queue_.removeIf(isCompleted) == 0) return;
  }
  updateListChanged();
}

Item* DownloadManager::DownloadManagerImpl::addNewItemToEnd(std::unique_ptr<Item> item) {
  Item* const added = item.get();
  {
    const kvpm::CritLock lock(queueLock_);
    if (queue_.refuses(*added)) {
      refused_.push_back(std::move(item));
      return added;
    }
    queue_.add(std::move(item));
  }
  startDownloadManagerThread();
  events_.raise();
  return added;
}

void DownloadManager::DownloadManagerImpl::moveVideoToBottom(unsigned int id) {
  const kvpm::CritLock lock(queueLock_);
  queue_.moveToBottom(id);
}
