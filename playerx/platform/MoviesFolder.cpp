#include "playerx/platform/MoviesFolder.h"

#include <QStandardPaths>
#include <mutex>

#include "kvpm/PathTools.h"

namespace playerx {
namespace {

std::mutex mutex;
std::wstring chosen;  // guarded by mutex; empty for the default

std::wstring withoutSeparatorsAtTheEnd(const std::wstring& folder) {
  return folder.substr(0, folder.find_last_not_of(kvpm::PathTools::getWPathSeparator()) + 1);
}

}  // namespace

void setMoviesFolder(const std::wstring& folder) {
  const std::lock_guard lock(mutex);
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
    const std::lock_guard lock(playerx::mutex);
    if (!playerx::chosen.empty()) return playerx::chosen;
  }
  return playerx::defaultMoviesFolder();
}

}  // namespace kvpm
