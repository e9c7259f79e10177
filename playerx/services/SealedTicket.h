#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace playerx {

/// First line of a ticket that only the online services can read.
constexpr std::string_view kSealedTicketLine = "VeskSealedTicket 1";

/// Largest ticket file that is offered to the online services, in bytes.
constexpr std::size_t kMaxSealedTicket = 1024 * 1024;

/// The content of a rights-protected ticket file: a text whose first line is
/// `kSealedTicketLine`. Nullopt for any other file, one that cannot be read, or one that is too
/// large.
std::optional<std::string> readSealedTicket(const std::wstring& path);

}  // namespace playerx
