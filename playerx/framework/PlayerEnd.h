#pragma once

namespace playerx {

/// Id under which the player's front end offers `PlayerEnd`.
inline constexpr char kPlayerEndId[] = "com.vesk.playerX.pluginInterface.PlayerEnd";

/// The end of the player as its other plug-ins see it. Operations return at once and may be called
/// from any thread.
class PlayerEnd {
 public:
  PlayerEnd() = default;
  PlayerEnd(const PlayerEnd&) = delete;
  PlayerEnd& operator=(const PlayerEnd&) = delete;
  virtual ~PlayerEnd() = default;

  /// Whether the player is to end: what keeps the session's thread waiting is to be given up, so
  /// that it can stop everything else. What it does not wait for goes on: given up, it would
  /// count as failed.
  virtual bool isWanted() const = 0;

  /// Whether everything has been stopped: no answer is worth waiting for any longer.
  virtual bool isUnderWay() const = 0;
};

}  // namespace playerx
