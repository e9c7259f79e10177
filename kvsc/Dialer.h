#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "kvsc/NameLookup.h"

namespace kvsc {

class Waiter;

/// The TCP port that `port` means: the number from 1 to 65535 that it begins with, as `scanf` reads
/// it, or else a service name such as "https". Nullopt for anything else. Any thread.
std::optional<std::uint16_t> servicePort(const std::string& port);

/// Opens the byte stream under a connection.
///
/// Used by one thread at a time; must outlive the sessions it was given to.
class Dialer {
 public:
  Dialer() = default;
  Dialer(const Dialer&) = delete;
  Dialer& operator=(const Dialer&) = delete;
  virtual ~Dialer() = default;

  /// Connects to `port` (a number or a service name) of `host` (a name or an address). Returns a
  /// connected, non-blocking stream socket that the caller closes, or -1 with the reason in the
  /// crypto library's error queue. Waits only through `waiter`.
  virtual int dial(const std::string& host, const std::string& port, Waiter& waiter) = 0;
};

/// Dials over TCP: tries every address of the host, one after the other.
class TcpDialer : public Dialer {
 public:
  /// `lookup` starts the look-up of a name; numeric addresses are not looked up.
  explicit TcpDialer(StartNameLookup lookup = startSystemLookup);

  int dial(const std::string& host, const std::string& port, Waiter& waiter) override;

 private:
  Addresses resolve(const std::string& host, Waiter& waiter);

  const StartNameLookup lookup_;
};

}  // namespace kvsc
