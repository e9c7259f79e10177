#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>

#include "playerx/window/desktop/BusDesktop.h"
#include "tests/support/Process.h"
#include "tests/support/WaitFor.h"

namespace playerx::window {
namespace {

/// Far above what it takes, half of the five seconds after which a call gives up by itself.
constexpr qint64 kHangMs = 2'500;

/// Whether the thread of a desktop is running in this process.
bool isDesktopRunning() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return std::any_of(begin(threads), end(threads), [](const auto& thread) {
    std::string name;
    std::getline(std::ifstream(thread.path() / "comm"), name);
    return name == "desktop";
  });
}

/// A bus that lets a client connect and never answers.
class SilentBus {
 public:
  SilentBus() { EXPECT_TRUE(server_.listen(folder_.filePath(QStringLiteral("bus")))); }

  /// Lets a desktop that was left behind end, so that it does not meet that of the next test.
  ~SilentBus() {
    server_.close();
    client_.reset();
    EXPECT_TRUE(support::waitFor([] { return !isDesktopRunning(); }));
  }

  QString address() const { return QStringLiteral("unix:path=") + server_.fullServerName(); }

  /// Waits until a client that has connected waits for the answer to its first bytes.
  bool waitForBytes() {
    if (!server_.waitForNewConnection(10'000)) return false;
    client_.reset(server_.nextPendingConnection());
    return client_->waitForReadyRead(10'000);
  }

 private:
  const QTemporaryDir folder_;
  QLocalServer server_;
  std::unique_ptr<QLocalSocket> client_;
};

/// What a taskbar on a bus is told about the player's icon.
class Taskbar : public QObject {
  Q_OBJECT

 public:
  explicit Taskbar(QDBusConnection bus) {
    EXPECT_TRUE(bus.connect(QString(), QString(),
                            QStringLiteral("com.canonical.Unity.LauncherEntry"),
                            QStringLiteral("Update"), this, SLOT(take(QString, QVariantMap))));
    // What was said before on the same connection has been done when this is answered.
    EXPECT_TRUE(bus.interface()->serviceOwner(QStringLiteral("org.freedesktop.DBus")).isValid());
  }

  /// Whether the icon of this program comes to show this.
  bool shows(const QString& program, double progress, bool isVisible) {
    return QTest::qWaitFor(
        [&] {
          return program_ == program && isVisible_ == isVisible &&
                 (!isVisible || progress_ == progress);
        },
        10'000);
  }

 public Q_SLOTS:
  void take(const QString& program, const QVariantMap& properties) {
    program_ = program;
    progress_ = properties[QStringLiteral("progress")].toDouble();
    isVisible_ = properties[QStringLiteral("progress-visible")].toBool();
  }

 private:
  QString program_;
  double progress_ = -1;
  bool isVisible_ = false;
};

/// A bus of the test's own, which serves as the session's and the system's.
class BusDesktopTest : public testing::Test {
 protected:
  BusDesktopTest() {
    EXPECT_TRUE(bus_.waitForOutput("\n"));
    address_ = QString::fromStdString(bus_.output()).trimmed();
  }

  ~BusDesktopTest() override { QDBusConnection::disconnectFromBus(address_); }

  /// Starts a service that prints the calls it gets, and waits until it is on the bus.
  void mock(const std::string& pattern, const QString& service) {
    const std::string address = address_.toStdString();
    mock_ = std::make_unique<support::Process>(support::ProcessOptions{
        .arguments = {"/usr/bin/python3", "-m", "dbusmock", "--template", pattern},
        .environment = {{"DBUS_SESSION_BUS_ADDRESS", address},
                        {"DBUS_SYSTEM_BUS_ADDRESS", address}}});
    connection_ = QDBusConnection::connectToBus(address_, address_);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return connection_.interface()->isServiceRegistered(service).value(); }, 20'000));
  }

  /// Whether anything keeps the machine awake.
  bool isAwake() {
    const QDBusMessage reply = connection_.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("ListInhibitors")));
    const auto list = reply.arguments().value(0).value<QDBusArgument>();
    list.beginArray();
    const bool isEmpty = list.atEnd();
    list.endArray();
    return !isEmpty;
  }

  /// Waits until the service has printed this.
  bool hears(const std::string& text) {
    return QTest::qWaitFor([&] { return heard().find(text) != std::string::npos; }, 10'000);
  }

  std::string heard() const { return mock_->output() + mock_->errors(); }

  BusAddresses addresses() const { return {address_, address_}; }

  const QTemporaryDir folder_;
  support::Process bus_{
      {"dbus-daemon", "--session", "--nofork", "--print-address",
       "--address=unix:path=" + folder_.filePath(QStringLiteral("bus")).toStdString()}};
  std::unique_ptr<support::Process> mock_;
  QString address_;
  QDBusConnection connection_{QString()};
};

TEST_F(BusDesktopTest, ShowsNotificationsWithTheirTextAsText) {
  mock("notification_daemon", QStringLiteral("org.freedesktop.Notifications"));
  BusDesktop desktop(addresses());
  desktop.notify(QStringLiteral("done"), QStringLiteral("Downloads"),
                 QStringLiteral("“<b>Film</b>” is done."));
  EXPECT_TRUE(hears("Notify"));
  EXPECT_TRUE(hears("&lt;b&gt;Film"));
}

TEST_F(BusDesktopTest, ALaterNotificationOfATopicReplacesTheEarlierOne) {
  mock("notification_daemon", QStringLiteral("org.freedesktop.Notifications"));
  BusDesktop desktop(addresses());
  desktop.notify(QStringLiteral("done"), QStringLiteral("Downloads"), QStringLiteral("First"));
  desktop.notify(QStringLiteral("done"), QStringLiteral("Downloads"), QStringLiteral("Second"));
  EXPECT_TRUE(hears("\"VeskPlayerX\" 1 \"playerx\"")) << heard();
  EXPECT_TRUE(hears("Second"));
}

TEST_F(BusDesktopTest, KeepsTheMachineAwakeUntilItMaySleep) {
  mock("logind", QStringLiteral("org.freedesktop.login1"));
  BusDesktop desktop(addresses());
  EXPECT_FALSE(isAwake());
  desktop.keepAwake(true);
  EXPECT_TRUE(QTest::qWaitFor([this] { return isAwake(); }));
  desktop.keepAwake(false);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !isAwake(); }));
}

