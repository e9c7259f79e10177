#pragma once

#include <optional>
#include <string>

namespace playerx {

/// The address of a file at a server, in the forms in which it is fetched, remembered and compared.
struct Address {
  std::string fetched{};        ///< for the request: may hold a user name and a password
  std::string remembered{};     ///< without those and without fragment
  std::string place{};          ///< scheme, host, port and path only: without the query too
  std::string host{};           ///< without the port; a numeric one of version 6 in its brackets
  bool hasCredentials = false;  ///< names a user or a password

  bool operator==(const Address&) const = default;
};

/// Reads an http or https address with a host. Blanks and bytes beyond ASCII behind the host are
/// escaped. Returns nullopt for everything else, above all for text with control characters.
std::optional<Address> parseAddress(const std::string& urlUtf8);

/// A text with every byte beyond ASCII escaped, as "%FF".
std::string escapedBeyondAscii(const std::string& text);

/// The last name of the address's path, without escapes; may be empty.
std::string fileNameOf(const Address& address);

/// An address without the user name and the password that it named, both without escapes.
struct SplitAddress {
  std::string address{};
  std::string username{}, password{};
};

/// Takes user name and password out of an address, whatever else may be wrong with it.
SplitAddress splitCredentials(const std::string& url);

/// What may be shown of a text that was meant as an address: no user name and no password. Of one
/// that cannot be read, nothing before its last "@", because a password may be anywhere there.
std::string withoutCredentials(const std::string& text);

/// What is wrong with a text that was meant as an address.
enum class AddressFault {
  kNone,
  kNotWeb,     ///< neither http nor https, without a host, or not an address at all
  kBadPort,    ///< a web address whose port is not 1..65535
  kUnescaped,  ///< a web address with a blank or a control character in it
};

/// The first fault of `urlUtf8`; stricter than `parseAddress`, which escapes blanks.
AddressFault faultOf(const std::string& urlUtf8);

/// The host of an address; the whole text when it cannot be parsed.
std::string hostOf(const std::string& urlUtf8);

}  // namespace playerx
