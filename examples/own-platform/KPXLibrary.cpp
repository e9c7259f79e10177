// Preferences and places.

#include <QDir>
#include <QStandardPaths>

#include "KPX/KPXPreferences.h"
#include "KPX/OSUtilities.h"
#include "kvpm/PathTools.h"

QSettings* KPXPreferences::userSettings = nullptr;
const QString KPXPreferences::MediaFolder = QStringLiteral("General/MediaFolder");

// The module asks for the media folder here for films with an address, and `kvpm::PathTools` for
// those of protected tickets: both have to name the same one.
const QString KPXPreferences::MediaFolder_DEFAULT =
    QString::fromStdWString(kvpm::PathTools::getVeskMoviesFolder());

// The module asks on several threads; a value that nobody can change needs no lock.
template <>
QString KPXPreferences::getPreferenceHelper<QString>(const QString&, const QString& defaultValue,
                                                     bool) {
  return defaultValue;
}

namespace VeskPlayerX {

QString OSUtilities::getApplicationDataPath() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
  QDir().mkpath(folder);
  return folder;
}

QString OSUtilities::getTempPath() { return getApplicationDataPath() + "/partial"; }

bool OSUtilities::getFreeSpace(const QString& path, unsigned long long* bytes) {
  const std::uint64_t space = kvpm::PathTools::getSpaceAvailable(path.toStdWString());
  if (space == kvpm::PathTools::kUnknownSize) return false;
  *bytes = space;
  return true;
}

}  // namespace VeskPlayerX
