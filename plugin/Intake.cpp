#include "plugin/Intake.h"

#include <cstdint>
#include <utility>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"
#include "persistence/TicketParser.h"
#include "plugin/NewDownload.h"
#include "plugin/StatusGroups.h"

namespace plugin {
namespace {

/// Whether the file can be opened and holds fewer than `wholeSize` bytes.
bool isIncomplete(const std::wstring& path, std::uint64_t wholeSize) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0) return false;
  return static_cast<std::uint64_t>(file.getTotalSize()) < wholeSize;
}

}  // namespace

Intake::Intake(SharedQueue& queue, OperationLock& lock, TransferControl& transfers, Moves& moves,
               Scheduler& scheduler, ServicesLookup& services)
    : queue_(queue),
      lock_(lock),
      transfers_(transfers),
      moves_(moves),
      scheduler_(scheduler),
      services_(services) {}

Intake::Item* Intake::add(const std::wstring& url, const std::wstring& title,
                          const std::wstring& providerName) {
  std::unique_ptr<Item> item = makeDownload(url, title, providerName);
  Item* const added = item.get();
  if (item == nullptr || !addAndResume(std::move(item))) return nullptr;
  // Outside the lock: a view that plays the new item from this notice waits for the scheduler.
  tellOfAdding();
  return added;
}

/// Under one lock: a scheduler that picked the item before the queue resumes would have it queued
/// anew while it runs.
bool Intake::addAndResume(std::unique_ptr<Item> item) {
  if (!lock_.enter()) return false;
  const OperationGuard guard(lock_);
  append(std::move(item));
  queue_.announceList();
  transfers_.resume();
  return true;
}

std::vector<Intake::Item*> Intake::addTicket(const std::wstring& ticketPath) {
  if (!lock_.enter()) return {};
  const OperationGuard guard(lock_);
  // However many quotes there are: the desktop and the user may each have quoted the path.
  const std::wstring path = kvpm::StringTools::stripBeginingAndEndChar(ticketPath, L'"');
  const auto services = services_.find();
  if (services == nullptr) return {};
  const Records records = services->get()->readTicket(path);
  std::vector<Item*> added;
  Items refused;
  if (records.empty()) {
    addClear(path, added);
  } else {
    addProtected(records, path, added, refused);
  }
  tellOfAdding();
  queue_.announceList();
  transfers_.resume();
  refused_ = std::move(refused);
  return added;
}

void Intake::addClear(const std::wstring& path, std::vector<Item*>& added) {
  const std::vector<Item*> parsed = TicketParser::parseClearTicket(path);
  Items items(parsed.begin(), parsed.end());
  for (auto& item : items) append(std::move(item));
  added = parsed;
}

/// Each item replaces the ended downloads of the same content. The parser deletes the ticket file,
/// so nothing after it may fail: room for the items is made first.
void Intake::addProtected(const Records& records, const std::wstring& path,
                          std::vector<Item*>& added, Items& refused) {
  added.reserve(records.size());
  refused.reserve(records.size());
  queue_.use([&records](DownloadQueue& queue) { queue.reserve(records.size()); });
  for (Item* const parsed : TicketParser::processEncryptedTicket(records, path)) {
    std::unique_ptr<Item> item(parsed);
    if (item == nullptr) continue;
    dropEnded(item->getContentEncryptionUsageId());
    added.push_back(item.get());
    std::unique_ptr<Item> rest = append(std::move(item));
    if (rest != nullptr) refused.push_back(std::move(rest));
  }
}

/// Adds the item, unless the queue refuses it: then it is returned.
std::unique_ptr<Intake::Item> Intake::append(std::unique_ptr<Item> item) {
  queue_.use([&item](DownloadQueue& queue) {
    if (!queue.refuses(*item)) queue.add(std::move(item));
  });
  if (item == nullptr) {
    scheduler_.start();
    queue_.events().raise();
  }
  return item;
}

void Intake::dropEnded(long contentEncryptionUsageId) {
  queue_.use([contentEncryptionUsageId](DownloadQueue& queue) {
    queue.removeIf([contentEncryptionUsageId](const Item& item) {
      return isAtBottom(item.getStatus()) &&
             item.getContentEncryptionUsageId() == contentEncryptionUsageId;
    });
  });
}

void Intake::zpsFileOpenedForPlayback(const std::wstring& path,
                                      const VeskDrmPlaybackAuthorizationResponse* response,
                                      const VeskDrmTransactionRecord* record) {
  if (response == nullptr || !lock_.enter()) return;
  const OperationGuard guard(lock_);
  if (!isIncomplete(path, response->fileSize)) return;
  const std::optional<ItemState> queued = queue_.use([response](const DownloadQueue& queue) {
    return stateOf(queue.findTicket(response->ticket));
  });
  if (queued && isActive(queued->status)) return;
  if (queued) {
    scheduler_.continueWith(queued->id);
  } else {
    putFirst(makeDownload(path, *response, record));
  }
  tellOfAdding();
}

/// Adds an item above all others and restarts the queue with it.
void Intake::putFirst(std::unique_ptr<Item> item) {
  TransferControl::ResumeAtEnd atEnd(transfers_);
  const unsigned int id = item->getId();
  transfers_.pause();
  append(std::move(item));
  moves_.moveToTop(id);
  atEnd.resume();
}

void Intake::tellOfAdding() {
  queue_.view().notify([](SharedQueue::View& view) { view.downloadItemsAdded(); });
}

}  // namespace plugin
