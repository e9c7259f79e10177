#include "playerx/window/shell/WindowClosing.h"

#include <QWidget>

#include "playerx/window/desktop/Tray.h"
#include "playerx/window/model/WindowMemory.h"
#include "playerx/window/shell/WindowDialogs.h"

namespace playerx::window {

WindowClosing::WindowClosing(QWidget& window, WindowDialogs& dialogs, WindowMemory& memory,
                             const Tray& tray)
    : QObject(&window), window_(window), dialogs_(dialogs), memory_(memory), tray_(tray) {
  connect(&dialogs_, &WindowDialogs::closingChosen, this, &WindowClosing::follow);
}

bool WindowClosing::mayClose(bool isBusy) {
  if (isQuitting_ || !isBusy) return true;
  const WindowPreferences::Closing closing = memory_.preferences().closing;
  if (closing == WindowPreferences::kGoOnInTray && tray_.isThere()) {
    window_.hide();
    return false;
  }
  if (closing == WindowPreferences::kQuit) return true;
  dialogs_.askAboutClosing(tray_.isThere());
  return false;
}

void WindowClosing::quit() {
  isQuitting_ = true;
  window_.close();
}

void WindowClosing::follow(WindowPreferences::Closing closing, bool isRemembered) {
  if (isRemembered) {
    WindowPreferences preferences = memory_.preferences();
    preferences.closing = closing;
    memory_.keepPreferences(preferences);
  }
  if (closing == WindowPreferences::kQuit) return quit();
  window_.hide();
}

}  // namespace playerx::window
