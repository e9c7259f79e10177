#include "playerx/window/desktop/DesktopWorker.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUrl>
#include <QVariantMap>

namespace playerx::window {

namespace {

/// A service that has not answered by then does not answer.
constexpr int kTimeoutMs = 5000;

constexpr char kNotifications[] = "org.freedesktop.Notifications";
constexpr char kNotificationsPath[] = "/org/freedesktop/Notifications";

constexpr char kSessionName[] = "playerx-session";
constexpr char kSystemName[] = "playerx-system";

QDBusConnection connectTo(const QString& address, QDBusConnection::BusType usual,
                          const QString& name) {
  return address.isEmpty() ? QDBusConnection::connectToBus(usual, name)
                           : QDBusConnection::connectToBus(address, name);
}

/// Runs `done` with the reply, also when the call failed before it was sent.
template <class Done>
void call(const QDBusConnection& bus, const QDBusMessage& message, QObject* context, Done done) {
  if (!bus.isConnected()) return done(QDBusPendingCall::fromError(bus.lastError()));
  const QDBusPendingCall pending = bus.asyncCall(message, kTimeoutMs);
  if (pending.isFinished()) return done(pending);
  auto* const watcher = new QDBusPendingCallWatcher(pending, context);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [done, watcher] {
    watcher->deleteLater();
    done(*watcher);
  });
}

QDBusMessage notifyMessage(uint replaces, const QString& title, const QString& text) {
  QDBusMessage message = QDBusMessage::createMethodCall(
      QLatin1String(kNotifications), QLatin1String(kNotificationsPath),
      QLatin1String(kNotifications), QStringLiteral("Notify"));
  const QStringList actions = {QStringLiteral("default"),
                               QCoreApplication::translate("DesktopWorker", "Show")};
  const QVariantMap hints = {{QStringLiteral("desktop-entry"), QStringLiteral("playerx")},
                             {QStringLiteral("category"), QStringLiteral("transfer.complete")}};
  message << QCoreApplication::applicationName() << replaces << QStringLiteral("playerx") << title
          << text << actions << hints << -1;
  return message;
}

}  // namespace

DesktopWorker::~DesktopWorker() {
  for (const char* const name : {kSessionName, kSystemName}) {
    QDBusConnection::disconnectFromBus(QLatin1String(name));
  }
}

void DesktopWorker::notify(const QString& topic, const QString& title, const QString& text) {
  // Which notification it replaces is known when the earlier one has been answered.
  if (sent_.contains(topic)) {
    waiting_.insert(topic, {title, text});
  } else {
    send(topic, {title, text});
  }
}

void DesktopWorker::send(const QString& topic, const Notification& notification) {
  sent_.insert(topic);
  // Markup is allowed in the text, and titles come from outside.
  const QDBusMessage message = notifyMessage(notifications_.value(topic), notification.title,
                                             notification.text.toHtmlEscaped());
  call(sessionBus(), message, this, [this, topic](const QDBusPendingReply<uint>& reply) {
    if (!reply.isError()) notifications_.insert(topic, reply.value());
    sent_.remove(topic);
    if (waiting_.contains(topic)) send(topic, waiting_.take(topic));
  });
}

void DesktopWorker::keepAwake(bool isAwake) {
  isAwake_ = isAwake;
  if (!isAwake) {
    inhibition_ = {};
    return;
  }
  QDBusMessage message = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
      QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
  message << QStringLiteral("sleep") << QCoreApplication::applicationName()
          << QCoreApplication::translate("DesktopWorker", "Films are being downloaded")
          << QStringLiteral("block");
  call(systemBus(), message, this, [this](const QDBusPendingReply<QDBusUnixFileDescriptor>& reply) {
    if (!reply.isError() && isAwake_) inhibition_ = reply.value();
  });
}

void DesktopWorker::showProgress(double part) {
  const QDBusConnection bus = sessionBus();
  if (!bus.isConnected()) return;
  QDBusMessage message = QDBusMessage::createSignal(
      QStringLiteral("/org/playerx/Launcher"), QStringLiteral("com.canonical.Unity.LauncherEntry"),
      QStringLiteral("Update"));
  const QVariantMap properties = {{QStringLiteral("progress"), part < 0 ? 0.0 : part},
                                  {QStringLiteral("progress-visible"), part >= 0}};
  message << QStringLiteral("application://playerx.desktop") << properties;
  bus.send(message);
}

void DesktopWorker::showInFolder(const QString& path) {
  QDBusMessage message = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"),
      QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
  message << QStringList{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << QString();
  call(sessionBus(), message, this, [this, path](const QDBusPendingReply<>& reply) {
    if (reply.isError()) Q_EMIT folderNotShown(path);
  });
}

void DesktopWorker::onActionInvoked(uint id, const QString&) {
  const QString topic = notifications_.key(id);
  if (!topic.isEmpty()) Q_EMIT notificationUsed(topic);
}

void DesktopWorker::onNotificationClosed(uint id) {
  const QString topic = notifications_.key(id);
  if (!topic.isEmpty()) notifications_.remove(topic);
}

QDBusConnection DesktopWorker::sessionBus() {
  if (!session_ || !session_->isConnected()) {
    session_ =
        connectTo(addresses_.session, QDBusConnection::SessionBus, QLatin1String(kSessionName));
    session_->connect(QLatin1String(kNotifications), QLatin1String(kNotificationsPath),
                      QLatin1String(kNotifications), QStringLiteral("ActionInvoked"), this,
                      SLOT(onActionInvoked(uint, QString)));
    session_->connect(QLatin1String(kNotifications), QLatin1String(kNotificationsPath),
                      QLatin1String(kNotifications), QStringLiteral("NotificationClosed"), this,
                      SLOT(onNotificationClosed(uint)));
  }
  return *session_;
}

QDBusConnection DesktopWorker::systemBus() {
  if (!system_ || !system_->isConnected()) {
    system_ = connectTo(addresses_.system, QDBusConnection::SystemBus, QLatin1String(kSystemName));
  }
  return *system_;
}

}  // namespace playerx::window
