#pragma once

#include <netdb.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace kvsc {

/// Frees a list of addresses from `getaddrinfo`.
struct AddressesFree {
  void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};

/// The addresses of a host: a list of stream socket addresses without a port.
using Addresses = std::unique_ptr<addrinfo, AddressesFree>;

/// A host name look-up in progress. Used by one thread.
///
/// Destroying it abandons the look-up without waiting.
class NameLookup {
 public:
  NameLookup() = default;
  NameLookup(const NameLookup&) = delete;
  NameLookup& operator=(const NameLookup&) = delete;
  virtual ~NameLookup() = default;

  /// Waits for the answer, at most for `limit`. Returns whether it is there.
  virtual bool waitFor(std::chrono::milliseconds limit) = 0;

  /// Once the answer is there: the addresses; null with a `getaddrinfo` error number otherwise.
  virtual Addresses take(int* error) = 0;
};

using StartNameLookup = std::function<std::unique_ptr<NameLookup>(const std::string& host)>;

/// Asks the system's resolver. Its threads belong to the C library and run none of our code, so an
/// abandoned look-up leaves behind only the memory of its answer, which a later call frees.
std::unique_ptr<NameLookup> startSystemLookup(const std::string& host);

/// The loopback addresses for "localhost" in any case, with or without a trailing dot, without
/// asking a name server; null for every other name.
Addresses localhostAddresses(const std::string& host);

/// The address that `host` spells in numbers; null when it is a name.
Addresses numericAddress(const std::string& host);

}  // namespace kvsc
