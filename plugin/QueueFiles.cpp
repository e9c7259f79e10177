#include "plugin/QueueFiles.h"

#include "kvpm/PathTools.h"
#include "persistence/DownloadManagerPersistence.h"

using kvpm::PathTools;

QueueFiles::QueueFiles(const std::wstring& folder)
    : current_(folder + L"/downloadmanager.xml"), legacy_(folder + L"/DownloadQueue.dlq") {}

QueueFiles::Items QueueFiles::readQueue() const {
  const bool migrating = !PathTools::fileExists(current_);
  bool isKept = false;
  Items items =
      DownloadManagerPersistence::loadDownloadQueue(migrating ? legacy_ : current_, &isKept);
  // Also after a current file was set aside, or the next start would take it for a first one.
  if (!PathTools::fileExists(current_)) {
    DownloadManagerPersistence::writeDownloadQueue(current_, items);
  }
  // Writing fails silently; the earlier release's file is the only copy until it has succeeded.
  if (migrating && isKept && PathTools::fileExists(current_)) PathTools::deleteFile(legacy_);
  return items;
}
