#pragma once

#include <QSettings>
#include <QString>

/// The player's preferences, shared by the host and its plug-ins.
class KPXPreferences {
 public:
  KPXPreferences() = delete;

  /// The shared settings object; null until its first user creates it (user scope, organisation of
  /// the application, application "Settings", group = application name). The download manager
  /// deletes it, and sets it to null, when it is shut down, and once more when it is destroyed if
  /// it has been set again meanwhile. Created and deleted on the host's thread; reading a value is
  /// allowed on every thread.
  static QSettings* userSettings;

  /// "General/MediaFolder": the folder in which films are kept.
  static const QString MediaFolder;

  /// The media folder of a user who has chosen none: an absolute path with "/" separators.
  static const QString MediaFolder_DEFAULT;

  /// The value stored under `key`, converted to `T`; `defaultValue` when there is no settings
  /// object, no valid value, or an empty one. The third argument has no effect. Provided for
  /// `QString`. A value that the host has set for this process alone comes before all of these.
  template <class T>
  static T getPreferenceHelper(const QString& key, const T& defaultValue, bool unused);
};

/// The same for text, the one kind of value that the player's libraries read.
template <>
QString KPXPreferences::getPreferenceHelper<QString>(const QString& key,
                                                     const QString& defaultValue, bool unused);
