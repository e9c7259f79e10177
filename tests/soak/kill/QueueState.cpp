#include "tests/soak/kill/QueueState.h"

#include <functional>
#include <sstream>

#include "kvpm/StringTools.h"

namespace soak {

std::string stateOf(const std::vector<VeskPlayerX::DownloadItemInterface*>& items) {
  using kvpm::StringTools;
  std::ostringstream text;
  for (const auto* const item : items) {
    text << StringTools::wStringToString(item->getTitle()) << '\n'
         << StringTools::wStringToString(item->getUrl()) << '\n'
         << StringTools::wStringToString(item->getPath()) << '\n'
         << item->getSize() << ' ' << item->getStatus() << ' ' << item->getPercentDownloaded()
         << '\n';
  }
  return std::to_string(items.size()) + ":" + std::to_string(std::hash<std::string>()(text.str()));
}

}  // namespace soak
