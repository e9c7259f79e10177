#pragma once

#include <optional>
#include <string>

#include "playerx/app/reasons/Reason.h"

namespace playerx::inputs {

/// Whether an argument is the path of a ticket: it ends in .tix, in any case, double quotes around
/// it aside, and is not an address.
bool isTicketPath(const std::string& argument);

/// A path or an address without the double quotes around it, which came along from a shell or a
/// file manager.
std::string unquoted(const std::string& input);

/// An address without the white space around it, which came along when it was copied, and, where it
/// is not UTF-8, with the bytes beyond ASCII escaped. Everything else, such as the path of a
/// ticket, as it is.
std::string cleaned(const std::string& input);

/// Why the player does not take this address; nullopt when it does, whatever the download manager
/// then makes of its file type.
std::optional<reasons::Reason> refusalOfAddress(const std::string& address);

/// What may be shown of a path or another word: an address in its place loses its password.
std::string displayPath(const std::string& path);

}  // namespace playerx::inputs
