#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "playerx/app/reasons/Reason.h"

namespace VeskPlayerX {
class DownloadManagerInterface;
}

namespace playerx::inputs {

/// Takes what the plug-ins have told the user.
using TakeMessages = std::function<std::vector<std::string>()>;

/// Hands an address or a ticket file to the download manager; returns why not, nullopt when that
/// was done. What the online services said of a ticket that they could not read becomes the
/// refusal. Waits for them; on the host's thread.
std::optional<reasons::Explanation> addInput(const std::string& input,
                                             VeskPlayerX::DownloadManagerInterface& manager,
                                             const TakeMessages& takeMessages);

}  // namespace playerx::inputs
