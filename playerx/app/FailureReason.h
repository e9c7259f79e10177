#pragma once

#include <string>

namespace playerx {

/// Why a download failed, for people and for programs.
struct FailureReason {
  std::string code;      ///< stable word, listed in docs/json-output.md
  std::string sentence;  ///< one plain English sentence: what happened, what can be done

  bool operator==(const FailureReason&) const = default;
};

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
