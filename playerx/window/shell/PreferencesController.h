#pragma once

#include <QObject>

#include "playerx/window/model/WindowPreferences.h"
#include "playerx/window/queue/QueueMessages.h"

namespace playerx::window {

class DesktopNews;
class WindowDialogs;
class WindowMemory;
class WindowQueue;

/// Has the user change the preferences, and hands them to those who follow them. Used on the UI
/// thread.
class PreferencesController : public QObject {
  Q_OBJECT

 public:
  /// Not owned; they outlive this.
  struct Parts {
    WindowQueue& queue;
    WindowMemory& memory;
    WindowDialogs& dialogs;
    DesktopNews& news;
  };

  explicit PreferencesController(const Parts& parts, QObject* parent = nullptr);

  /// Opens the dialog.
  void ask();

 private:
  void set(const QueuePreferences& queue, const WindowPreferences& window);

  const Parts parts_;
  QueuePreferences queue_;  // as the queue last told them
};

}  // namespace playerx::window
