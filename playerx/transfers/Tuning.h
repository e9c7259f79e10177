#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "playerx/transfers/RetryPlan.h"

namespace playerx::transfers {

/// The numbers that the library works by. Tests shorten the times; nothing else changes them.
struct Tuning {
  Milliseconds stall{30'000};           ///< without a byte
  Milliseconds lostAfter{5'000};        ///< without a byte, when the network has come back
  Milliseconds connectTimeout{30'000};  ///< name, connection and handshake
  RetryRules retry;
  unsigned mostRestarts = 5;                           ///< of one session, from the first byte on
  std::uint64_t overlap = std::uint64_t{64} << 10U;    ///< bytes compared before the rest is added
  std::uint64_t syncEvery = std::uint64_t{32} << 20U;  ///< bytes between two syncs
  Milliseconds saveAfter{20};      ///< what is known of a film that takes longer
  Milliseconds forgetAfter{2000};  ///< a completed film's mark, from its report at the earliest
  std::function<double()> jitter;  ///< [0, 1); empty: random
};

}  // namespace playerx::transfers
