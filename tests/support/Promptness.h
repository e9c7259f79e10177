#pragma once

#include <chrono>
#include <functional>

namespace support {

/// The promise: within this time a transfer ends that was cancelled or stopped.
inline constexpr std::chrono::milliseconds kPromptly{250};

/// How long the action takes.
std::chrono::milliseconds timeOf(const std::function<void()>& action);

/// The shortest time of up to five attempts, each of which says how long it took; one below `limit`
/// is the last. A machine that is busy with other things may need another try to keep a promise.
std::chrono::milliseconds bestTime(const std::function<std::chrono::milliseconds()>& attempt,
                                   std::chrono::milliseconds limit = kPromptly);

}  // namespace support
