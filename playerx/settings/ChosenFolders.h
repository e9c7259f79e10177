#pragma once

#include <QString>

namespace playerx {

/// The folders set up by `playerx/settings/Folders.h`; empty where none was. May be called from
/// any thread.
QString chosenApplicationDataPath();
QString chosenTempPath();

}  // namespace playerx
