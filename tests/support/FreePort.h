#pragma once

#include <cstdint>

namespace support {

/// A loopback port that is not in use, for a program that wants to bind it itself. It comes from
/// below the range that the system gives to outgoing connections, so that none of those takes it
/// in the meantime. Two calls in one process never give the same port.
std::uint16_t freePort();

}  // namespace support
