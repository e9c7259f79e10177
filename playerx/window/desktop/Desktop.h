#pragma once

#include <QObject>
#include <QString>

namespace playerx::window {

/// What the desktop around the window offers. Used on the UI thread; no operation waits, and what
/// the desktop does not offer is dropped.
class Desktop : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  /// Shows a notification; one of the same topic replaces an earlier one.
  virtual void notify(const QString& topic, const QString& title, const QString& text) = 0;

  /// Keeps the machine from going to sleep, or lets it.
  virtual void keepAwake(bool isAwake) = 0;

  /// Shows progress, 0..1, on the player's icon; below 0 takes it away.
  virtual void showProgress(double part) = 0;

  /// Has the file manager show this file; `folderNotShown` when the desktop has no file manager
  /// that can.
  virtual void showInFolder(const QString& path) = 0;

 Q_SIGNALS:
  /// The user has used the notification of this topic.
  void notificationUsed(const QString& topic);

  void folderNotShown(const QString& path);
};

}  // namespace playerx::window
