#pragma once

#include <functional>

#include "VeskPlayerX/PlayerInterface.h"

namespace playerx {
class PluginContext;
}

namespace playerx::window {

/// The window as the plug-in that plays films. The download manager asks it from any thread.
class WindowPlayer : public VeskPlayerX::PlayerInterface {
 public:
  /// `open` is told what is to be played, on the asking thread, and must not wait.
  explicit WindowPlayer(std::function<void(const QString& location)> open);

  /// Offers this player to the plug-ins of `context`, which must not outlive it.
  void offerTo(PluginContext& context);

  void openMedia(const QString& location) override { open_(location); }

  /// Nothing: the queue itself says when a film is complete.
  void downloadFinished(const QString&, unsigned long long) override {}

  /// None: a film is read from its file, and goes on when the session of its download has ended.
  unsigned long long currentMediaId() override { return 0; }

 private:
  const std::function<void(const QString&)> open_;
};

}  // namespace playerx::window
