#pragma once

#include <optional>
#include <string>

namespace playerx::transfers {

/// A SHA-256 sum in the form in which sums are compared; nullopt for a text that is no such sum.
std::optional<std::string> normalSum(const std::string& text);

/// Where the checksum file of a film is: at the film's address with ".sha256" behind its path.
std::string checksumAddress(const std::string& film);

/// The sum that a checksum file gives for a film of this file name, or the only sum in it: lines as
/// sha256sum writes them, plain or tagged ("SHA256 (name) = sum"), or the bare sum. Nullopt when
/// it gives no such sum.
std::optional<std::string> sumIn(const std::string& content, const std::string& name);

}  // namespace playerx::transfers
