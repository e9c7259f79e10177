#pragma once

#include <string_view>

namespace playerx::transfers {

/// Whether the library sets the header of this name itself, in any case of its letters: another
/// value would break the transfer.
bool isOwnHeader(std::string_view name);

}  // namespace playerx::transfers
