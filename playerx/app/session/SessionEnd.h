#pragma once

#include <atomic>
#include <functional>
#include <utility>

#include "playerx/framework/OwnPlugin.h"
#include "playerx/framework/PlayerEnd.h"

namespace playerx::session {

/// Tells the plug-ins of a session that it is to end. Any thread.
class SessionEnd : public PlayerEnd {
 public:
  /// `isWanted` is asked on the thread of the plug-in.
  explicit SessionEnd(std::function<bool()> isWanted) : isWanted_(std::move(isWanted)) {}

  /// From now on the end is under way.
  void begin() { isUnderWay_ = true; }

  bool isWanted() const override { return isUnderWay_ || isWanted_(); }
  bool isUnderWay() const override { return isUnderWay_; }

  /// Offers this to the plug-ins of `context`, which must not outlive it.
  void offerTo(PluginContext& context) {
    offerOwn<PlayerEnd>(context, {"com.vesk.playerX.plugin.End", "1.0", {kPlayerEndId}}, *this);
  }

 private:
  const std::function<bool()> isWanted_;
  std::atomic<bool> isUnderWay_{false};
};

}  // namespace playerx::session
