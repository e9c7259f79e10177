#pragma once

#include "kvsc/Waiter.h"

namespace kvsc {

inline constexpr Waiter::Milliseconds kNever{0};
inline constexpr Waiter::Milliseconds kSoon{50};
inline constexpr Waiter::Milliseconds kLong{30'000};

}  // namespace kvsc
