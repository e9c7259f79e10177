#pragma once

#include <string>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace soak {

/// A number for what a queue file keeps of these items, in their order: the same for the same
/// queue, in every process.
std::string stateOf(const std::vector<VeskPlayerX::DownloadItemInterface*>& items);

}  // namespace soak
