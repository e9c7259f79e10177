#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include "tests/support/UniqueFd.h"

namespace system_test {

/// A real terminal with a program in its foreground.
/// Owner: the test, on the thread that made it. Failure: std::runtime_error when the machine has
/// none to give.
class Terminal {
 public:
  Terminal(const std::vector<std::string>& arguments,
           const std::map<std::string, std::string>& environment, int columns);
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// Hangs up and waits for the end of the program.
  ~Terminal();

  void type(const std::string& keys);
  void resize(int columns);

  /// Waits until the terminal has shown the text after what `take` has taken; false when it never
  /// does.
  bool waitFor(const std::string& text);

  /// What was shown since the last call.
  std::string take();

 private:
  bool read(int milliseconds);

  support::UniqueFd master_;
  pid_t program_ = -1;
  std::string shown_;
};

}  // namespace system_test
