#include "KPX/OSUtilities.h"

#include <QStandardPaths>

#include "kvpm/PathTools.h"
#include "playerx/platform/NativePath.h"
#include "playerx/settings/Folders.h"

namespace VeskPlayerX {
namespace {

QString applicationDataPath() {
  const QString chosen = playerx::chosenApplicationDataPath();
  return chosen.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                          : chosen;
}

}  // namespace

QString OSUtilities::getApplicationDataPath() {
  const QString folder = applicationDataPath();
  // A folder that cannot be made shows when a file in it is opened.
  playerx::makePrivateFolders(folder.toStdString());
  return folder;
}

QString OSUtilities::getTempPath() {
  const QString chosen = playerx::chosenTempPath();
  return chosen.isEmpty() ? applicationDataPath() + QStringLiteral("/partial") : chosen;
}

bool OSUtilities::getFreeSpace(const QString& path, unsigned long long* bytes) {
  const std::uint64_t space = kvpm::PathTools::getSpaceAvailable(path.toStdWString());
  if (space == kvpm::PathTools::kUnknownSize) return false;
  *bytes = space;
  return true;
}

}  // namespace VeskPlayerX
