#include "playerx/window/model/WindowMemory.h"

#include <QCryptographicHash>

namespace playerx::window {

namespace {

const QString kPlaces = QStringLiteral("Places");
const QString kPlayAlone = QStringLiteral("Window/PlayAutomatically");
const QString kTellDone = QStringLiteral("Window/TellWhenDone");
const QString kTellFailed = QStringLiteral("Window/TellWhenFailed");
const QString kClosing = QStringLiteral("Window/Closing");

constexpr qsizetype kMostPlaces = 200;

/// A hash: addresses may hold what is not meant for this file.
QString keyOfPlace(const QString& film) {
  const QByteArray hash = QCryptographicHash::hash(film.toUtf8(), QCryptographicHash::Sha256);
  return QStringLiteral("Place/") + QString::fromLatin1(hash.toHex().left(32));
}

}  // namespace

WindowMemory::WindowMemory(const QString& file) : file_(file) {
  writer_.setMaxThreadCount(1);
  const QSettings settings(file_, QSettings::IniFormat);
  for (const QString& key : settings.allKeys()) values_.insert(key, settings.value(key));
  places_ = values_.value(kPlaces).toStringList();
}

WindowMemory::~WindowMemory() { writer_.waitForDone(); }

void WindowMemory::keep(const QString& key, const QVariant& value) {
  if (values_.value(key) == value) return;
  values_.insert(key, value);
  write(key, value);
}

WindowPreferences WindowMemory::preferences() const {
  WindowPreferences preferences;
  preferences.playsAutomatically = values_.value(kPlayAlone, false).toBool();
  preferences.tellsWhenDone = values_.value(kTellDone, true).toBool();
  preferences.tellsWhenFailed = values_.value(kTellFailed, true).toBool();
  const int closing = values_.value(kClosing).toInt();
  if (closing >= WindowPreferences::kAsk && closing <= WindowPreferences::kQuit) {
    preferences.closing = static_cast<WindowPreferences::Closing>(closing);
  }
  return preferences;
}

void WindowMemory::keepPreferences(const WindowPreferences& preferences) {
  keep(kPlayAlone, preferences.playsAutomatically);
  keep(kTellDone, preferences.tellsWhenDone);
  keep(kTellFailed, preferences.tellsWhenFailed);
  keep(kClosing, static_cast<int>(preferences.closing));
}

double WindowMemory::placeIn(const QString& film) const {
  return values_.value(keyOfPlace(film), 0).toDouble();
}

void WindowMemory::keepPlace(const QString& film, double seconds) {
  const QString key = keyOfPlace(film);
  if (placeIn(film) == seconds) return;
  keep(key, seconds);
  if (!places_.isEmpty() && places_.last() == key) return;
  places_.removeAll(key);
  places_.append(key);
  if (places_.size() > kMostPlaces) keep(places_.takeFirst(), QVariant());
  keep(kPlaces, places_);
}

void WindowMemory::write(const QString& key, const QVariant& value) {
  writer_.start([file = file_, key, value] {
    QSettings settings(file, QSettings::IniFormat);
    if (value.isValid()) {
      settings.setValue(key, value);
    } else {
      settings.remove(key);
    }
    settings.sync();
  });
}

}  // namespace playerx::window
