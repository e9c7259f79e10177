#pragma once

#include <memory>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace persistence {

/// New items on their way to the caller.
using ItemList = std::vector<std::unique_ptr<VeskPlayerX::DownloadItemInterface>>;

/// The same items in the form of the interfaces, which leaves them to the caller.
std::vector<VeskPlayerX::DownloadItemInterface*> handOver(ItemList items);

}  // namespace persistence
