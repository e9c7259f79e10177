#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace playerx {

/// Why a download failed, for people and for programs.
struct FailureReason {
  std::string code;      ///< stable word, listed in docs/json-output.md
  std::string sentence;  ///< one plain English sentence: what happened, what can be done

  bool operator==(const FailureReason&) const = default;
};

/// What a second look at the server found.
struct ProbeResult {
  int curlCode = 0;          ///< libcurl's result
  long status = 0;           ///< HTTP status of the last answer; 0 when there was none
  long redirects = 0;        ///< followed
  std::int64_t length = -1;  ///< announced bytes; -1 when none were announced
  std::string host;          ///< of the address asked
  std::string detail;        ///< libcurl's own words; may be empty
};

/// The reason that a second look at the server shows; none when the server answered as it should.
std::optional<FailureReason> reasonFromProbe(const ProbeResult& probe);

/// What the server of `host` says cannot be understood.
FailureReason badAnswer(const std::string& host);

/// The server of `host` redirected to something that is no address of a film.
FailureReason badRedirect(const std::string& host);

/// The reason for an HTTP status of 400 and above.
FailureReason reasonFromStatus(long status, const std::string& host);

/// Too little space at `path`.
FailureReason noSpaceAt(const std::string& path);

/// The online services refused the download with `errorCode` and words of their own.
FailureReason notAuthorized(int errorCode, const std::string& details);

/// The online services could not be reached, or are not ready.
FailureReason servicesUnavailable();

/// The reason when nothing more is known: the download failed, yet the server answers now.
FailureReason unexplained();

}  // namespace playerx
