#pragma once

#include <functional>
#include <string>

namespace playerx::transfers {

/// Where the certificates come from that a server's is checked against. Empty: the system's own.
struct Trust {
  std::string file;    ///< PEM file
  std::string folder;  ///< folder of PEM files under hashed names

  bool operator==(const Trust&) const = default;
};

/// The trust that a process's environment asks for, by the names that `curl` knows. `valueOf`
/// returns the value of a variable, null for none.
Trust trustOfEnvironment(const std::function<const char*(const char* name)>& valueOf);

}  // namespace playerx::transfers
