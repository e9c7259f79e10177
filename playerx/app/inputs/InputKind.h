#pragma once

#include <optional>
#include <string>

#include "playerx/app/reasons/FailureReason.h"

namespace playerx {

/// What an argument of `get` is.
enum class InputKind { kAddress, kTicket, kUnusable };

/// Sorts an argument: a ticket is a path that ends in .tix, in any case, double quotes around it
/// aside; an address begins with http:// or https:// and names a host. When it is unusable,
/// `*reason` says why.
InputKind sortInput(const std::string& argument, FailureReason* reason);

/// The reason for an address whose file type the module does not take.
FailureReason unsupportedType();

}  // namespace playerx
