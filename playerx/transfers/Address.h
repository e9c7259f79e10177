#pragma once

#include <optional>
#include <string>

namespace playerx::transfers {

/// The address of a file at a server, in the forms in which it is fetched, remembered and compared.
struct Address {
  std::string fetched;     ///< for the request: may hold a user name and a password
  std::string remembered;  ///< without those and without fragment
  std::string place;       ///< scheme, host, port and path only: without the query too

  bool operator==(const Address&) const = default;
};

/// Reads an http or https address with a host. Blanks and bytes beyond ASCII behind the host are
/// escaped. None for everything else, above all for text with control characters.
std::optional<Address> parseAddress(const std::string& urlUtf8);

}  // namespace playerx::transfers
