#include "tests/support/WaitFor.h"

#include <thread>

#include "tests/support/Loopback.h"

namespace support {

bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

bool waitForPort(std::uint16_t port, const std::function<bool()>& hopeless) {
  bool reached = false;
  const auto decided = [&] {
    reached = static_cast<bool>(connectToLoopback(port));
    return reached || (hopeless && hopeless());
  };
  return waitFor(decided) && reached;
}

}  // namespace support
