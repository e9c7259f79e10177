#include "KPX/KPXPreferences.h"

#include <QVariant>

#include "playerx/platform/GuardMutex.h"
#include "playerx/platform/MoviesFolder.h"
#include "playerx/settings/PreferenceOverrides.h"

QSettings* KPXPreferences::userSettings = nullptr;

const QString KPXPreferences::MediaFolder = QStringLiteral("General/MediaFolder");

const QString KPXPreferences::MediaFolder_DEFAULT =
    QString::fromStdWString(playerx::defaultMoviesFolder());

namespace {

// Readers on several threads share one settings object; the text handed out shares nothing.
playerx::GuardMutex reading;

QString detached(const QString& text) { return QString(text.constData(), text.size()); }

QString stored(const QString& key, const QString& defaultValue) {
  const playerx::GuardLock lock(reading);
  if (KPXPreferences::userSettings == nullptr) return defaultValue;
  const QVariant value = KPXPreferences::userSettings->value(key, defaultValue);
  const QString text = value.isValid() ? value.toString() : QString();
  return text.isEmpty() ? defaultValue : detached(text);
}

}  // namespace

template <>
QString KPXPreferences::getPreferenceHelper<QString>(const QString& key,
                                                     const QString& defaultValue, bool /*unused*/) {
  const std::optional<QString> overriding = playerx::preferenceOverride(key);
  return overriding ? *overriding : stored(key, defaultValue);
}
