#include "playerx/app/reasons/FailureReason.h"

namespace playerx {

FailureReason badAnswer(const std::string& host) {
  return {"bad_answer", host + " gave no proper answer; try again later."};
}

FailureReason badRedirect(const std::string& host) {
  return {"bad_redirect", host + " sends the player on to where no film is; ask the provider."};
}

FailureReason reasonFromStatus(long status, const std::string& host) {
  const std::string number = std::to_string(status);
  switch (status) {
    case 401:
    case 407:
      return {"http_" + number, host + " wants a user name and password (" + number +
                                    "), which this address does not carry."};
    case 403:
      return {"http_403",
              host + " does not allow this film to be fetched (403); ask the provider."};
    case 404:
      return {"http_404", host + " has no film at this address (404); check the address."};
    case 410:
      return {"http_410",
              host + " no longer has this film (410); ask the provider for a new address."};
    case 429:
      return {"http_429", host + " is asked too often (429); try again later."};
    default:
      break;
  }
  if (status >= 500) {
    return {"http_" + number, host + " has trouble of its own (" + number + "); try again later."};
  }
  return {"http_" + number, host + " refused the film (" + number + ")."};
}

FailureReason noSpaceAt(const std::string& path) {
  return {"no_space", "There is too little free space at " + path +
                          "; free some there, or choose other folders with --media (films) and "
                          "--data (unfinished ones), then retry."};
}

FailureReason notAuthorized(int errorCode, const std::string& details) {
  // Errors below 0 are the player's own: nothing was refused.
  if (errorCode < 0 && !details.empty()) {
    return {"not_authorized", details +
                                  " This protected film cannot be downloaded without them; "
                                  "retry it later."};
  }
  return {"not_authorized", "The online services do not allow this download (error " +
                                std::to_string(errorCode) +
                                (details.empty() ? "" : ": " + details) + ")."};
}

FailureReason slotDeclined() {
  return {"slots_taken",
          "All slots are taken and none was given up; run `get` in a terminal and choose one."};
}

FailureReason servicesNotNamed() {
  return {"services_unavailable",
          "This is a protected film; name the online services with --services, then retry."};
}

FailureReason servicesNotReady() {
  return {"services_unavailable", "The online services are not ready; try again later."};
}

FailureReason accessExpired() {
  return {"http_401",
          "The access to this protected film has expired (401); `playerx-cli retry` with its "
          "position asks for it anew."};
}

FailureReason folderUnusable(const std::string& path) {
  return {"media_folder", "The folder " + path +
                              " cannot be made or written; choose another with --media, then "
                              "retry."};
}

FailureReason servicesUnavailable() {
  return {"services_unavailable",
          "The online services, which this protected film needs, cannot be reached; check their "
          "address (--services) and retry."};
}

FailureReason unexplained() {
  return {"unknown", "The download failed although the server answers now; retry it."};
}

}  // namespace playerx
