#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace persistence {

/// Appends an item's element with its twelve attributes, as it stands in a document whose
/// attributes hold at most `limit` bytes of text. Text that XML cannot carry is replaced first, so
/// that no item makes the others unreadable.
void appendElement(std::string& document, const VeskPlayerX::DownloadItemInterface& item,
                   std::size_t limit);

/// The sum of the lengths of the item's texts, each counted up to `limit`: characters of wide or
/// bytes of narrow text.
std::uint64_t charactersOf(const VeskPlayerX::DownloadItemInterface& item, std::size_t limit);

}  // namespace persistence
