#include "KPX/OSUtilities.h"

#include <QStandardPaths>
#include <filesystem>
#include <system_error>

#include "kvpm/PathTools.h"
#include "playerx/settings/Folders.h"

namespace VeskPlayerX {
namespace {

namespace fs = std::filesystem;

// A new folder is readable by the user alone: what is downloaded is private.
void ensureFolder(const QString& path) {
  const fs::path folder(path.toStdString());
  std::error_code failure;
  if (fs::exists(folder, failure)) return;
  if (fs::create_directories(folder, failure)) {
    fs::permissions(folder, fs::perms::owner_all, failure);
  }
}

QString applicationDataPath() {
  const QString chosen = playerx::chosenApplicationDataPath();
  return chosen.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                          : chosen;
}

}  // namespace

QString OSUtilities::getApplicationDataPath() {
  const QString folder = applicationDataPath();
  ensureFolder(folder);
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
