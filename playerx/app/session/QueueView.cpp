#include "playerx/app/session/QueueView.h"

#include <algorithm>
#include <utility>

#include "kvpm/StringTools.h"
#include "playerx/cli/WakeUp.h"

namespace playerx {

using kvpm::StringTools;

QueueView::QueueView(WakeUp& wakeUp, SlotQuestion askSlot)
    : wakeUp_(wakeUp), askSlot_(std::move(askSlot)) {}

void QueueView::downloadListChanged() { wakeUp_.raise(); }

void QueueView::downloadItemChanged(unsigned int id) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    lastItem_ = id;
  }
  wakeUp_.raise();
}

void QueueView::downloadItemsAdded() { wakeUp_.raise(); }

bool QueueView::keepsRunningWhenFinished() { return false; }

int QueueView::chooseSlot(const std::wstring& title, const VeskDrmDownloadAuthorization&) {
  const int slot = askSlot_(StringTools::wStringToString(title));
  if (slot < 0) keep({Notice::kSlotDeclined, ""});
  return slot;
}

void QueueView::showAuthorizationError(const VeskDrmDownloadAuthorization& answer) {
  keep({Notice::kNotAuthorized, StringTools::wStringToString(answer.errorDetails),
        answer.errorCode});
}

void QueueView::notEnoughSpace(const std::wstring& path) {
  keep({Notice::kNoSpace, StringTools::wStringToString(path)});
}

void QueueView::downloadUrlFailed(const std::wstring& url) {
  keep({Notice::kUrlFailed, StringTools::wStringToString(url)});
}

void QueueView::downloadBroken(const std::wstring& path) {
  keep({Notice::kBroken, StringTools::wStringToString(path)});
}

void QueueView::refreshItem(unsigned int) { wakeUp_.raise(); }

std::vector<Notice> QueueView::takeNotices(unsigned int id) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto others = std::stable_partition(
      notices_.begin(), notices_.end(), [id](const Notice& notice) { return notice.itemId == id; });
  std::vector<Notice> taken(notices_.begin(), others);
  notices_.erase(notices_.begin(), others);
  return taken;
}

void QueueView::keep(Notice notice) {
  const std::lock_guard<std::mutex> lock(mutex_);
  notice.itemId = lastItem_;
  notices_.push_back(std::move(notice));
}

}  // namespace playerx
