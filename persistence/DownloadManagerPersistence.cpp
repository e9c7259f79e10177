#include "persistence/DownloadManagerPersistence.h"

#include <exception>
#include <optional>
#include <utility>

#include "persistence/QueueDocument.h"
#include "persistence/QueueFile.h"
#include "persistence/WrittenQueue.h"

namespace {

using persistence::QueueReading;

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

/// What `read` makes of the file; not understood when there is no memory for it.
QueueReading readSafely(QueueReading (*read)(const std::wstring&), const std::wstring& path) {
  QueueReading reading;
  withoutThrowing([&] { reading = read(path); });
  return reading;
}

DownloadManagerPersistence::Items itemsOf(QueueReading reading) {
  DownloadManagerPersistence::Items items;
  withoutThrowing([&] { items = persistence::handOver(std::move(reading.items)); });
  return items;
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
  return itemsOf(readSafely(persistence::readQueue, path));
}

DownloadManagerPersistence::Items DownloadManagerPersistence::loadDownloadQueue(
    const std::wstring& path, bool* isKept) {
  const kvpm::CritLock lock(persistenceLock);
  QueueReading reading = readSafely(persistence::readQueue, path);
  bool kept = reading.isUnderstood;
  if (!kept) withoutThrowing([&] { kept = persistence::setAside(path); });
  if (isKept != nullptr) *isKept = kept;
  return itemsOf(std::move(reading));
}

DownloadManagerPersistence::Items DownloadManagerPersistence::readNewQueue(
    const std::wstring& path) {
  return itemsOf(readSafely(persistence::readCurrentQueue, path));
}

DownloadManagerPersistence::Items DownloadManagerPersistence::readOldQueue(
    const std::wstring& path) {
  return itemsOf(readSafely(persistence::readLegacyQueue, path));
}
