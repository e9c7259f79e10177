#pragma once

#include <atomic>

#include "playerx/framework/PlayerEnd.h"

namespace support {

/// A player that ends when a test says so. Threads: any.
class FakePlayerEnd : public playerx::PlayerEnd {
 public:
  std::atomic<bool> wanted{false};
  std::atomic<bool> underWay{false};

  bool isWanted() const override { return wanted; }
  bool isUnderWay() const override { return underWay; }
};

}  // namespace support
