#pragma once

#include <string>

#include "playerx/settings/CurlPerform.h"
#include "playerx/settings/TrustedAuthorities.h"

namespace playerx {

/// What came back of a request.
struct JsonReply {
  bool ok = false;      ///< a complete answer with a status from 200 to 299
  std::string body;     ///< at most `JsonClient::kMaxAnswer` bytes
  std::string problem;  ///< one sentence when not `ok`
};

/// What to tell the user of an answer that makes no sense.
inline constexpr char kNoProperAnswer[] =
    "The online services gave no proper answer; check their address (--services), or try again "
    "later.";

/// Exchanges JSON texts with one HTTP service. Certificates are checked, only http and https are
/// spoken, redirects are not followed. Every exchange is a value of its own: all operations may be
/// called from any thread, and block until the answer, at most `kWholeSeconds`, or until it is
/// given up.
class JsonClient {
 public:
  static constexpr long kConnectSeconds = 5;
  static constexpr long kWholeSeconds = 15;
  static constexpr std::size_t kMaxAnswer = 8 * 1024 * 1024;

  /// `address` is the service's base address; empty when there is no service.
  JsonClient(std::string address, TrustedAuthorities authorities);

  /// Whether there is a service to ask at all.
  bool hasAddress() const { return !address_.empty(); }

  JsonReply get(const std::string& path, const IsGivenUp& isGivenUp = {}) const;
  JsonReply post(const std::string& path, const std::string& json,
                 const IsGivenUp& isGivenUp = {}) const;

 private:
  JsonReply exchange(const std::string& path, const std::string* json,
                     const IsGivenUp& isGivenUp) const;

  const std::string address_;  ///< without "/" at its end
  const TrustedAuthorities authorities_;
};

}  // namespace playerx
