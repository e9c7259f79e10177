#pragma once

namespace soak {

/// While one exists, an allocation of its thread fails, no matter from where: this program, the C++
/// library, a library of others.
class FailingMalloc {
 public:
  enum class Lasting { kOnce, kForEver };

  /// Fails the allocation after `passed` more, and those behind it too if it is to last.
  FailingMalloc(long passed, Lasting lasting);
  FailingMalloc(const FailingMalloc&) = delete;
  FailingMalloc& operator=(const FailingMalloc&) = delete;
  ~FailingMalloc();

  /// Whether it has come to that.
  bool hasFailed() const;
};

}  // namespace soak
