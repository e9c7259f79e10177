#pragma once

#include <optional>
#include <string>

#include "plugin/Moves.h"

namespace KPIM {
class Context;
}

namespace plugin {

/// Hands films to the player: at the host's request, and in the middle of a transfer at the
/// worker's.
///
/// For all threads. `play` and `resumePlaybackForUrl` are operations of the interface: they take
/// the operation lock to restart the queue, and answer false when they have to give way.
class Playback {
 public:
  /// Nothing is owned, and all but `context` outlives this object; in a null context there is no
  /// player.
  Playback(SharedQueue& queue, OperationLock& lock, TransferControl& transfers, Moves& moves,
           KPIM::Context* context);

  /// Waits, while the host's event loop runs, until the film flows. A background thread does not
  /// wait: it may be the one that the transfer needs.
  bool play(unsigned int id);
  bool resumePlaybackForUrl(const std::wstring& url);

  /// Plays the film of the present transfer, which flows already. Takes no lock but the queue's, so
  /// it never waits for a stop. False when another transfer runs, when the film is not to be played
  /// any more, and when there is no player.
  bool playRunning(unsigned int id);

 private:
  std::optional<DownloadStatusEnumType> start(unsigned int id);
  DownloadStatusEnumType restartWith(const ItemState& item) KVPM_REQUIRES(kOperationLock);
  bool waitUntilFlowing(unsigned int id);
  std::optional<std::wstring> location(unsigned int id, bool isComplete);
  std::optional<std::wstring> runningLocation(unsigned int id);

  SharedQueue& queue_;
  OperationLock& lock_;
  TransferControl& transfers_;
  Moves& moves_;
  KPIM::Context* const context_;
};

}  // namespace plugin
