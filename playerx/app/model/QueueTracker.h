#pragma once

#include <vector>

#include "playerx/app/model/QueueChanges.h"

namespace playerx::model {

/// Follows a queue from look to look. Most items of a long queue stay as they are, so only those
/// that differ are made anew. Used by one thread.
class QueueTracker {
 public:
  /// What happened since the last look.
  struct News {
    std::vector<ItemState> removed;  ///< as they were

    /// In the present queue's order. A new place is no change.
    std::vector<QueueChange> changes;
  };

  /// Looks at the queue. May be called on any thread that may call the manager.
  News update(VeskPlayerX::DownloadManagerInterface& manager);

  /// Takes an item for one that waits, so that its next outcome is news even when it is the same as
  /// its last one. Nothing for an unknown id.
  void expectOutcome(unsigned int id);

  /// As the last look found it.
  const std::vector<ItemState>& queue() const { return queue_; }

 private:
  using Items = std::vector<VeskPlayerX::DownloadItemInterface*>;

  std::vector<unsigned int> rearrange(const Items& items, std::vector<ItemState>& removed);

  std::vector<ItemState> queue_;
};

}  // namespace playerx::model
