#pragma once

#include <cstdint>

namespace kvsc {

/// The protocol family of a connection. With any other value no connection is made.
enum SSLMethodProtocolType : std::int32_t {
  SSLV2 = 0,   ///< no longer supported by any library: the connection fails with a text
  SSLV23 = 1,  ///< TLS 1.2 or newer
  SSLV3 = 2,   ///< TLS 1.2 or newer; what every transfer uses
  TLSV1 = 3,   ///< TLS 1.0 only
};

}  // namespace kvsc
