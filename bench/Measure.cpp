#include "bench/Measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace bench {

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double quantile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  const auto place = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1) + 0.5);
  return values.at(place);
}

void compare(const std::string& title, const std::string& ourName,
             const std::function<void()>& ours, const std::string& otherName,
             const std::function<void()>& other, int rounds) {
  std::vector<double> ourTimes, otherTimes, ratios;
  for (int round = 0; round < rounds; ++round) {
    ourTimes.push_back(secondsOf(ours));
    otherTimes.push_back(secondsOf(other));
    ratios.push_back(ourTimes.back() / otherTimes.back());
  }
  std::printf("%s (%d rounds, medians)\n  %-12s %8.3f s\n  %-12s %8.3f s\n  ratio        %8.3f\n",
              title.c_str(), rounds, ourName.c_str(), quantile(ourTimes, 0.5), otherName.c_str(),
              quantile(otherTimes, 0.5), quantile(ratios, 0.5));
  std::fflush(stdout);
}

}  // namespace bench
