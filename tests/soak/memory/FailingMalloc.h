#pragma once

namespace soak {

/// While one exists, an allocation fails, no matter from where: this program, the C++ library, a
/// library of others. One at a time.
class FailingMalloc {
 public:
  enum class Lasting { kOnce, kForEver };

  /// Whose allocations are counted and fail: those of the thread that makes it, or of all others.
  enum class Threads { kThisOne, kOthers };

  /// Fails the allocation after `passed` more, and those behind it too if it is to last.
  FailingMalloc(long passed, Lasting lasting, Threads threads = Threads::kThisOne);
  FailingMalloc(const FailingMalloc&) = delete;
  FailingMalloc& operator=(const FailingMalloc&) = delete;
  ~FailingMalloc();

  /// Whether it has come to that.
  bool hasFailed() const;
};

}  // namespace soak
