#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "persistence/QueueDocument.h"

/// The queue file as bytes on the disk. Nothing here takes a lock: the caller holds
/// `DownloadManagerPersistence::persistenceLock`. All functions may block as long as the disk does.
/// A failure shows in the result alone; nothing but `std::bad_alloc` is thrown.
namespace persistence {

/// Reads a file whose format its first bytes show. A missing or empty file has no items. The
/// outcome is `kUnavailable` for a file that cannot be opened or read now, for lack of a descriptor
/// or a permission for instance.
QueueReading readQueueFile(const std::wstring& path);

/// Reads a file as one of the format, `kCurrent` or `kLegacy`, without looking at its first bytes.
QueueReading readQueueFile(const std::wstring& path, QueueFormat format);

/// Whether a file of that name exists, even if it cannot be opened.
bool isThere(const std::wstring& path);

/// Whether the file can be read and holds these bytes and no others.
bool holdsExactly(const std::wstring& path, std::string_view content);

/// How far a replacement has got when `replaceFile` returns.
enum class Durability {
  kWritten,  ///< the name has the new content; the disk follows within a second
  kOnDisk,   ///< content and name are on the disk
};

/// A part of a text: its bytes [begin, end).
struct ByteRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

/// Replaces a file as a whole. Returns false on a failure, which leaves the file as it was. Where
/// the content is as long as that of the file, `changed` may say which bytes of it differ.
bool replaceFile(const std::wstring& path, std::string_view content, Durability durability,
                 const std::optional<ByteRange>& changed = std::nullopt);

/// Moves a file to an unused name in its folder. Returns success.
bool setAside(const std::wstring& path);

}  // namespace persistence
