#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "VeskPlayerX/DownloadManagerViewInterface.h"
#include "VeskPlayerX/QueueReaderInterface.h"
#include "playerx/app/model/Notice.h"
#include "playerx/platform/GuardMutex.h"

namespace playerx::session {

/// The player's view of the queue: tells its listener that there is something to look at and keeps
/// the notices that explain a failure. Its operations are called on any thread.
class QueueView : public VeskPlayerX::DownloadManagerViewInterface {
 public:
  /// Asks the user for a slot for the film of this title; returns its number, below 0 to decline.
  using SlotQuestion = std::function<int(const std::string& title)>;

  /// `wake` is called at every announcement, on the announcing thread, and must not wait. So is
  /// `askSlot`, which may wait for the user.
  QueueView(std::function<void()> wake, SlotQuestion askSlot);

  void downloadListChanged() override;
  void downloadItemChanged(unsigned int id) override;
  void downloadItemsAdded() override;
  bool keepsRunningWhenFinished() override;
  int chooseSlot(const std::wstring& title, const VeskDrmDownloadAuthorization& answer) override;
  void showAuthorizationError(const VeskDrmDownloadAuthorization& answer) override;
  void notEnoughSpace(const std::wstring& path) override;
  void downloadUrlFailed(const std::wstring& url) override;
  void downloadBroken(const std::wstring& path) override;
  void refreshItem(unsigned int id) override;

  /// Sets the manager whose items are to stay stopped, and its reader. Called before the manager
  /// gets this view; both outlive its announcements.
  void attach(VeskPlayerX::DownloadManagerInterface& manager,
              VeskPlayerX::QueueReaderInterface& reader);

  /// From now on an item is stopped again as soon as the manager queues it, before it could be
  /// downloaded; until it is let go.
  void keepStopped(unsigned int id);
  void letGo(unsigned int id);
  void letAllGo();
  bool isKeptStopped(unsigned int id);
  bool isAnyKeptStopped();

  /// The notices about item `id` since the last call for it, oldest first. Any thread.
  std::vector<model::Notice> takeNotices(unsigned int id);

 private:
  void keep(model::Notice notice);
  void stopAgain();
  std::vector<unsigned int> queuedOnes();

  const std::function<void()> wake_;
  const SlotQuestion askSlot_;
  VeskPlayerX::DownloadManagerInterface* manager_ = nullptr;
  VeskPlayerX::QueueReaderInterface* reader_ = nullptr;
  GuardMutex mutex_;
  unsigned int lastItem_ KVPM_GUARDED_BY(mutex_) = 0;
  std::vector<model::Notice> notices_ KVPM_GUARDED_BY(mutex_);
  std::set<unsigned int> stopped_ KVPM_GUARDED_BY(mutex_);  ///< ids of items that stay so
};

}  // namespace playerx::session
