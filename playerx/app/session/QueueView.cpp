#include "playerx/app/session/QueueView.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "kvpm/StringTools.h"

namespace playerx::session {

using kvpm::StringTools;
using model::Notice;

QueueView::QueueView(std::function<void()> wake, SlotQuestion askSlot)
    : wake_(std::move(wake)), askSlot_(std::move(askSlot)) {}

void QueueView::downloadListChanged() {
  stopAgain();
  wake_();
}

void QueueView::downloadItemChanged(unsigned int id) {
  {
    const GuardLock lock(mutex_);
    lastItem_ = id;
  }
  wake_();
}

void QueueView::downloadItemsAdded() { wake_(); }

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

void QueueView::refreshItem(unsigned int) { wake_(); }

void QueueView::keepStopped(std::set<unsigned int> ids,
                            VeskPlayerX::DownloadManagerInterface& manager,
                            VeskPlayerX::QueueReaderInterface& reader) {
  const GuardLock lock(mutex_);
  stopped_ = {std::move(ids), &manager, &reader};
}

void QueueView::stopAgain() {
  Stopped stopped;
  {
    const GuardLock lock(mutex_);
    stopped = stopped_;
  }
  for (const unsigned int id : stopped.ids) {
    const std::unique_ptr<VeskPlayerX::DownloadItemInterface> item(stopped.reader->getCopy(id));
    const bool isQueued = item && item->getStatus() == DownloadStatusQueued;
    if (isQueued) stopped.manager->updateStatus(id, DownloadStatusStopped);
  }
}

std::vector<Notice> QueueView::takeNotices(unsigned int id) {
  const GuardLock lock(mutex_);
  const auto others = std::stable_partition(
      notices_.begin(), notices_.end(), [id](const Notice& notice) { return notice.itemId == id; });
  std::vector<Notice> taken(notices_.begin(), others);
  notices_.erase(notices_.begin(), others);
  return taken;
}

void QueueView::keep(Notice notice) {
  const GuardLock lock(mutex_);
  notice.itemId = lastItem_;
  notices_.push_back(std::move(notice));
}

}  // namespace playerx::session
