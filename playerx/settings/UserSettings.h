#pragma once

#include <QSettings>

namespace playerx {

/// The shared settings object (`KPXPreferences::userSettings`), created when there is
/// none yet: user scope, organisation of the application, application "Settings", group named as
/// the application. On the host's thread only. The reference holds until somebody deletes the
/// object; the download manager does when it is destroyed.
QSettings& ensureUserSettings();

}  // namespace playerx
