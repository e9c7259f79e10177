#include "playerx/app/model/QueueChanges.h"

#include <unordered_map>

namespace playerx::model {

namespace {

QueueChange::Kind kindOf(DownloadStatusEnumType status) {
  if (status == DownloadStatusCompleted) return QueueChange::kFinished;
  if (status == DownloadStatusFailed) return QueueChange::kFailed;
  return QueueChange::kChanged;
}

}  // namespace

std::vector<QueueChange> changesBetween(const std::vector<ItemState>& before,
                                        const std::vector<ItemState>& now) {
  std::unordered_map<unsigned int, const ItemState*> known;
  for (const ItemState& item : before) known.emplace(item.id, &item);

  std::vector<QueueChange> changes;
  for (const ItemState& item : now) {
    const auto earlier = known.find(item.id);
    if (earlier == known.end()) {
      changes.push_back({QueueChange::kAdded, item});
      const QueueChange::Kind outcome = kindOf(item.status);
      if (outcome != QueueChange::kChanged) changes.push_back({outcome, item});
    } else if (earlier->second->status != item.status) {
      changes.push_back({kindOf(item.status), item});
    } else if (*earlier->second != item) {
      changes.push_back({QueueChange::kChanged, item});
    }
  }
  return changes;
}

}  // namespace playerx::model
