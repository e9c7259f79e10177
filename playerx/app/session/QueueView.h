#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "VeskPlayerX/DownloadManagerViewInterface.h"

namespace playerx {

class WakeUp;

/// What the module told the view about the item that is being downloaded.
struct Notice {
  enum Kind { kNoSpace, kUrlFailed, kBroken, kNotAuthorized, kSlotDeclined };
  Kind kind;
  std::string text;         ///< the path, the address or the services' words, UTF-8
  int code = 0;             ///< the services' error code
  unsigned int itemId = 0;  ///< the item that was announced last, the one that is being worked on

  bool operator==(const Notice&) const = default;
};

/// The command line's view of the queue: wakes the main thread at every announcement and keeps the
/// notices that explain a failure. Its operations are called on any thread; it asks the module
/// nothing.
class QueueView : public VeskPlayerX::DownloadManagerViewInterface {
 public:
  /// Asks the user for a slot; returns its number, below 0 to decline.
  using SlotQuestion = std::function<int(const std::string& title)>;

  /// `wakeUp` is not owned and outlives the view.
  QueueView(WakeUp& wakeUp, SlotQuestion askSlot);

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
  std::vector<Notice> takeNotices(unsigned int id);

 private:
  void keep(Notice notice);

  WakeUp& wakeUp_;
  const SlotQuestion askSlot_;
  std::mutex mutex_;
  unsigned int lastItem_ = 0;    // guarded by mutex_
  std::vector<Notice> notices_;  // guarded by mutex_
};

}  // namespace playerx
