#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "persistence/ItemList.h"

namespace persistence {

/// The first characters of every document of this format.
inline constexpr std::string_view kQueueDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"";

/// The document of a queue without items.
inline constexpr std::string_view kEmptyQueueDocument =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue/>\n";

/// The queue as an XML document, one element per item with twelve attributes. Text that XML cannot
/// carry is cleaned first, so that one item never makes the others unreadable. Nothing when the
/// document could not be built whole.
std::optional<std::string> writeQueueDocument(
    const std::vector<VeskPlayerX::DownloadItemInterface*>& items);

/// The items of a document, in its order; nothing when it is malformed or no queue.
std::optional<ItemList> readQueueDocument(std::string bytes);

}  // namespace persistence
