#include "plugin/TransferControl.h"

#include <optional>

#include "plugin/StatusGroups.h"

namespace plugin {

void TransferControl::pause() {
  if (!lock_.enter()) return;
  const OperationGuard guard(lock_);
  paused_ = true;
  cancel();
  const auto heldSession = queue_.use([](DownloadQueue& queue) { return queue.park(); });
  if (heldSession) worker_.stopDownload(*heldSession);
  queue_.announceList();
}

void TransferControl::resume() {
  if (!lock_.enter()) return;
  const OperationGuard guard(lock_);
  endPause();
  queue_.announceList();
}

void TransferControl::endPause() {
  queue_.use([this](DownloadQueue& queue) {
    queue.requeue();
    paused_ = false;
  });
  queue_.events().raise();
}

void TransferControl::cancel() {
  if (!lock_.enter()) return;
  const OperationGuard guard(lock_);
  const auto session = queue_.use([](DownloadQueue& queue) -> std::optional<unsigned long long> {
    const SharedQueue::Item* const head = queue.at(0);
    if (head == nullptr || !isActive(head->getStatus())) return std::nullopt;
    return head->getUID();
  });
  if (session) worker_.stopDownload(*session);
  const OperationLock::WaitForBackground wait(lock_);
  worker_.stop();
}

bool TransferControl::setStatus(unsigned int id, DownloadStatusEnumType status) {
  bool isRevived = false;
  const bool found = queue_.change(id, [&](SharedQueue::Item& item) {
    isRevived = item.getStatus() == DownloadStatusFailed && status != DownloadStatusFailed;
    item.setStatus(status);
  });
  if (isRevived && isRunning(id)) superseded_ = true;
  return found;
}

void TransferControl::prepare(unsigned int id) {
  runId_ = id;
  superseded_ = false;
  worker_.prepare();
}

DownloadStatusEnumType TransferControl::run(VeskPlayerX::DownloadItemInterface* item) {
  return worker_.downloadVideo(item);
}

bool TransferControl::finish() {
  runId_ = 0;
  return !superseded_;
}

TransferControl::HeadChange::HeadChange(TransferControl& control, bool isNeeded)
    : control_(control), active_(isNeeded && !control.isPaused()) {
  if (active_) control_.changingHead_ = true;
}

TransferControl::HeadChange::~HeadChange() {
  if (active_) control_.changingHead_ = false;
}

TransferControl::ResumeAtEnd::~ResumeAtEnd() {
  if (!resumed_ && control_.paused_) control_.endPause();
}

void TransferControl::ResumeAtEnd::resume() {
  resumed_ = true;
  control_.resume();
}

}  // namespace plugin
