#pragma once

#include <string>
#include <string_view>

#include "persistence/QueueDocument.h"

/// The queue file as bytes on the disk. Nothing here takes a lock: the caller holds
/// `DownloadManagerPersistence::persistenceLock`. All functions may block as long as the disk does.
/// A failure shows in the result alone; nothing but `std::bad_alloc` is thrown.
namespace persistence {

/// The items of a file whose format its beginning tells; no items for one that is missing or empty.
/// The outcome is `kUnavailable` for a file that cannot be opened or read now, as for lack of
/// descriptors or of a right.
QueueReading readQueueFile(const std::wstring& path);

/// The items of a file of the format, `kCurrent` or `kLegacy`, whatever its beginning looks like.
QueueReading readQueueFile(const std::wstring& path, QueueFormat format);

/// Whether there is a file of that name, also one that cannot be opened.
bool isThere(const std::wstring& path);

/// Whether the file can be read and holds these bytes and no others.
bool holdsExactly(const std::wstring& path, std::string_view content);

/// How far a replacement has got when it is reported.
enum class Durability {
  kWritten,  ///< the name has the new content; the disk follows within a second
  kOnDisk,   ///< content and name are on the disk
};

/// Replaces a file whole. Returns false after a failure, which leaves it as it is.
bool replaceFile(const std::wstring& path, std::string_view content, Durability durability);

/// Moves a file to a name beside it that no other file has. Returns success.
bool setAside(const std::wstring& path);

}  // namespace persistence
