#pragma once

#include <cstdint>

namespace kvsc {

/// The result of one exchange with a server.
enum HttpErrorIds : std::int32_t {
  HTTP_ERROR_NONE = 0,          ///< success, a status below 300
  HTTP_ERROR_FAILED = 1,        ///< any other failure
  HTTP_ERROR_CANCELLED = 2,     ///< the caller cancelled the transfer
  HTTP_ERROR_NOT_MODIFIED = 3,  ///< status 304
  HTTP_ERROR_CERTIFICATE = 4,   ///< the server's certificate did not verify
};

}  // namespace kvsc
