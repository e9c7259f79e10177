#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace soak {

/// Knows how long each of some threads has been inside its present operation. Any thread may use
/// its own place; any may ask.
class Watchdog {
 public:
  static constexpr std::size_t kPlaces = 8;

  template <class Operation>
  void watch(std::size_t place, Operation operation) {
    since_[place] = now();
    operation();
    since_[place] = 0;
  }

  /// The longest time that any thread has been in its present operation.
  std::chrono::milliseconds longest() const {
    std::int64_t longest = 0;
    const std::int64_t time = now();
    for (const std::atomic<std::int64_t>& since : since_) {
      const std::int64_t start = since;
      if (start != 0) longest = std::max(longest, time - start);
    }
    return std::chrono::milliseconds(longest);
  }

 private:
  static std::int64_t now() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
  }

  std::array<std::atomic<std::int64_t>, kPlaces> since_{};
};

}  // namespace soak
