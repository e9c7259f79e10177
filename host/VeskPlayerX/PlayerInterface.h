#pragma once

#include <QString>

namespace VeskPlayerX {

/// The player itself, offered under `DIN_Player`.
///
/// All operations may be called from any thread and return without waiting for playback. The order
/// of the virtual operations is part of the interface.
class PlayerInterface {
 public:
  PlayerInterface() = default;
  PlayerInterface(const PlayerInterface&) = delete;
  PlayerInterface& operator=(const PlayerInterface&) = delete;
  virtual ~PlayerInterface() = default;

  /// Opens a local path or an address for playback.
  virtual void openMedia(const QString& location) = 0;

  /// A download has finished: `path`, with "/" separators, holds the whole film; `uid` is the key
  /// of its session, 0 when the item carries none.
  virtual void downloadFinished(const QString& path, unsigned long long uid) = 0;

  /// Key of the download session whose film is open; 0 for none.
  virtual unsigned long long currentMediaId() = 0;
};

}  // namespace VeskPlayerX
