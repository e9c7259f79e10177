#include "playerx/settings/CurlTrust.h"

namespace playerx {

namespace {

const char* textOrNone(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

}  // namespace

// A handle begins with the system's file and folder; the one that is not named is taken away, for
// it would add to what was chosen.
void applyTrust(CURL* curl, const TrustedAuthorities& authorities) {
  if (authorities == TrustedAuthorities{}) return;
  const char* const file = textOrNone(authorities.file);
  const char* const folder = textOrNone(authorities.folder);
  curl_easy_setopt(curl, CURLOPT_CAINFO, file);
  curl_easy_setopt(curl, CURLOPT_CAPATH, folder);
  curl_easy_setopt(curl, CURLOPT_PROXY_CAINFO, file);
  curl_easy_setopt(curl, CURLOPT_PROXY_CAPATH, folder);
}

}  // namespace playerx
