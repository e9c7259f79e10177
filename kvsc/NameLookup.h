#pragma once

#include <netdb.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace kvsc {

/// Gives a list of addresses back to the C library, which allocated it.
struct AddressesFree {
  void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};

/// What a host name stands for: a list of stream socket addresses without a port.
using Addresses = std::unique_ptr<addrinfo, AddressesFree>;

/// A host name on its way to its addresses. Used by one thread.
///
/// Destroying it abandons the look-up without waiting for it.
class NameLookup {
 public:
  NameLookup() = default;
  NameLookup(const NameLookup&) = delete;
  NameLookup& operator=(const NameLookup&) = delete;
  virtual ~NameLookup() = default;

  /// Waits until the answer is there, at most for `limit`. Returns whether it is.
  virtual bool waitFor(std::chrono::milliseconds limit) = 0;

  /// Once the answer is there: the addresses; null with a `getaddrinfo` error number otherwise.
  virtual Addresses take(int* error) = 0;
};

using StartNameLookup = std::function<std::unique_ptr<NameLookup>(const std::string& host)>;

/// Asks the system. The threads that do so belong to the C library and run none of our code, so an
/// abandoned look-up leaves nothing of ours behind but the memory of its answer, which a later call
/// frees.
std::unique_ptr<NameLookup> startSystemLookup(const std::string& host);

/// The loopback addresses for "localhost" in any case, with or without its trailing dot, which no
/// name server needs to be asked for; null for every other name.
Addresses localhostAddresses(const std::string& host);

/// The addresses that `host` spells out as numbers; null when it is a name.
Addresses numericAddress(const std::string& host);

}  // namespace kvsc
