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
  const bool migrating = !fileExists(current_);
  bool isKept = false;
  Items items =
      DownloadManagerPersistence::loadDownloadQueue(migrating ? legacy_ : current_, &isKept);
  // Also after a current file was set aside, or the next start would take it for a first one.
  if (!fileExists(current_)) {
    DownloadManagerPersistence::writeDownloadQueue(current_, items);
  }
  // Writing fails silently; the earlier release's file is the only copy until it has succeeded.
  if (migrating && isKept && fileExists(current_)) PathTools::deleteFile(legacy_);
  return items;
}

}  // namespace plugin
