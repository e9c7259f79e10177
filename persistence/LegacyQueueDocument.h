#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "persistence/ItemList.h"

namespace persistence {

/// The first characters of every document of an earlier release.
inline constexpr std::string_view kLegacyHeader =
    "<drmAuth:DownloadManagerDataContainer xmlns:drmAuth=\"com.vesk.container\" version=\"1\" >";

/// The items of an earlier release's document, in its order; nothing when it is malformed, no
/// queue, or of another version.
std::optional<ItemList> readLegacyQueueDocument(std::string bytes);

}  // namespace persistence
