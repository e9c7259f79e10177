#pragma once

#include <chrono>
#include <mutex>

#include "tests/support/UniqueFd.h"
#include "tests/support/WaitFor.h"

namespace support {

/// A gate that is opened once and stays open: how a test and a scripted server keep step.
/// Owner: the test, which may destroy it once a `wait` has seen it open; it must outlive a server
/// that polls it. Threads: any.
class Gate {
 public:
  Gate();

  void open();

  /// True once the gate is open; false when the deadline passes first.
  bool wait(std::chrono::milliseconds deadline = kGenerousDeadline) const;

  /// Readable exactly when the gate is open, for poll.
  int fd() const { return event_.get(); }

 private:
  bool poll(std::chrono::milliseconds deadline) const;

  mutable std::mutex opening_;
  UniqueFd event_;
};

}  // namespace support
