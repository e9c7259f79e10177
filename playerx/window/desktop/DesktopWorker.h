#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QHash>
#include <QObject>
#include <optional>
#include <utility>

namespace playerx::window {

/// Where the buses are; empty for the usual ones.
struct BusAddresses {
  QString session;
  QString system;
};

/// Talks to the desktop's services. Lives on a thread of its own, because connecting to a bus
/// may block.
class DesktopWorker : public QObject {
  Q_OBJECT

 public:
  explicit DesktopWorker(BusAddresses addresses) : addresses_(std::move(addresses)) {}
  ~DesktopWorker() override;

  void notify(const QString& topic, const QString& title, const QString& text);
  void keepAwake(bool isAwake);
  void showProgress(double part);
  void showInFolder(const QString& path);

 Q_SIGNALS:
  void notificationUsed(const QString& topic);
  void folderNotShown(const QString& path);

 private Q_SLOTS:
  void onActionInvoked(uint id, const QString& action);
  void onNotificationClosed(uint id);

 private:
  QDBusConnection sessionBus();
  QDBusConnection systemBus();

  const BusAddresses addresses_;
  std::optional<QDBusConnection> session_;
  std::optional<QDBusConnection> system_;
  QHash<QString, uint> notifications_;
  bool isAwake_ = false;
  QDBusUnixFileDescriptor inhibition_;  // open as long as the machine is to stay awake
};

}  // namespace playerx::window
