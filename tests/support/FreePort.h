#pragma once

#include <cstdint>
#include <functional>

namespace support {

/// Has `start` try free ports until it succeeds on one; false after five. Another process may take
/// a port before the server that is being started. Ports come from below the range that the system
/// gives to outgoing connections; no port is tried twice in one process.
bool startOnFreePort(const std::function<bool(std::uint16_t port)>& start);

}  // namespace support
