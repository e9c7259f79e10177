#pragma once

#include <QString>

namespace playerx {

/// The folders that `VeskPlayerX::OSUtilities` answers with. All operations may be called from any
/// thread.

/// Sets the folder of the player's own data, made absolute; separators at its end are dropped. An
/// empty text brings the default back: the organisation's and application's names below
/// $XDG_DATA_HOME.
void setApplicationDataPath(const QString& folder);

/// Sets the folder for files that are still arriving, likewise. Its default is "partial" in the
/// folder of the player's own data.
void setTempPath(const QString& folder);

/// The folders that were set; empty for the default.
QString chosenApplicationDataPath();
QString chosenTempPath();

}  // namespace playerx
