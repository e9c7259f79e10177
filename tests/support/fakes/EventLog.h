#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "kvpm/StringTools.h"
#include "tests/support/WaitFor.h"

namespace support {

/// UTF-8 of wide text, for the lines of a log.
inline std::string narrow(const std::wstring& text) {
  return kvpm::StringTools::wStringToString(text);
}

/// What happened, in order, one line an event: "manager.updateStatus 7 3". Several fakes may write
/// to one log, so that a test sees the order across them. Owner: the test; outlives the fakes.
/// Threads: any.
class EventLog {
 public:
  void add(const std::string& line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(line);
    changed_.notify_all();
  }

  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

  /// The lines that begin with `prefix`.
  std::vector<std::string> lines(const std::string& prefix) const {
    std::vector<std::string> found;
    for (const std::string& line : lines()) {
      if (line.starts_with(prefix)) found.push_back(line);
    }
    return found;
  }

  std::size_t count(const std::string& line) const {
    const std::lock_guard lock(mutex_);
    return countLocked(line);
  }

  bool has(const std::string& line) const { return count(line) > 0; }

  /// Waits until the line is there `times` times; false when the deadline passes first.
  bool waitFor(const std::string& line, std::size_t times = 1,
               std::chrono::milliseconds deadline = kGenerousDeadline) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, deadline, [&] { return countLocked(line) >= times; });
  }

  /// Waits until `holds` is true of the lines; false when the deadline passes first.
  bool waitUntil(const std::function<bool(const std::vector<std::string>&)>& holds,
                 std::chrono::milliseconds deadline = kGenerousDeadline) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, deadline, [&] { return holds(lines_); });
  }

  void clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
  }

 private:
  std::size_t countLocked(const std::string& line) const {
    return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
  }

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<std::string> lines_;
};

}  // namespace support
