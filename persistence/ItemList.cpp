#include "persistence/ItemList.h"

namespace persistence {

std::vector<VeskPlayerX::DownloadItemInterface*> handOver(ItemList items) {
  std::vector<VeskPlayerX::DownloadItemInterface*> handedOver;
  handedOver.reserve(items.size());
  for (auto& item : items) handedOver.push_back(item.release());
  return handedOver;
}

}  // namespace persistence
