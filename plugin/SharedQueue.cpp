#include "plugin/SharedQueue.h"

#include <memory>

#include "item/DownloadItem.h"
#include "persistence/DownloadManagerPersistence.h"
#include "plugin/QueueFiles.h"

namespace plugin {

void SharedQueue::open(const std::wstring& folder) {
  if (folder.empty()) return;  // the paths would lead to the root of the file system
  const QueueFiles files(folder);
  const QueueFiles::Items items = files.readQueue();
  use([&items](DownloadQueue& queue) { queue.assign(items); });
  file_ = files.current();
}

SharedQueue::Item* SharedQueue::find(unsigned int id) {
  return use([id](const DownloadQueue& queue) { return queue.find(id); });
}

SharedQueue::Item* SharedQueue::findUrl(const std::wstring& url) {
  return use([&url](const DownloadQueue& queue) { return queue.findUrl(url); });
}

SharedQueue::Item* SharedQueue::findTicket(const std::string& ticket) {
  return use([&ticket](const DownloadQueue& queue) { return queue.findTicket(ticket); });
}

SharedQueue::Item* SharedQueue::findPath(const std::wstring& path) {
  return use([&path](const DownloadQueue& queue) { return queue.findPath(path); });
}

SharedQueue::Item* SharedQueue::at(unsigned int index) {
  return use([index](const DownloadQueue& queue) { return queue.at(index); });
}

std::optional<ItemState> SharedQueue::state(unsigned int id) {
  return use([id](const DownloadQueue& queue) { return stateOf(queue.find(id)); });
}

unsigned int SharedQueue::size() {
  return use([](const DownloadQueue& queue) { return static_cast<unsigned int>(queue.size()); });
}

std::vector<SharedQueue::Item*>* SharedQueue::copy() {
  std::vector<std::unique_ptr<Item>> items;
  use([&items](const DownloadQueue& queue) {
    items.reserve(queue.size());
    for (const Item* const item : queue.items()) items.emplace_back(new DownloadItem(item));
  });
  auto copy = std::make_unique<std::vector<Item*>>(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) (*copy)[i] = items[i].release();
  return copy.release();
}

std::vector<VeskPlayerX::QueuedVersion> SharedQueue::versions() {
  return use([](const DownloadQueue& queue) {
    std::vector<VeskPlayerX::QueuedVersion> versions(queue.size());
    std::size_t i = 0;
    for (const Item* const item : queue.items())
      versions[i++] = DownloadItem::queuedVersionOf(*item);
    return versions;
  });
}

SharedQueue::Item* SharedQueue::copyOf(unsigned int id) {
  return use([id](const DownloadQueue& queue) -> Item* {
    const Item* const item = queue.find(id);
    return item != nullptr ? new DownloadItem(item) : nullptr;
  });
}

bool SharedQueue::change(unsigned int id, const Change& change) {
  const kvpm::CritLock lock(lock_);
  Item* const item = queue_.find(id);
  if (item == nullptr) return false;
  change(*item);
  return true;
}

bool SharedQueue::changeAndAnnounce(unsigned int id, const Change& change) {
  const bool found = this->change(id, change);
  if (found) announceItem(id);
  return found;
}

// Announcing is one notice, writing included: once a view is detached, nothing is written on its
// behalf any more. The view itself is told with the queue unlocked.

void SharedQueue::announceList() {
  view_.notify([this](View& view) {
    {
      const kvpm::CritLock lock(lock_);
      write();
    }
    view.downloadListChanged();
  });
}

void SharedQueue::announceItem(unsigned int id) {
  view_.notify([this, id](View& view) {
    {
      const kvpm::CritLock lock(lock_);
      if (queue_.find(id) == nullptr) return;
      write();
    }
    view.downloadItemChanged(id);
  });
}

void SharedQueue::write() { DownloadManagerPersistence::writeDownloadQueue(file_, queue_.items()); }

}  // namespace plugin
