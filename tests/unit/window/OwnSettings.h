#pragma once

#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <utility>

#include "KPX/KPXPreferences.h"
#include "playerx/settings/PreferenceOverrides.h"

namespace playerx::window {

/// Preferences in a file of the test's own, in place of those of the user who runs it.
class OwnSettings {
 public:
  OwnSettings() {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder_.path());
    forget();
  }
  OwnSettings(const OwnSettings&) = delete;
  OwnSettings& operator=(const OwnSettings&) = delete;
  ~OwnSettings() {
    forget();
    // What later tests write would bring the folder back.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                       QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
  }

 private:
  static void forget() {
    delete std::exchange(KPXPreferences::userSettings, nullptr);
    clearPreferenceOverrides();
  }

  QTemporaryDir folder_;
};

}  // namespace playerx::window
