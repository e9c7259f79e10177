#pragma once

#include <vector>

#include "playerx/app/model/ItemState.h"

namespace playerx::model {

/// One difference between two looks at the queue.
struct QueueChange {
  enum Kind { kAdded, kChanged, kFinished, kFailed };
  Kind kind;
  ItemState item;  ///< as it is now

  bool operator==(const QueueChange&) const = default;
};

/// Appends what happened to one item between two looks; `before` is null for an item that is seen
/// for the first time. An item that is new is added, and finished or failed as well when it already
/// is; one whose status became completed or failed is finished or failed; any other difference is a
/// change.
void appendChanges(std::vector<QueueChange>& changes, const ItemState* before,
                   const ItemState& now);

}  // namespace playerx::model
