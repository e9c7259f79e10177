#pragma once

#include <optional>
#include <string>

namespace playerx {

/// Largest ticket file that is offered to the online services, in bytes.
constexpr std::size_t kMaxSealedTicket = 1024 * 1024;

/// The content of a rights-protected ticket file: a text that begins with the line
/// "VeskSealedTicket 1". Nullopt for any other file, one that cannot be read, or one that is too
/// large.
std::optional<std::string> readSealedTicket(const std::wstring& path);

}  // namespace playerx
