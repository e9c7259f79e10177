#pragma once

#include <cstdlib>

namespace soak {

/// How often a test tries something: what `./dev soak NAME COUNT` has put into the environment
/// variable VESK_SOAK_COUNT, else the few times of its short form.
inline int countOr(int shortForm) {
  const char* const wanted = std::getenv("VESK_SOAK_COUNT");
  return wanted == nullptr ? shortForm : std::atoi(wanted);
}

/// Whether everything is to be tried, and not what takes seconds alone.
inline bool isLong() { return std::getenv("VESK_SOAK_COUNT") != nullptr; }

}  // namespace soak
