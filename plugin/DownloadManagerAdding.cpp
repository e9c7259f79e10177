#include "VeskPlayerX/VeskDrm.h"
#include "kvpm/File.h"
#include "kvpm/StringTools.h"
#include "persistence/TicketParser.h"
#include "plugin/DownloadManagerImpl.h"
#include "plugin/NewDownload.h"
#include "plugin/StatusGroups.h"

namespace {

using Item = VeskPlayerX::DownloadItemInterface;
using View = VeskPlayerX::DownloadManagerViewInterface;

/// Whether the file can be opened and holds fewer than `wholeSize` bytes.
bool isIncomplete(const std::wstring& path, std::uint64_t wholeSize) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0) return false;
  return static_cast<std::uint64_t>(file.getTotalSize()) < wholeSize;
}

template <class T>
std::vector<std::unique_ptr<T>> own(const std::vector<T*>& handedOver) {
  return {handedOver.begin(), handedOver.end()};
}

std::unique_ptr<DownloadItem> makeProtected(const std::wstring& path,
                                            const VeskDrmPlaybackAuthorizationResponse& response,
                                            const VeskDrmTransactionRecord* record) {
  auto item = std::make_unique<DownloadItem>();
  if (record != nullptr) item->setContentEncryptionUsageId(record->contentEncryptionUsageId);
  item->setPath(path);
  item->setSize(response.fileSize);
  item->setStatus(DownloadStatusQueued);
  item->setTitle(response.title);
  item->setTicket(response.ticket);
  item->setEncrypted(true);
  return item;
}

void tellOfAdding(download::AttachedView& view) {
  view.notify([](View& attached) { attached.downloadItemsAdded(); });
}

}  // namespace

Item* DownloadManager::DownloadManagerImpl::add(const std::wstring& url, const std::wstring& title,
                                                const std::wstring& providerName) {
  std::unique_ptr<Item> item = plugin::makeDownload(url, title, providerName);
  if (item == nullptr) return nullptr;
  Item* const added = addAndResume(std::move(item));
  // With the lock given back: a view that plays the new item from here waits for the scheduler.
  tellOfAdding(view_);
  return added;
}

/// The scheduler picks the item only afterwards: resuming would queue it anew while it runs.
Item* DownloadManager::DownloadManagerImpl::addAndResume(std::unique_ptr<Item> item) {
  const plugin::OperationHold download(downloadLock_);
  Item* const added = addNewItemToEnd(std::move(item));
  updateListChanged();
  resume();
  return added;
}

std::vector<Item*> DownloadManager::DownloadManagerImpl::addTicket(const std::wstring& ticketPath) {
  const plugin::OperationHold download(downloadLock_);
  // However many there are: a path may have been quoted by the desktop and by the user.
  const std::wstring path = kvpm::StringTools::stripBeginingAndEndChar(ticketPath, L'"');
  const auto services = services_.find();
  if (services == nullptr) return {};
  const std::vector<VeskDrmTicketData*> records = services->get()->readTicket(path);
  const auto ownedRecords = own(records);
  std::vector<Item*> added =
      records.empty() ? addClearTicket(path) : addEncryptedTicket(records, path);
  tellOfAdding(view_);
  updateListChanged();
  resume();
  return added;
}

std::vector<Item*> DownloadManager::DownloadManagerImpl::addClearTicket(const std::wstring& path) {
  std::vector<Item*> added;
  for (auto& item : own(TicketParser::parseClearTicket(path))) {
    added.push_back(addNewItemToEnd(std::move(item)));
  }
  return added;
}

/// Each item replaces the ended downloads of the same content.
std::vector<Item*> DownloadManager::DownloadManagerImpl::addEncryptedTicket(
    const std::vector<VeskDrmTicketData*>& records, const std::wstring& path) {
  std::vector<Item*> added;
  for (auto& item : own(TicketParser::processEncryptedTicket(records, path))) {
    if (item == nullptr) continue;
    dropEnded(item->getContentEncryptionUsageId());
    added.push_back(addNewItemToEnd(std::move(item)));
  }
  return added;
}

void DownloadManager::DownloadManagerImpl::dropEnded(long contentEncryptionUsageId) {
  const kvpm::CritLock lock(queueLock_);
  queue_.removeIf([contentEncryptionUsageId](const Item& item) {
    return plugin::isAtBottom(item.getStatus()) &&
           item.getContentEncryptionUsageId() == contentEncryptionUsageId;
  });
}

void DownloadManager::DownloadManagerImpl::zpsFileOpenedForPlayback(
    const std::wstring& path, const VeskDrmPlaybackAuthorizationResponse& response,
    const VeskDrmTransactionRecord* record) {
  const plugin::OperationHold control(controlLock_);
  const plugin::OperationHold download(downloadLock_);
  if (!isIncomplete(path, response.fileSize)) return;
  const std::optional<Known> queued = [&] {
    const kvpm::CritLock lock(queueLock_);
    return known(queue_.findTicket(response.ticket));
  }();
  if (queued && plugin::isActive(queued->status)) return;
  if (queued) {
    continueFirst(queued->id);
  } else {
    putFirst(makeProtected(path, response, record));
  }
  tellOfAdding(view_);
}

/// Adds an item above all others and restarts the queue with it.
void DownloadManager::DownloadManagerImpl::putFirst(std::unique_ptr<Item> item) {
  const unsigned int id = item->getId();
  pause();
  addNewItemToEnd(std::move(item));
  moveVideoToTop(id);
  resume();
}
