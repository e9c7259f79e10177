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

  /// From now on these items are stopped again as soon as the manager queues one of them, before it
  /// could be downloaded. Manager and reader outlive the view's announcements.
  void keepStopped(std::set<unsigned int> ids, VeskPlayerX::DownloadManagerInterface& manager,
                   VeskPlayerX::QueueReaderInterface& reader);

  /// The notices about item `id` since the last call for it, oldest first. Any thread.
  std::vector<model::Notice> takeNotices(unsigned int id);

 private:
  /// Items that are to stay stopped.
  struct Stopped {
    std::set<unsigned int> ids;
    VeskPlayerX::DownloadManagerInterface* manager = nullptr;
    VeskPlayerX::QueueReaderInterface* reader = nullptr;
  };

  void keep(model::Notice notice);
  void stopAgain();

  const std::function<void()> wake_;
  const SlotQuestion askSlot_;
  GuardMutex mutex_;
  unsigned int lastItem_ KVPM_GUARDED_BY(mutex_) = 0;
  std::vector<model::Notice> notices_ KVPM_GUARDED_BY(mutex_);
  Stopped stopped_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace playerx::session
