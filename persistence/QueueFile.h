#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "persistence/ItemList.h"

/// The queue file as bytes on the disk. Nothing here takes a lock: whoever reads, replaces or sets
/// aside one path holds `DownloadManagerPersistence::persistenceLock`. All operations touch the
/// disk but `formatOf`, and may block as long as it does. A failure shows in the result alone;
/// thrown is nothing but `std::bad_alloc`.
namespace persistence {

/// What a queue file is, as far as its beginning tells.
enum class QueueFormat {
  kEmpty,    ///< holds nothing: no bytes, or the document of a queue without items
  kCurrent,  ///< this release's
  kLegacy,   ///< an earlier release's
  kUnknown,
};

/// Bytes at the beginning of a file by which its format is known.
inline constexpr std::size_t kQueueHeadSize = 86;

/// The format of a file that begins with `head`, which is shorter than `kQueueHeadSize` only when
/// the file is.
QueueFormat formatOf(std::string_view head);

/// The format of a file; empty for one that is not there, unknown for one that cannot be read.
QueueFormat formatOfFile(const std::wstring& path);

/// The items of a file of this release's format; nothing when it cannot be read or understood.
std::optional<ItemList> readCurrentQueue(const std::wstring& path);

/// The items of a file of the earlier release's format; nothing when it cannot be read or
/// understood.
std::optional<ItemList> readLegacyQueue(const std::wstring& path);

/// Whether the file can be read and holds these bytes and no others.
bool holdsExactly(const std::wstring& path, std::string_view content);

/// Replaces a file whole, or leaves it as it is: after a failure, and when it holds the content
/// already.
void replaceFile(const std::wstring& path, std::string_view content);

/// Moves a file to a name beside it that no other file has. Returns success.
bool setAside(const std::wstring& path);

}  // namespace persistence
