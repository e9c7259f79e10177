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

const QString kNoProxyWord = QStringLiteral("none");

QString proxyWord(const QueuePreferences& preferences) {
  switch (preferences.proxy) {
    case QueuePreferences::kNoProxy:
      return kNoProxyWord;
    case QueuePreferences::kOwnProxy:
      return preferences.proxyAddress;
    case QueuePreferences::kSystemProxy:
      break;
  }
  return {};
}

}  // namespace

QueuePreferences storedPreferences() {
  QueuePreferences preferences;
  preferences.mediaFolder = mediaFolder();
  preferences.authorityFile = preference(kCaFileKey);
  const QString proxy = preference(kProxyKey);
  if (proxy == kNoProxyWord) {
    preferences.proxy = QueuePreferences::kNoProxy;
  } else if (!proxy.isEmpty()) {
    preferences.proxy = QueuePreferences::kOwnProxy;
    preferences.proxyAddress = proxy;
  }
  preferences.speedLimit = preference(kRateLimitKey).toULongLong();
  preferences.servicesAddress = preference(kServicesAddressKey);
  return preferences;
}

void storePreferences(const QueuePreferences& preferences) {
  store(KPXPreferences::MediaFolder, preferences.mediaFolder);
  store(kCaFileKey, preferences.authorityFile);
  store(kProxyKey, proxyWord(preferences));
  const quint64 limit = preferences.speedLimit;
  store(kRateLimitKey, limit > 0 ? QString::number(limit) : QString());
  store(kServicesAddressKey, preferences.servicesAddress);
  ensureUserSettings().sync();
  setMoviesFolder(preferences.mediaFolder.toStdWString());
}

void useStoredProxy() {
  const QueuePreferences preferences = storedPreferences();
  if (preferences.proxy == QueuePreferences::kSystemProxy) return;
  const QByteArray proxy = preferences.proxyAddress.toUtf8();
  for (const char* const name : {"http_proxy", "https_proxy", "HTTPS_PROXY"}) {
    preferences.proxy == QueuePreferences::kNoProxy ? qunsetenv(name) : qputenv(name, proxy);
  }
  for (const char* const name : {"all_proxy", "ALL_PROXY"}) qunsetenv(name);
}

QString mediaFolder() {
  return KPXPreferences::getPreferenceHelper<QString>(KPXPreferences::MediaFolder,
                                                      KPXPreferences::MediaFolder_DEFAULT, true);
}

QString partialFolder() { return VeskPlayerX::OSUtilities::getTempPath(); }

quint64 freeSpace(const QString& path) {
  unsigned long long bytes = 0;
  return VeskPlayerX::OSUtilities::getFreeSpace(path, &bytes) ? bytes : 0;
}

}  // namespace playerx::window
