#pragma once

#include <memory>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace persistence {

/// New items on their way to the caller.
using ItemList = std::vector<std::unique_ptr<VeskPlayerX::DownloadItemInterface>>;

/// The same items as interfaces, now owned by the caller.
inline std::vector<VeskPlayerX::DownloadItemInterface*> release(ItemList items) {
  std::vector<VeskPlayerX::DownloadItemInterface*> released;
  released.reserve(items.size());
  for (auto& item : items) released.push_back(item.release());
  return released;
}

}  // namespace persistence
