#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace persistence {

/// Appends an item's element with its twelve attributes, as it stands in a document whose
/// attributes hold at most `limit` bytes of text. Text that XML cannot carry is replaced first, so
/// that no item makes the others unreadable.
void appendElement(std::string& document, const VeskPlayerX::DownloadItemInterface& item,
                   std::size_t limit);

/// Appends the lengths of the item's texts: characters of wide or bytes of narrow text.
void appendTextLengths(std::vector<std::size_t>& lengths,
                       const VeskPlayerX::DownloadItemInterface& item);

}  // namespace persistence
