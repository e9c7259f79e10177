#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "persistence/ItemList.h"

namespace persistence {

/// The text of a queue file of this release.
///
/// Pure functions of their arguments: no file, no state, no lock, callable on all threads. Whoever
/// shares the items keeps them still meanwhile. A missing result is the one failure.

/// The first characters of every document of this format.
inline constexpr std::string_view kQueueDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"";

/// The document of a queue without items.
inline constexpr std::string_view kEmptyQueueDocument =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue/>\n";

/// What stands before and behind the elements of a queue with items.
inline constexpr std::string_view kQueueBeginning =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>";
inline constexpr std::string_view kQueueEnd = "</DownloadQueue>\n";

/// Bytes of text that one attribute may hold in the document of these items.
std::size_t longestValueIn(const std::vector<VeskPlayerX::DownloadItemInterface*>& items);

/// One item's element with its twelve attributes, as it stands in a document whose attributes hold
/// at most `limit` bytes. Text that XML cannot carry is cleaned first, so that one item never makes
/// the others unreadable. Nothing when it could not be built whole.
std::optional<std::string> writeQueueElement(const VeskPlayerX::DownloadItemInterface& item,
                                             std::size_t limit);

/// The items of a document, in its order; nothing when it is malformed or no queue.
std::optional<ItemList> readQueueDocument(std::string bytes);

}  // namespace persistence
