#pragma once

#include <chrono>

#include "tests/support/UniqueFd.h"
#include "tests/support/WaitFor.h"

namespace support {

/// A gate that is opened once and stays open: how a test and a scripted server keep step.
/// Owner: the test; it must outlive the server that uses it. Threads: any.
class Gate {
 public:
  Gate();

  void open();

  /// True once the gate is open; false when the deadline passes first.
  bool wait(std::chrono::milliseconds deadline = kGenerousDeadline) const;

  /// Readable exactly when the gate is open, for poll.
  int fd() const { return event_.get(); }

 private:
  UniqueFd event_;
};

}  // namespace support
