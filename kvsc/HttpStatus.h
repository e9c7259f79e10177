#pragma once

#include "kvsc/HttpErrorIds.h"

namespace kvsc {

/// The result of a response with this status code, redirects aside.
constexpr HttpErrorIds outcomeOfStatus(int code) {
  if (code < 300) return HTTP_ERROR_NONE;
  return code == 304 ? HTTP_ERROR_NOT_MODIFIED : HTTP_ERROR_FAILED;
}

/// Whether a request follows this status to another address.
constexpr bool isRedirect(int code) {
  return code == 301 || code == 302 || code == 303 || code == 307;
}

/// Whether this is a redirect whose headers and body the callbacks do not see; the resolution of an
/// address follows only these.
constexpr bool isMoved(int code) { return code == 301 || code == 302; }

}  // namespace kvsc
