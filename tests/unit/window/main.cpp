#include <gmock/gmock.h>

#include <QApplication>
#include <QStandardPaths>

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  // No test talks to the desktop it happens to run on.
  for (const char* const bus : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"}) {
    qputenv(bus, "unix:path=/nonexistent");
  }
  qputenv("DBUS_FATAL_WARNINGS", "0");  // as the player does
  QStandardPaths::setTestModeEnabled(true);
  QApplication application(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Vesk"));
  QApplication::setApplicationName(QStringLiteral("VeskPlayerX"));
  QApplication::setApplicationDisplayName(QStringLiteral("Vesk Player X"));
  QApplication::setApplicationVersion(QStringLiteral("1.0"));
  QApplication::setQuitOnLastWindowClosed(false);
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
