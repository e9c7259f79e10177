#include "plugin/QueueFiles.h"

#include <cerrno>

#include "kvpm/File.h"
#include "kvpm/PathTools.h"
#include "persistence/DownloadManagerPersistence.h"

namespace plugin {

using kvpm::PathTools;

namespace {

/// A link that leads nowhere is there, yet no file is.
bool fileExists(const std::wstring& path) {
  kvpm::File file;
  return PathTools::fileExists(path) && file.open(path, kvpm::FileOpenRead) != ENOENT;
}

}  // namespace

QueueFiles::QueueFiles(const std::wstring& folder)
    : current_(folder + L"/downloadmanager.xml"), legacy_(folder + L"/DownloadQueue.dlq") {}

QueueFiles::Items QueueFiles::readQueue() const {
  if (!fileExists(current_)) {
    return DownloadManagerPersistence::migrateDownloadQueue(legacy_, current_);
  }
  return DownloadManagerPersistence::readDownloadQueue(current_);
}

}  // namespace plugin
