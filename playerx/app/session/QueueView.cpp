#include "playerx/app/session/QueueView.h"

#include <algorithm>
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

void QueueView::attach(VeskPlayerX::DownloadManagerInterface& manager,
                       VeskPlayerX::QueueReaderInterface& reader) {
  manager_ = &manager;
  reader_ = &reader;
}

void QueueView::keepStopped(unsigned int id) {
  const GuardLock lock(mutex_);
  stopped_.insert(id);
}

void QueueView::letGo(unsigned int id) {
  const GuardLock lock(mutex_);
  stopped_.erase(id);
}

void QueueView::letAllGo() {
  const GuardLock lock(mutex_);
  stopped_.clear();
}

bool QueueView::isKeptStopped(unsigned int id) {
  const GuardLock lock(mutex_);
  return stopped_.contains(id);
}

bool QueueView::isAnyKeptStopped() {
  const GuardLock lock(mutex_);
  return !stopped_.empty();
}

void QueueView::stopAgain() {
  for (const unsigned int id : queuedOnes()) {
    manager_->updateStatus(id, DownloadStatusStopped);
    // It may have been let go, and queued, since the look.
    if (!isKeptStopped(id)) manager_->updateStatus(id, DownloadStatusQueued);
  }
}

/// Those that are to stay stopped and are queued.
std::vector<unsigned int> QueueView::queuedOnes() {
  if (!isAnyKeptStopped()) return {};
  std::vector<unsigned int> ids;
  for (const VeskPlayerX::QueuedVersion& item : reader_->getVersions()) {
    const bool isOne = item.status == DownloadStatusQueued && isKeptStopped(item.id);
    if (isOne) ids.push_back(item.id);
  }
  return ids;
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
