#include "download/SharedPreferences.h"

#include <QCoreApplication>
#include <QSettings>
#include <memory>
#include <utility>

#include "KPX/KPXPreferences.h"

namespace download {

int SharedPreferences::uses = 0;

SharedPreferences::SharedPreferences() {
  if (KPXPreferences::userSettings == nullptr) {
    auto settings = std::make_unique<QSettings>(
        QSettings::UserScope, QCoreApplication::organizationName(), QStringLiteral("Settings"));
    settings->beginGroup(QCoreApplication::applicationName());
    KPXPreferences::userSettings = settings.release();
  }
  ++uses;
}

SharedPreferences::~SharedPreferences() {
  --uses;
  deleteUnused();
}

void SharedPreferences::deleteUnused() {
  if (uses == 0) delete std::exchange(KPXPreferences::userSettings, nullptr);
}

}  // namespace download
