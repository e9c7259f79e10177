#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "VeskPlayerX/QueueReaderInterface.h"
#include "playerx/app/model/QueueChanges.h"

namespace playerx::model {

/// Follows a queue from look to look, and asks only for items that have changed. The reader
/// outlives it. Used by one thread.
class QueueTracker {
 public:
  /// What happened since the last look.
  struct News {
    std::vector<ItemState> removed;  ///< as they were

    /// In the present queue's order, but for the known items that are worked on no longer: those
    /// come first, because one transfer ends before the next one begins. A new place is no change.
    std::vector<QueueChange> changes;

    bool isRearranged = false;  ///< the queue holds other items, or the same in another order
  };

  /// Whether the film of an item is arriving, whatever the item's status says.
  using Arriving = std::function<bool(const ItemState& item)>;

  /// Follows a queue from now on: what it holds already is no news. An item whose transfer goes on
  /// while the manager calls it queued, as it does when the queue resumes, stays "downloading".
  explicit QueueTracker(
      VeskPlayerX::QueueReaderInterface& reader,
      Arriving isArriving = [](const ItemState&) { return false; });

  News update();

  /// Takes an item for one that waits, so that its next outcome is news even when it is the same as
  /// its last one. Nothing for an unknown id.
  void expectOutcome(unsigned int id);

  /// As the last look found it.
  const std::vector<ItemState>& queue() const { return queue_; }

  /// How many of them are unfinished.
  std::size_t unfinished() const { return unfinished_; }

 private:
  using Versions = std::vector<VeskPlayerX::QueuedVersion>;

  struct Seen {
    unsigned int id;
    std::optional<unsigned long long> version;  ///< nullopt: none yet
  };

  using Range = std::span<const VeskPlayerX::QueuedVersion>;
  using Places = std::vector<std::optional<std::size_t>>;

  void rearrange(const Versions& versions, News& news);
  void rearrange(Range versions, std::size_t first, std::size_t last, News& news);
  bool isRotated(Range versions, std::size_t first, std::size_t last) const;
  Places placesOf(Range versions, std::size_t first, std::size_t last) const;

  ItemState look(const VeskPlayerX::DownloadItemInterface& item, DownloadStatusEnumType status,
                 const ItemState& before);
  void count(const ItemState& added) { unfinished_ += isUnfinished(added.status) ? 1 : 0; }
  void discount(const ItemState& dropped) { unfinished_ -= isUnfinished(dropped.status) ? 1 : 0; }

  VeskPlayerX::QueueReaderInterface& reader_;
  const Arriving isArriving_;
  unsigned int arriving_ = 0;  ///< id of the item that is queued and arrives; 0: no such item
  std::vector<ItemState> queue_;
  std::size_t unfinished_ = 0;  ///< of `queue_`

  /// The version of each that `queue_` holds. A vector of its own because each look goes through
  /// all of it.
  std::vector<Seen> seen_;
};

}  // namespace playerx::model
