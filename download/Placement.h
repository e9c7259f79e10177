#pragma once

#include <cstdint>
#include <string>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "download/Host.h"
#include "download/RunState.h"

namespace download {

/// Finds the place for an item's file, with enough space for it.
///
/// Made for one run and used on its thread; the item, the host and the state outlive it. Paths and
/// sizes are set on the item and reported to the manager, too little space to the view.
class Placement {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;

  /// `total`: bytes of the whole file, above 0.
  Placement(Item& item, std::uint64_t total, Host& host, RunState& state)
      : item_(item), total_(total), host_(host), state_(state) {}

  /// Chooses a path, named after `url` when the item has no path yet. False when the run has ended:
  /// for too little space, or because the file is there already, whole.
  bool findPlace(const std::string& url);

 private:
  bool useMediaFolder();
  bool checkPresentFile();
  void complete();
  bool tooLittleSpace(const std::wstring& where);
  void usePath(const std::wstring& path);
  void reportPath(const std::wstring& path);

  Item& item_;
  const std::uint64_t total_;
  Host& host_;
  RunState& state_;
};

/// The full local path for the film behind `url`: a free name in the media folder.
std::wstring localFilePath(const std::string& url);

/// Bytes that must be free for a fresh download of `total` bytes: the file twice, and a little for
/// every 7168 bytes of it. All bits set when the number does not fit.
std::uint64_t spaceForFreshDownload(std::uint64_t total);

/// Bytes still to come when `present` of `total` are there. A file whose size cannot be learnt
/// counts as empty.
std::uint64_t missingBytes(std::uint64_t total, std::uint64_t present);

/// Whether a file of `present` bytes holds all of `total`; never for a size that cannot be learnt.
bool isComplete(std::uint64_t total, std::uint64_t present);

}  // namespace download
