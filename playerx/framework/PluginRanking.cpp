#include "playerx/framework/PluginRanking.h"

#include <algorithm>

namespace playerx {

std::vector<std::size_t> bestFirst(const std::vector<const KPIM::PluginInfo*>& infos,
                                   const KPIM::Context::PluginFilter& filter,
                                   const KPIM::Context::PluginInfoSelector& selector) {
  std::vector<std::size_t> rest;
  for (std::size_t at = 0; at < infos.size(); ++at) {
    if (filter.accepts(*infos[at])) rest.push_back(at);
  }
  // Picked one by one: sorting by a selector that contradicts itself would be undefined.
  std::vector<std::size_t> ranked;
  while (!rest.empty()) {
    const auto best =
        std::max_element(rest.begin(), rest.end(), [&](std::size_t left, std::size_t right) {
          return selector.less(*infos[left], *infos[right]);
        });
    ranked.push_back(*best);
    rest.erase(best);
  }
  return ranked;
}

}  // namespace playerx
