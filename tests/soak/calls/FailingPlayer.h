#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/system/PlayerHome.h"

namespace soak {

/// A call of the system that is made to fail (FailingCalls.cpp).
struct Failure {
  std::string call;
  int error = 0;  ///< 0 for a write of half the bytes
  int from = 1;   ///< 1 for the first call of this name
  int times = 1;

  std::string text() const;
};

/// A failure that lasts.
inline constexpr int kForEver = 1'000'000;

/// What a player did whose calls were counted, some of which may have failed.
struct FailingRun {
  system_test::PlayerResult result;
  std::map<std::string, int> calls;  ///< how often each was made
  bool hasFailed = false;            ///< whether any was made to fail
};

/// Runs a command of the player, one call of which fails; none by default.
FailingRun runFailing(const system_test::PlayerHome& home, const std::vector<std::string>& command,
                      const Failure& failure = {});

/// Every failure that makes sense of calls that are made so often, once or permanently.
std::vector<Failure> failuresOf(const std::map<std::string, int>& calls);

}  // namespace soak
