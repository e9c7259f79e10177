#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "persistence/ItemList.h"
#include "persistence/XmlReader.h"

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

/// The text before and after the elements of a queue with items.
inline constexpr std::string_view kQueueBeginning =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>";
inline constexpr std::string_view kQueueEnd = "</DownloadQueue>\n";

inline constexpr std::string_view kItemElement = "DownloadItem";

/// The format of a queue file, as its first bytes show it.
enum class QueueFormat {
  kEmpty,    ///< holds nothing: no bytes, or the document of a queue without items
  kCurrent,  ///< this release's
  kLegacy,   ///< an earlier release's
  kUnknown,
};

/// The number of first bytes that show the format.
inline constexpr std::size_t kQueueHeadSize = kLegacyHeader.size();

/// The format of a file that begins with `head`, which is shorter than `kQueueHeadSize` only when
/// the file is.
QueueFormat formatOf(std::string_view head);

/// How reading ended.
enum class QueueOutcome {
  kRead,         ///< the items are complete
  kRefused,      ///< the content was read and is not a queue
  kUnavailable,  ///< the content cannot be read now, or memory ran out
};

/// Without items unless the outcome is `kRead`.
struct QueueReading {
  QueueOutcome outcome = QueueOutcome::kUnavailable;
  ItemList items;  ///< in the document's order
};

/// Reads a document as one of the format, `kCurrent` or `kLegacy`.
QueueReading readQueueDocument(const XmlSource& source, QueueFormat format);
QueueReading readQueueDocument(std::string_view bytes, QueueFormat format);

}  // namespace persistence
