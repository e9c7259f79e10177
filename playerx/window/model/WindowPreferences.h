#pragma once

namespace playerx::window {

/// What the window does of its own accord.
struct WindowPreferences {
  /// What closing the window means while films arrive.
  enum Closing { kAsk, kGoOnInTray, kQuit };

  bool playsAutomatically = false;  ///< as soon as enough of a film is there
  bool tellsWhenDone = true;
  bool tellsWhenFailed = true;
  Closing closing = kAsk;

  bool operator==(const WindowPreferences&) const = default;
};

}  // namespace playerx::window
