#include "download/SharedPreferences.h"

#include <QCoreApplication>
#include <QSettings>
#include <memory>
#include <utility>

#include "KPX/KPXPreferences.h"

namespace download {

void ensureSharedPreferences() {
  if (KPXPreferences::userSettings != nullptr) return;
  auto settings = std::make_unique<QSettings>(
      QSettings::UserScope, QCoreApplication::organizationName(), QStringLiteral("Settings"));
  settings->beginGroup(QCoreApplication::applicationName());
  KPXPreferences::userSettings = settings.release();
}

void dropSharedPreferences() { delete std::exchange(KPXPreferences::userSettings, nullptr); }

}  // namespace download
