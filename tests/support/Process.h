#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/UniqueFd.h"
#include "tests/support/WaitFor.h"

namespace support {

/// What to start and in which surroundings.
struct ProcessOptions {
  std::vector<std::string> arguments = {};              ///< program first; looked up in PATH
  std::map<std::string, std::string> environment = {};  ///< set on top of the inherited one
  std::vector<std::string> removed = {};                ///< variables that the child must not have
  std::filesystem::path workingFolder = {};             ///< empty: the test's own
  std::string input = {};                               ///< all that standard input holds
};

/// A child process with captured output, killed with its owner or with the thread that made it.
/// The child never sees variables that change trust, OpenSSL's configuration or the proxy.
/// Owner: the test, on the thread that made it. Failure: std::runtime_error when the program cannot
/// be started; an exit status of 127 when it does not exist.
class Process {
 public:
  explicit Process(const ProcessOptions& options);
  explicit Process(std::vector<std::string> arguments)
      : Process(ProcessOptions{std::move(arguments), {}, {}, {}, {}}) {}
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }
  void send(int signal);

  /// The exit status once the process has ended (128 + signal when a signal ended it); nothing
  /// while it still runs after the deadline.
  std::optional<int> wait(std::chrono::milliseconds deadline = kGenerousDeadline);
  bool running() { return !poll(); }

  /// Everything written so far.
  std::string output() const;
  std::string errors() const;

  /// Waits until standard output (or standard error) holds the text.
  bool waitForOutput(const std::string& text) const;
  bool waitForErrors(const std::string& text) const;

 private:
  bool poll();

  UniqueFd input_, output_, errors_;
  pid_t pid_ = -1;
  std::optional<int> status_;
};

}  // namespace support
