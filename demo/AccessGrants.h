#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>

namespace demo {

/// Temporary credentials for protected films. May be used by many threads at once.
class AccessGrants {
 public:
  using Clock = std::chrono::steady_clock;

  struct Grant {
    std::string username;
    std::string password;
  };

  /// New credentials for `film`, good until `lifetime` is over.
  Grant issue(const std::string& film, Clock::duration lifetime);

  /// Whether an `Authorization` header ("Basic ...") opens `film` now.
  bool opens(const std::string& authorization, const std::string& film) const;

  /// Makes all credentials void.
  void revokeAll();

 private:
  struct Entry {
    std::string film;
    Clock::time_point until;
  };
  mutable std::mutex mutex_;
  std::map<std::string, Entry> entries_;  // by header value; guarded by mutex_
};

}  // namespace demo
