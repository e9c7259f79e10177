#pragma once

#include <QObject>

#include "playerx/window/model/WindowPreferences.h"

class QWidget;

namespace playerx::window {

class Tray;
class WindowDialogs;
class WindowMemory;

/// What closing the window means while films arrive: what the user has said before, or else says
/// when asked. Used on the UI thread; the arguments are not owned and outlive this.
class WindowClosing : public QObject {
  Q_OBJECT

 public:
  WindowClosing(QWidget& window, WindowDialogs& dialogs, WindowMemory& memory, const Tray& tray);

  /// Whether the window may be closed for good now. When it may not, it was hidden, or the user is
  /// being asked.
  bool mayClose(bool isBusy);

  /// Closes without asking.
  void quit();

 private:
  void follow(WindowPreferences::Closing closing, bool isRemembered);

  QWidget& window_;
  WindowDialogs& dialogs_;
  WindowMemory& memory_;
  const Tray& tray_;
  bool isQuitting_ = false;
};

}  // namespace playerx::window
