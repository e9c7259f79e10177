#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/WaitFor.h"

namespace soak {

/// What a process holds.
struct Holdings {
  long descriptors = 0;
  long threads = 0;
  long kilobytes = 0;  ///< of memory
};

/// What a process holds now: "self" or the number of one that is running.
inline Holdings holdingsOf(const std::string& process = "self") {
  const std::filesystem::path folder = "/proc/" + process;
  const auto countOf = [&folder](const char* name) {
    const std::filesystem::directory_iterator entries(folder / name);
    return std::distance(begin(entries), end(entries));
  };
  std::ifstream status(folder / "status");
  std::string line;
  while (std::getline(status, line) && !line.starts_with("VmRSS:")) {
  }
  return {countOf("fd"), countOf("task"), std::stol(line.substr(6))};
}

/// Expects a process to hold no more files and threads than before, but for its last save, which is
/// synced in the background with a thread and three files, and at most a twentieth more memory.
/// Returns what it holds.
inline Holdings expectFlat(const Holdings& before, const std::string& process = "self") {
  Holdings after;
  EXPECT_TRUE(support::waitFor([&] {
    after = holdingsOf(process);
    return after.descriptors <= before.descriptors + 3 && after.threads <= before.threads + 1;
  })) << before.descriptors
      << " descriptors became " << after.descriptors << ", " << before.threads << " threads "
      << after.threads;
  EXPECT_LE(after.kilobytes, before.kilobytes + before.kilobytes / 20);
  return after;
}

}  // namespace soak
