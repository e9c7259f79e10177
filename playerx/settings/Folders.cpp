#include "playerx/settings/Folders.h"

#include <QDir>
#include <string>
#include <utility>

#include "playerx/platform/GuardMutex.h"

namespace playerx {
namespace {

GuardMutex foldersMutex;
// Empty for the default. Plain text, because the shared data of a QString is handed between threads
// inside the Qt library only.
std::u16string applicationData KVPM_GUARDED_BY(foldersMutex);
std::u16string temp KVPM_GUARDED_BY(foldersMutex);

std::u16string absolute(const QString& folder) {
  if (folder.isEmpty()) return {};
  QString path = QDir(folder).absolutePath();
  while (path.size() > 1 && path.endsWith('/')) path.chop(1);
  return path.toStdU16String();
}

}  // namespace

void setApplicationDataPath(const QString& folder) {
  std::u16string path = absolute(folder);
  const GuardLock lock(foldersMutex);
  applicationData = std::move(path);
}

void setTempPath(const QString& folder) {
  std::u16string path = absolute(folder);
  const GuardLock lock(foldersMutex);
  temp = std::move(path);
}

QString chosenApplicationDataPath() {
  const GuardLock lock(foldersMutex);
  return QString::fromStdU16String(applicationData);
}

QString chosenTempPath() {
  const GuardLock lock(foldersMutex);
  return QString::fromStdU16String(temp);
}

}  // namespace playerx
