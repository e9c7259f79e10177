#pragma once

#include "kvsc/HttpErrorIds.h"

namespace kvsc {

/// What a response with this status code comes to, redirects aside.
constexpr HttpErrorIds outcomeOfStatus(int code) {
  if (code < 300) return HTTP_ERROR_NONE;
  return code == 304 ? HTTP_ERROR_NOT_MODIFIED : HTTP_ERROR_FAILED;
}

/// A redirect that a request follows.
constexpr bool isRedirect(int code) {
  return code == 301 || code == 302 || code == 303 || code == 307;
}

/// A redirect that callers see nothing of, and the only kind that an address is resolved through.
constexpr bool isMoved(int code) { return code == 301 || code == 302; }

}  // namespace kvsc
