#pragma once

#include <QSettings>

namespace playerx {

/// The shared settings object (`KPXPreferences::userSettings`), created on first use: user scope,
/// organisation of the application, application "Settings", group named as the application. On the
/// host's thread only. The reference holds until the object is deleted, which the download manager
/// does when it is destroyed.
QSettings& ensureUserSettings();

}  // namespace playerx
