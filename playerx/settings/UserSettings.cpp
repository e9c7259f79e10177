#include "playerx/settings/UserSettings.h"

#include <QCoreApplication>

#include "KPX/KPXPreferences.h"

namespace playerx {

QSettings& ensureUserSettings() {
  QSettings*& settings = KPXPreferences::userSettings;
  if (settings == nullptr) {
    settings = new QSettings(QSettings::UserScope, QCoreApplication::organizationName(),
                             QStringLiteral("Settings"));
    settings->beginGroup(QCoreApplication::applicationName());
  }
  return *settings;
}

}  // namespace playerx
