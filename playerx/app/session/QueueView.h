#pragma once

#include <functional>
#include <string>
#include <vector>

#include "VeskPlayerX/DownloadManagerViewInterface.h"
#include "playerx/app/model/Notice.h"
#include "playerx/platform/GuardMutex.h"

namespace playerx::session {

/// The player's view of the queue: tells its listener that there is something to look at and keeps
/// the notices that explain a failure. Its operations are called on any thread; it never calls the
/// download manager.
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

  /// The notices about item `id` since the last call for it, oldest first. Any thread.
  std::vector<model::Notice> takeNotices(unsigned int id);

 private:
  void keep(model::Notice notice);

  const std::function<void()> wake_;
  const SlotQuestion askSlot_;
  GuardMutex mutex_;
  unsigned int lastItem_ KVPM_GUARDED_BY(mutex_) = 0;
  std::vector<model::Notice> notices_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace playerx::session
