#pragma once

#include <string>

#include "VeskPlayerX/VeskDrm.h"

namespace VeskPlayerX {

/// The host's view of the download queue: receives announcements and answers questions.
///
/// Called on the host's thread, the manager's own and threads of the download library, with no lock
/// of the queue held by the announcements. A view must not wait, inside a call, for a thread that
/// may itself be inside the download manager. It may call the manager's operations from there; on a
/// thread that the host is waiting for they give way, see `DownloadManagerInterface`. The order of
/// the virtual operations is part of the interface.
class DownloadManagerViewInterface {
 public:
  DownloadManagerViewInterface() = default;
  DownloadManagerViewInterface(const DownloadManagerViewInterface&) = delete;
  DownloadManagerViewInterface& operator=(const DownloadManagerViewInterface&) = delete;
  virtual ~DownloadManagerViewInterface() = default;

  /// The list has changed: items, their order, or many of their fields.
  virtual void downloadListChanged() = 0;

  /// Fields of the item `id` have changed.
  virtual void downloadItemChanged(unsigned int id) = 0;

  /// New items were added at the user's request.
  virtual void downloadItemsAdded() = 0;

  /// Whether the player keeps running when all downloads are finished. Asking changes nothing.
  virtual bool keepsRunningWhenFinished() = 0;

  /// Has the user choose a slot for the item titled `title`; returns its number, below 0 when the
  /// user declines. May block for the user; a view that is to be closed answers with a decline,
  /// since the manager's shutdown waits for the answer. An answer that comes after its download was
  /// stopped has no effect, and the question may be asked again on another thread before it comes.
  virtual int chooseSlot(const std::wstring& title, const VeskDrmDownloadAuthorization& answer) = 0;

  /// The online services refused a download.
  virtual void showAuthorizationError(const VeskDrmDownloadAuthorization& answer) = 0;

  /// There is too little space at `path`, a folder or a file.
  virtual void notEnoughSpace(const std::wstring& path) = 0;

  /// No session could be started for `url`.
  virtual void downloadUrlFailed(const std::wstring& url) = 0;

  /// The transfer into `path` broke.
  virtual void downloadBroken(const std::wstring& path) = 0;

  /// The item `id` should be drawn anew.
  virtual void refreshItem(unsigned int id) = 0;
};

}  // namespace VeskPlayerX
