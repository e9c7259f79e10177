#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace support {

/// How long a test is willing to wait for something that is going to happen: never the usual time,
/// only the bound after which a hanging test is called a failure.
inline constexpr std::chrono::seconds kGenerousDeadline{30};

/// Waits until the condition holds; false when the deadline passes first. The condition is asked
/// every few milliseconds on the calling thread.
bool waitFor(const std::function<bool()>& condition,
             std::chrono::milliseconds deadline = kGenerousDeadline);

/// Waits until connections to the loopback port are accepted, or `hopeless` says that they never
/// will be.
bool waitForPort(std::uint16_t port, const std::function<bool()>& hopeless = {});

}  // namespace support
