#pragma once

#include <string>

#include "playerx/app/model/JsonMembers.h"
#include "playerx/app/session/QueueRequest.h"

namespace playerx::door {

/// What is wrong with a request, in one sentence; empty for a right one, and for a line that is no
/// request. `members` are those that `request` was read from. Looks for files on the disk.
std::string faultOf(const session::Request& request, const model::JsonMembers& members);

}  // namespace playerx::door
