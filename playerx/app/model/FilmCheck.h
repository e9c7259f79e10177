#pragma once

#include <filesystem>
#include <string>

#include "playerx/app/model/ItemState.h"

namespace playerx {

/// What the user should know of a film that the queue calls complete: that it is shorter than its
/// server had announced, or lies in `mediaFolder` and not where the queue has it. Empty when there
/// is nothing to say. Looks at the disk. Any thread.
std::string oddityOf(const ItemState& film, const std::filesystem::path& mediaFolder);

}  // namespace playerx
