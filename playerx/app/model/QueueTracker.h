#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "VeskPlayerX/QueueReaderInterface.h"
#include "playerx/app/model/QueueChanges.h"

namespace playerx::model {

/// Follows a queue from look to look, and asks for those items only that have changed. Used by one
/// thread.
class QueueTracker {
 public:
  /// What happened since the last look.
  struct News {
    std::vector<ItemState> removed;  ///< as they were

    /// In the present queue's order. A new place is no change.
    std::vector<QueueChange> changes;
  };

  News update(VeskPlayerX::QueueReaderInterface& reader);

  /// Takes an item for one that waits, so that its next outcome is news even when it is the same as
  /// its last one. Nothing for an unknown id.
  void expectOutcome(unsigned int id);

  /// As the last look found it.
  const std::vector<ItemState>& queue() const { return queue_; }

 private:
  using Versions = std::vector<VeskPlayerX::QueuedVersion>;

  void rearrange(const Versions& versions, std::vector<ItemState>& removed);

  std::vector<ItemState> queue_;
  std::vector<std::optional<unsigned long long>> seen_;  ///< the version of each; nullopt: none yet
};

}  // namespace playerx::model
