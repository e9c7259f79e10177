#include "tests/support/Promptness.h"

#include <algorithm>

namespace support {

using std::chrono::milliseconds;

milliseconds timeOf(const std::function<void()>& action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begin);
}

milliseconds bestTime(const std::function<milliseconds()>& attempt, milliseconds limit) {
  constexpr int kTries = 5;
  milliseconds best = milliseconds::max();
  for (int tried = 0; tried < kTries && best >= limit; ++tried) best = std::min(best, attempt());
  return best;
}

}  // namespace support
