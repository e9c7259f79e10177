#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
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
  struct Notification {
    QString title;
    QString text;
  };

  void send(const QString& topic, const Notification& notification);

  QHash<QString, uint> notifications_;
  QSet<QString> sent_;                    // topics whose notification has no id yet
  QHash<QString, Notification> waiting_;  // the latest one for each, sent when it has
  bool isAwake_ = false;
  QDBusUnixFileDescriptor inhibition_;  // open as long as the machine is to stay awake
};

}  // namespace playerx::window
