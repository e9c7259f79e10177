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

/// All slots are taken, and the user gave up none of them.
FailureReason slotDeclined();

/// The online services are needed, but none are named.
FailureReason servicesNotNamed();

/// The online services could not be reached.
FailureReason servicesUnavailable();

/// The online services were reached and do not authorise downloads now.
FailureReason servicesNotReady();

/// The server no longer takes the temporary access that the online services gave.
FailureReason accessExpired();

/// No folder can be made at `path`, nor a file written there.
FailureReason folderUnusable(const std::string& path);

/// The reason when nothing more is known: the download failed, yet the server answers now.
FailureReason unexplained();

}  // namespace playerx
