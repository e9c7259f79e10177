#pragma once

#include <cstddef>
#include <vector>

#include "KPIM/Context.h"
#include "KPIM/PluginInfo.h"

namespace playerx {

/// Positions in `infos` of those that `filter` accepts, the best choice of `selector` first; among
/// equals the earlier one comes first.
std::vector<std::size_t> bestFirst(const std::vector<const KPIM::PluginInfo*>& infos,
                                   const KPIM::Context::PluginFilter& filter,
                                   const KPIM::Context::PluginInfoSelector& selector);

}  // namespace playerx
