#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// Seconds that `work` takes.
double secondsOf(const std::function<void()>& work);

/// The value below which the given share (0..1) of the values lies; the values must not be empty.
double quantile(std::vector<double> values, double share);

/// What one run of a program took.
struct Usage {
  double wall = 0;    ///< seconds
  double cpu = 0;     ///< seconds, user and system
  double memory = 0;  ///< megabytes resident at most
};

/// Runs a program to its end, without its output. Throws std::runtime_error when it fails.
Usage run(const std::vector<std::string>& command);

/// One that takes part in a comparison.
struct Contestant {
  std::string name;
  std::function<Usage()> run;
};

/// Runs all in turn, `rounds` times, and prints for each the medians, and the medians of the ratios
/// of the first to it in the same round.
void compare(const std::string& title, const std::vector<Contestant>& contestants, int rounds);

}  // namespace bench
