#include "playerx/window/queue/QueuePlaces.h"

#include <QSettings>

#include "KPX/KPXPreferences.h"
#include "KPX/OSUtilities.h"
#include "playerx/platform/MoviesFolder.h"
#include "playerx/settings/PreferenceKeys.h"
#include "playerx/settings/PreferenceOverrides.h"
#include "playerx/settings/UserSettings.h"

namespace playerx::window {

namespace {

QString preference(const QString& key) {
  return KPXPreferences::getPreferenceHelper<QString>(key, QString(), true);
}

void store(const QString& key, const QString& value) {
  QSettings& settings = ensureUserSettings();
  if (value.isEmpty()) {
    settings.remove(key);
  } else {
    settings.setValue(key, value);
  }
  // What this run was told must not hide what the user has chosen since.
  setPreferenceOverride(key, value);
}

}  // namespace

QueuePreferences storedPreferences() {
  QueuePreferences preferences;
  preferences.mediaFolder = mediaFolder();
  preferences.authorityFile = preference(kCaFileKey);
  preferences.servicesAddress = preference(kServicesAddressKey);
  return preferences;
}

void storePreferences(const QueuePreferences& preferences) {
  store(KPXPreferences::MediaFolder, preferences.mediaFolder);
  store(kCaFileKey, preferences.authorityFile);
  store(kServicesAddressKey, preferences.servicesAddress);
  ensureUserSettings().sync();
  setMoviesFolder(preferences.mediaFolder.toStdWString());
}

QString mediaFolder() {
  return KPXPreferences::getPreferenceHelper<QString>(KPXPreferences::MediaFolder,
                                                      KPXPreferences::MediaFolder_DEFAULT, true);
}

quint64 freeSpace(const QString& path) {
  unsigned long long bytes = 0;
  return VeskPlayerX::OSUtilities::getFreeSpace(path, &bytes) ? bytes : 0;
}

quint64 neededSpace(quint64 size) {
  constexpr quint64 kPart = 7168;
  return 2 * size + size / kPart;
}

}  // namespace playerx::window
