#pragma once

#include <cstdint>
#include <functional>

namespace support {

/// A loopback port that is not in use, for a program that wants to bind it itself. It comes from
/// below the range that the system gives to outgoing connections, so that none of those takes it
/// in the meantime. Two calls in one process never give the same port.
std::uint16_t freePort();

/// Has `start` try free ports until it succeeds on one; false after five. Another process may take
/// a port before the server that is being started.
bool startOnFreePort(const std::function<bool(std::uint16_t port)>& start);

}  // namespace support
