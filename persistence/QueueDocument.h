#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "persistence/ItemList.h"

/// The text of a queue file. All functions are pure and may be called from any thread.
namespace persistence {

/// The first characters of every document of this release.
inline constexpr std::string_view kQueueDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"";

/// The first characters of every document of an earlier release.
inline constexpr std::string_view kLegacyHeader =
    "<drmAuth:DownloadManagerDataContainer xmlns:drmAuth=\"com.vesk.container\" version=\"1\" >";

/// The document of a queue without items.
inline constexpr std::string_view kEmptyQueueDocument =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue/>\n";

/// What stands before and behind the elements of a queue with items.
inline constexpr std::string_view kQueueBeginning =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>";
inline constexpr std::string_view kQueueEnd = "</DownloadQueue>\n";

inline constexpr std::string_view kItemElement = "DownloadItem";

/// What a queue file is, as far as its beginning tells.
enum class QueueFormat {
  kEmpty,    ///< holds nothing: no bytes, or the document of a queue without items
  kCurrent,  ///< this release's
  kLegacy,   ///< an earlier release's
  kUnknown,
};

/// Bytes at the beginning of a file by which its format is known.
inline constexpr std::size_t kQueueHeadSize = kLegacyHeader.size();

/// The format of a file that begins with `head`, which is shorter than `kQueueHeadSize` only when
/// the file is.
QueueFormat formatOf(std::string_view head);

/// How a reading ended.
enum class QueueOutcome {
  kRead,         ///< the items are all that there was
  kRefused,      ///< the content was read and is no queue
  kUnavailable,  ///< the content could not be read now, or not be kept for lack of memory
};

/// Without items unless the outcome is `kRead`.
struct QueueReading {
  QueueOutcome outcome = QueueOutcome::kUnavailable;
  ItemList items;  ///< in the document's order
};

/// Reads a document as one of the format, `kCurrent` or `kLegacy`.
QueueReading readQueueDocument(std::string bytes, QueueFormat format);

}  // namespace persistence
