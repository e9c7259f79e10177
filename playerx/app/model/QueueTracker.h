#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "VeskPlayerX/QueueReaderInterface.h"
#include "playerx/app/model/Progress.h"
#include "playerx/app/model/QueueChanges.h"

namespace playerx::model {

/// Follows a queue from look to look, and asks only for items that have changed. The reader
/// outlives it. Used by one thread.
///
/// Complete films, of which a queue may have very many, need not be kept here too: the reader is
/// asked for one when it is wanted.
class QueueTracker {
 public:
  /// Of which items the states are kept.
  enum class Keep { kAll, kUnlessComplete };

  /// What happened since the last look.
  struct News {
    std::vector<ItemState> removed;  ///< as they were; id, status and size of those not kept

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
      VeskPlayerX::QueueReaderInterface& reader, Keep keep = Keep::kAll,
      Arriving isArriving = [](const ItemState&) { return false; });

  News update();

  /// Takes an item for one that waits, so that its next outcome is news even when it is the same as
  /// its last one. Nothing for an unknown id.
  void expectOutcome(unsigned int id);

  // As the last look found the queue. Items are numbered from 0 on, in its order.

  std::size_t size() const { return rows_.size(); }
  QueueProgress progress(bool isPaused) const;
  std::optional<std::size_t> placeOf(unsigned int id) const;
  std::set<unsigned int> ids() const;

  /// How many items are unfinished.
  std::size_t unfinished() const { return unfinished_; }

  /// The items whose states are kept, in order.
  const std::vector<ItemState>& kept() const { return kept_; }

  // The rest asks the reader for those that are not kept. One that was removed since the last look
  // is not there.

  std::optional<ItemState> find(unsigned int id) const;
  std::optional<ItemState> at(std::size_t place) const;

  /// The items in order.
  std::vector<ItemState> all() const;

  /// The items whose addresses may end with `end`, the part of an address from its last slash on:
  /// all that do, those with a fragment behind it, and few others.
  std::vector<ItemState> withAddressEnd(const std::string& end) const;

 private:
  using Versions = std::vector<VeskPlayerX::QueuedVersion>;

  /// What is kept of each item. Small, because each look goes through all of them.
  struct Row {
    unsigned int id = 0;
    std::uint32_t addressMark = 0;
    std::uint64_t size = 0;  ///< bytes
    std::uint64_t version = 0;
    bool isKnown = false;  ///< has been looked at
    bool isKept = true;    ///< `kept_` has its state
  };

  using Range = std::span<const VeskPlayerX::QueuedVersion>;
  using Places = std::vector<std::optional<std::size_t>>;

  void rearrange(const Versions& versions, News& news);
  void rearrange(Range versions, std::size_t first, std::size_t last, News& news);
  void rotate(std::size_t first, std::size_t last);
  bool isRotated(Range versions, std::size_t first, std::size_t last) const;
  Places placesOf(Range versions, std::size_t first, std::size_t last) const;
  std::size_t keptBefore(std::size_t place) const;

  ItemState look(const VeskPlayerX::DownloadItemInterface& item, DownloadStatusEnumType status,
                 const ItemState& before);
  bool isToKeep(const Row& row, DownloadStatusEnumType status) const;
  void note(Row& row, std::size_t place, ItemState state);
  static ItemState stateOfRow(const Row& row);
  std::optional<ItemState> ask(unsigned int id) const;
  std::vector<ItemState> statesOf(const std::function<bool(const Row&)>& isWanted) const;
  void count(const ItemState& added);
  void discount(const ItemState& dropped);

  VeskPlayerX::QueueReaderInterface& reader_;
  const Keep keep_;
  const Arriving isArriving_;
  unsigned int arriving_ = 0;  ///< id of the item that is queued and arrives; 0: no such item
  std::vector<Row> rows_;
  std::vector<ItemState> kept_;  ///< of those rows that are kept, in the same order
  std::size_t unfinished_ = 0;   ///< of all rows
  QueueProgress progress_;       ///< of all rows
};

}  // namespace playerx::model
