#include "playerx/framework/PluginRanking.h"

#include <algorithm>

namespace playerx {

std::vector<std::size_t> bestFirst(const std::vector<const KPIM::PluginInfo*>& infos,
                                   const KPIM::Context::PluginFilter& filter,
                                   const KPIM::Context::PluginInfoSelector& selector) {
  std::vector<std::size_t> positions;
  for (std::size_t at = 0; at < infos.size(); ++at) {
    if (filter.accepts(*infos[at])) positions.push_back(at);
  }
  std::stable_sort(positions.begin(), positions.end(), [&](std::size_t left, std::size_t right) {
    return selector.less(*infos[right], *infos[left]);
  });
  return positions;
}

}  // namespace playerx
