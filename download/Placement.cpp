#include "download/Placement.h"

#include <QDir>
#include <limits>

#include "KPX/OSUtilities.h"
#include "download/LocalFilePlacement.h"
#include "kvpm/PathTools.h"

namespace download {

using kvpm::PathTools;

namespace {

constexpr int kWholeFile = 100;  // percent

/// Whether less than `needed` bytes are known to be free below `folder`.
bool lacksSpace(const QString& folder, std::uint64_t needed) {
  unsigned long long free = 0;
  return VeskPlayerX::OSUtilities::getFreeSpace(folder, &free) && free < needed;
}

}  // namespace

bool Placement::findPlace(const std::string& url) {
  if (item_.getPath().empty()) usePath(localFilePath(url));
  const std::wstring path = freePathLike(item_.getPath(), &PathTools::fileExists);
  if (path != item_.getPath()) usePath(path);
  const bool fresh = !PathTools::fileExists(path) && item_.getPercentDownloaded() == 0;
  return (!fresh || useMediaFolder()) && checkPresentFile();
}

/// A fresh download always goes to the media folder, and needs room there and where it arrives.
bool Placement::useMediaFolder() {
  const std::wstring path = mediaFolderPrefix() + PathTools::getFileName(item_.getPath());
  reportPath(path);
  item_.setPath(path);
  const std::uint64_t need = spaceForFreshDownload(total_);
  for (const QString& folder :
       {QDir::toNativeSeparators(mediaFolder()), VeskPlayerX::OSUtilities::getTempPath()}) {
    if (lacksSpace(folder, need)) return tooLittleSpace(folder.toStdWString());
  }
  return true;
}

bool Placement::checkPresentFile() {
  const std::wstring path = item_.getPath();
  const std::uint64_t present = PathTools::getFileSize(path);
  item_.setSize(total_);
  host_.report([&](auto& manager) { manager.updateSize(item_.getId(), total_); });
  const std::uint64_t available = PathTools::getSpaceAvailable(PathTools::getDirectory(path));
  if (missingBytes(total_, present) > available) return tooLittleSpace(path);
  if (!isComplete(total_, present)) return true;
  if (state_.reach(DownloadStatusCompleted)) complete();
  return false;
}

void Placement::complete() {
  const unsigned int id = item_.getId();
  item_.setPercentDownloaded(kWholeFile);
  host_.report([&](auto& manager) { manager.updateDownloadProgress(id, kWholeFile); });
  host_.report([&](auto& manager) { manager.updateStatus(id, DownloadStatusCompleted); });
}

bool Placement::tooLittleSpace(const std::wstring& where) {
  if (!state_.reach(DownloadStatusFailed)) return false;
  host_.view().notify([&](auto& view) { view.notEnoughSpace(where); });
  return false;
}

void Placement::usePath(const std::wstring& path) {
  item_.setPath(path);
  reportPath(path);
}

void Placement::reportPath(const std::wstring& path) {
  host_.report([&](auto& manager) { manager.updatePath(item_.getId(), path); });
}

std::wstring localFilePath(const std::string& url) {
  return freePathIn(mediaFolderPrefix(), mediaFileName(url), &PathTools::fileExists);
}

std::uint64_t spaceForFreshDownload(std::uint64_t total) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  constexpr std::uint64_t kBytesPerExtraByte = 7168;
  const std::uint64_t extra = total / kBytesPerExtraByte;
  if (total > (kMost - extra) / 2) return kMost;
  return 2 * total + extra;
}

std::uint64_t missingBytes(std::uint64_t total, std::uint64_t present) {
  if (present == PathTools::kUnknownSize) return total;
  return present < total ? total - present : 0;
}

bool isComplete(std::uint64_t total, std::uint64_t present) {
  return present != PathTools::kUnknownSize && present >= total;
}

}  // namespace download
