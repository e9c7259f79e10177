#include "playerx/app/model/QueueChanges.h"

namespace playerx::model {

namespace {

QueueChange::Kind kindOf(DownloadStatusEnumType status) {
  if (status == DownloadStatusCompleted) return QueueChange::kFinished;
  if (status == DownloadStatusFailed) return QueueChange::kFailed;
  return QueueChange::kChanged;
}

}  // namespace

void appendChanges(std::vector<QueueChange>& changes, const ItemState* before,
                   const ItemState& now) {
  if (before == nullptr) {
    changes.push_back({QueueChange::kAdded, now});
    const QueueChange::Kind outcome = kindOf(now.status);
    if (outcome != QueueChange::kChanged) changes.push_back({outcome, now});
  } else if (before->status != now.status) {
    changes.push_back({kindOf(now.status), now});
  } else if (*before != now) {
    changes.push_back({QueueChange::kChanged, now});
  }
}

}  // namespace playerx::model
