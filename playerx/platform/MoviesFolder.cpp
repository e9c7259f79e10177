#include "playerx/platform/MoviesFolder.h"

#include <QStandardPaths>

#include "kvpm/PathTools.h"
#include "playerx/platform/GuardMutex.h"

namespace playerx {
namespace {

GuardMutex mutex;
std::wstring chosen KVPM_GUARDED_BY(mutex);  // empty for the default

std::wstring withoutSeparatorsAtTheEnd(const std::wstring& folder) {
  return folder.substr(0, folder.find_last_not_of(kvpm::PathTools::getWPathSeparator()) + 1);
}

}  // namespace

void setMoviesFolder(const std::wstring& folder) {
  const GuardLock lock(mutex);
  chosen = withoutSeparatorsAtTheEnd(folder);
}

std::wstring defaultMoviesFolder() {
  const QString videos = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
  return withoutSeparatorsAtTheEnd(videos.toStdWString()) + L"/Vesk";
}

}  // namespace playerx

namespace kvpm {

std::wstring PathTools::getVeskMoviesFolder() {
  {
    const playerx::GuardLock lock(playerx::mutex);
    if (!playerx::chosen.empty()) return playerx::chosen;
  }
  return playerx::defaultMoviesFolder();
}

}  // namespace kvpm
