#pragma once

#include <QMenu>
#include <QSystemTrayIcon>

namespace playerx::window {

class ActionSet;

/// The player's icon in the desktop's tray, where there is one. Used on the UI thread.
class Tray : public QObject {
  Q_OBJECT

 public:
  /// `actions` is not owned and outlives the icon.
  explicit Tray(const ActionSet& actions, QObject* parent = nullptr);

  /// Whether a hidden window can be had back from the tray.
  bool isThere() const { return icon_.isVisible(); }

  void setStatus(const QString& status);

 Q_SIGNALS:
  void windowWanted();

 private:
  QMenu menu_;
  QSystemTrayIcon icon_;
};

}  // namespace playerx::window