TEST_F(BusDesktopTest, ShowsProgressOnTheIconInTheTaskbar) {
  connection_ = QDBusConnection::connectToBus(address_, address_);
  Taskbar taskbar(connection_);
  BusDesktop desktop(addresses());
  const QString icon = QStringLiteral("application://playerx.desktop");
  desktop.showProgress(0.25);
  EXPECT_TRUE(taskbar.shows(icon, 0.25, true));
  desktop.showProgress(0.5);
  EXPECT_TRUE(taskbar.shows(icon, 0.5, true));
  desktop.showProgress(-1);
  EXPECT_TRUE(taskbar.shows(icon, 0, false));
}

TEST_F(BusDesktopTest, SaysWhenNoFileManagerCanShowAFile) {
  BusDesktop desktop(addresses());
  QSignalSpy missing(&desktop, &Desktop::folderNotShown);
  desktop.showInFolder(QStringLiteral("/films/a.avi"));
  ASSERT_TRUE(missing.wait(10'000));
  EXPECT_EQ(missing[0][0].toString(), QStringLiteral("/films/a.avi"));
}

TEST_F(BusDesktopTest, DoesNotWaitForAServiceThatHangs) {
  mock("notification_daemon", QStringLiteral("org.freedesktop.Notifications"));
  mock_->send(SIGSTOP);
  QElapsedTimer clock;
  clock.start();
  {
    BusDesktop desktop(addresses());
    desktop.notify(QStringLiteral("done"), QStringLiteral("Downloads"), QStringLiteral("Text"));
  }
  EXPECT_LT(clock.elapsed(), kHangMs);
  mock_->send(SIGCONT);
}

TEST(BusDesktopWithoutBusTest, WaitsOnlyAMomentForABusThatHangs) {
  SilentBus bus;
  QElapsedTimer clock;
  clock.start();
  {
    BusDesktop desktop({bus.address(), bus.address()});
    desktop.notify(QStringLiteral("done"), QStringLiteral("Downloads"), QStringLiteral("Text"));
    desktop.keepAwake(true);
    EXPECT_LT(clock.elapsed(), kHangMs);
    ASSERT_TRUE(bus.waitForBytes());
    EXPECT_TRUE(isDesktopRunning());
    clock.restart();
  }
  EXPECT_GE(clock.elapsed(), 400);
  EXPECT_LT(clock.elapsed(), kHangMs);
}

TEST(BusDesktopWithoutBusTest, DoesWithoutABus) {
  const QString nowhere = QStringLiteral("unix:path=/nonexistent");
  BusDesktop desktop({nowhere, nowhere});
  QSignalSpy missing(&desktop, &Desktop::folderNotShown);
  desktop.notify(QStringLiteral("done"), QStringLiteral("Downloads"), QStringLiteral("Text"));
  desktop.keepAwake(true);
  desktop.showProgress(0.5);
  desktop.showInFolder(QStringLiteral("/films/a.avi"));
  EXPECT_TRUE(missing.wait(5000));
}

}  // namespace
}  // namespace playerx::window

#include "BusDesktopTest.moc"
