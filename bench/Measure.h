#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// Seconds that `work` takes.
double secondsOf(const std::function<void()>& work);

/// The value below which the given share (0..1) of the values lies; the values must not be empty.
double quantile(std::vector<double> values, double share);

/// Runs two works in turn, `rounds` times each, and prints the medians and the median of the ratios
/// of each round.
void compare(const std::string& title, const std::string& ourName,
             const std::function<void()>& ours, const std::string& otherName,
             const std::function<void()>& other, int rounds);

}  // namespace bench
