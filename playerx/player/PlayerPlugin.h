#pragma once

#include <functional>
#include <optional>
#include <string>

#include "KPIM/Plugin.h"
#include "VeskPlayerX/PlayerInterface.h"
#include "playerx/platform/GuardMutex.h"

namespace playerx {

class UserMessages;

/// A program of the user's that is playing.
struct PlayingProgram {
  long long pid = 0;
  QString location;
};

/// Playback as a plug-in: starts the user's player program on what is to be played. Operations may
/// be called from any thread.
class PlayerPlugin : public KPIM::Plugin, public VeskPlayerX::PlayerInterface {
 public:
  /// Id of the download session of an address; 0 if absent.
  using SessionLookup = std::function<unsigned long long(const std::string& address)>;

  /// `command` is the program with its arguments; empty for "mpv".
  PlayerPlugin(KPIM::Context* context, QString command, SessionLookup sessionOf);

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override;

  void openMedia(const QString& location) override;

  /// Nothing: the front end announces a finished film, once, when the queue says so.
  void downloadFinished(const QString&, unsigned long long) override {}

  unsigned long long currentMediaId() override;

 private:
  void withMessages(const std::function<void(UserMessages&)>& use);

  const QString command_;
  const SessionLookup sessionOf_;

  GuardMutex mutex_;
  std::optional<PlayingProgram> playing_ KVPM_GUARDED_BY(mutex_);  ///< the one started last
};

}  // namespace playerx
