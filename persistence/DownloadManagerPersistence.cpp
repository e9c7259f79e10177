#include "persistence/DownloadManagerPersistence.h"

#include <cstring>
#include <exception>
#include <memory>
#include <utility>

#include "kvpm/PathTools.h"
#include "persistence/ProtectedFiles.h"
#include "persistence/QueueFile.h"
#include "persistence/QueueText.h"
#include "persistence/WideText.h"

using persistence::Durability;
using persistence::QueueFormat;
using persistence::QueueOutcome;
using persistence::QueueReading;

kvpm::CritSection DownloadManagerPersistence::persistenceLock;

namespace {

using Items = DownloadManagerPersistence::Items;

persistence::QueueText queueText KVPM_GUARDED_BY(DownloadManagerPersistence::persistenceLock);

/// The file that was found to hold `queueText`, and its version then.
struct Holder {
  std::wstring path;
  std::uint64_t version = 0;
};
Holder holder KVPM_GUARDED_BY(DownloadManagerPersistence::persistenceLock);

persistence::ProtectedFiles protectedFiles
    KVPM_GUARDED_BY(DownloadManagerPersistence::persistenceLock);

// The functions below this class throw `std::bad_alloc` alone; this class lets nothing through.

struct Loaded {
  QueueOutcome outcome = QueueOutcome::kUnavailable;
  Items items;
};

/// Runs `read`; the outcome is `kUnavailable` when memory runs out.
template <class Read>
Loaded tryToLoad(Read read) {
  try {
    QueueReading reading = read();
    return {reading.outcome, persistence::release(std::move(reading.items))};
  } catch (const std::exception&) {
    return {};
  }
}

/// Reads a file, and protects it as long as it cannot be read.
Loaded load(const std::wstring& path) KVPM_REQUIRES(DownloadManagerPersistence::persistenceLock) {
  Loaded loaded = tryToLoad([&] { return persistence::readQueueFile(path); });
  if (loaded.outcome == QueueOutcome::kUnavailable) {
    protectedFiles.protect(path, path);
  } else {
    protectedFiles.noteRead(path, loaded.outcome == QueueOutcome::kRefused);
  }
  return loaded;
}

/// Whether the file is the one that was found to hold `queueText`, and has not changed since.
bool isHolder(const Holder& found, const std::wstring& path) {
  return found.path == path && found.version != 0 &&
         found.version == kvpm::PathTools::getFileVersion(path);
}

/// Puts `queueText`, in which `changed` may say what is new to the file, into the file.
bool replace(const std::wstring& path, Durability durability,
             const std::optional<persistence::ByteRange>& changed)
    KVPM_REQUIRES(DownloadManagerPersistence::persistenceLock) {
  if (!persistence::replaceFile(path, queueText.text(), durability, changed)) return false;
  holder = {path, kvpm::PathTools::getFileVersion(path)};
  return true;
}

/// Returns whether the file now holds `items`.
bool write(const std::wstring& path, const Items& items, Durability durability)
    KVPM_REQUIRES(DownloadManagerPersistence::persistenceLock) {
  try {
    if (!protectedFiles.prepareToReplace(path)) return false;
    Holder earlier = std::exchange(holder, {});
    const bool isChanged = queueText.update(items);
    const bool isKnown = isHolder(earlier, path);
    if (isChanged || durability == Durability::kOnDisk) {
      return replace(path, durability, isKnown ? std::optional(queueText.change()) : std::nullopt);
    }
    // Many announcements concern fields that the file does not hold.
    if (isKnown) {
      holder = std::move(earlier);
    } else if (persistence::holdsExactly(path, queueText.text())) {
      holder = {path, kvpm::PathTools::getFileVersion(path)};
    } else {
      return replace(path, durability, std::nullopt);
    }
    return true;  // the file holds these items already
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

bool DownloadManagerPersistence::writeDownloadQueue(const std::wstring& path, const Items& items) {
  const kvpm::CritLock lock(persistenceLock);
  write(path, items, Durability::kWritten);
  return true;
}

Items DownloadManagerPersistence::readDownloadQueue(const std::wstring& path) {
  const kvpm::CritLock lock(persistenceLock);
  return load(path).items;
}

Items DownloadManagerPersistence::migrateDownloadQueue(const std::wstring& legacy,
                                                       const std::wstring& current) {
  const kvpm::CritLock lock(persistenceLock);
  Loaded loaded = load(legacy);
  if (loaded.outcome == QueueOutcome::kUnavailable) {
    protectedFiles.protect(current, legacy);
  } else if (!persistence::isThere(legacy)) {
    write(current, loaded.items, Durability::kWritten);
  } else if (write(current, loaded.items, Durability::kOnDisk) &&
             protectedFiles.prepareToReplace(legacy)) {
    // A refused file is not deleted: it has been moved by now.
    kvpm::PathTools::deleteFile(legacy);
  }
  return std::move(loaded.items);
}

Items DownloadManagerPersistence::readNewQueue(const std::wstring& path) {
  return tryToLoad([&] { return persistence::readQueueFile(path, QueueFormat::kCurrent); }).items;
}

Items DownloadManagerPersistence::readOldQueue(const std::wstring& path) {
  return tryToLoad([&] { return persistence::readQueueFile(path, QueueFormat::kLegacy); }).items;
}

unsigned char* DownloadManagerPersistence::wstringToUtf8(const std::wstring& text) {
  const std::string utf8 = persistence::utf8Of(text);
  const std::size_t capacity = text.size() * persistence::kBytesPerCharacter;
  auto bytes = std::make_unique_for_overwrite<unsigned char[]>(capacity + 1);
  std::memcpy(bytes.get(), utf8.c_str(), utf8.size() + 1);
  return bytes.release();
}

std::wstring DownloadManagerPersistence::utf8ToWstring(const unsigned char* text) {
  return text != nullptr ? persistence::wideOf(reinterpret_cast<const char*>(text))
                         : std::wstring();
}

std::wstring DownloadManagerPersistence::encodedStringToWstring(const char* text) {
  return text != nullptr ? persistence::decodedText(text) : std::wstring();
}
