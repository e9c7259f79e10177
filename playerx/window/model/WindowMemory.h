#pragma once

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <QThreadPool>
#include <QVariant>

#include "playerx/window/model/WindowPreferences.h"

namespace playerx::window {

/// What the window remembers from one run to the next. Read once, when it is made; written by a
/// thread of its own, so that the UI thread never waits for the disk. Used on the UI thread.
class WindowMemory {
 public:
  /// `file` is an INI file, which need not exist.
  explicit WindowMemory(const QString& file);
  WindowMemory(const WindowMemory&) = delete;
  WindowMemory& operator=(const WindowMemory&) = delete;

  /// Writes what has not been written.
  ~WindowMemory();

  QVariant value(const QString& key) const { return values_.value(key); }
  void keep(const QString& key, const QVariant& value);

  WindowPreferences preferences() const;
  void keepPreferences(const WindowPreferences& preferences);

  /// Where a film was left, in seconds; 0 for its beginning. `film` is its address or path.
  double placeIn(const QString& film) const;
  void keepPlace(const QString& film, double seconds);

 private:
  void write(const QString& key, const QVariant& value);

  const QString file_;
  QVariantMap values_;
  QStringList places_;  // keys of the places, the oldest first
  QThreadPool writer_;  // one thread
};

}  // namespace playerx::window
