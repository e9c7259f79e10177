#include "persistence/DownloadManagerPersistence.h"

#include <exception>
#include <optional>
#include <utility>

#include "persistence/QueueDocument.h"
#include "persistence/QueueFile.h"
#include "persistence/WrittenQueue.h"

namespace {

using persistence::QueueFormat;
using Items = DownloadManagerPersistence::Items;

/// Under the persistence lock.
persistence::WrittenQueue writtenQueue;

/// Nothing but a lack of memory is thrown below this class, and nothing is thrown above it.
template <class Action>
void withoutThrowing(Action action) {
  try {
    action();
  } catch (const std::exception&) {
    // The caller's result says it: nothing was read, or the old file stays.
  }
}

/// The items that `read` finds, handed over. `isUnderstood`, which may be null, tells whether there
/// was a document and memory for all of it.
Items itemsOf(std::optional<persistence::ItemList> (*read)(const std::wstring&),
              const std::wstring& path, bool* isUnderstood) {
  Items items;
  bool understood = false;
  withoutThrowing([&] {
    auto found = read(path);
    if (!found) return;
    items = persistence::handOver(*std::move(found));
    understood = true;
  });
  if (isUnderstood != nullptr) *isUnderstood = understood;
  return items;
}

/// Unknown also when there is no memory to look.
QueueFormat formatSafely(const std::wstring& path) {
  QueueFormat format = QueueFormat::kUnknown;
  withoutThrowing([&] { format = persistence::formatOfFile(path); });
  return format;
}

}  // namespace

kvpm::CritSection DownloadManagerPersistence::persistenceLock;

bool DownloadManagerPersistence::writeDownloadQueue(const std::wstring& path, const Items& items) {
  const kvpm::CritLock lock(persistenceLock);
  withoutThrowing([&] {
    const std::optional<std::string> document = writtenQueue.document(items);
    if (document) persistence::replaceFile(path, *document);
  });
  return true;
}

DownloadManagerPersistence::Items DownloadManagerPersistence::readDownloadQueue(
    const std::wstring& path) {
  const kvpm::CritLock lock(persistenceLock);
  return readByFormat(path, nullptr);
}

DownloadManagerPersistence::Items DownloadManagerPersistence::loadDownloadQueue(
    const std::wstring& path, bool* isKept) {
  const kvpm::CritLock lock(persistenceLock);
  bool kept = false;
  Items items = readByFormat(path, &kept);
  if (!kept) withoutThrowing([&] { kept = persistence::setAside(path); });
  if (isKept != nullptr) *isKept = kept;
  return items;
}

DownloadManagerPersistence::Items DownloadManagerPersistence::readByFormat(const std::wstring& path,
                                                                           bool* isUnderstood) {
  const QueueFormat format = formatSafely(path);
  if (format == QueueFormat::kCurrent) return readNewQueue(path, isUnderstood);
  if (format == QueueFormat::kLegacy) return readOldQueue(path, isUnderstood);
  if (isUnderstood != nullptr) *isUnderstood = format == QueueFormat::kEmpty;
  return {};
}

DownloadManagerPersistence::Items DownloadManagerPersistence::readNewQueue(const std::wstring& path,
                                                                           bool* isUnderstood) {
  return itemsOf(persistence::readCurrentQueue, path, isUnderstood);
}

DownloadManagerPersistence::Items DownloadManagerPersistence::readOldQueue(const std::wstring& path,
                                                                           bool* isUnderstood) {
  return itemsOf(persistence::readLegacyQueue, path, isUnderstood);
}
