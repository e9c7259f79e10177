#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace plugin {

/// Finds the items of a queue by id and by address in constant time.
///
/// A host may change either of an item that it has a pointer to, so each item reports that, on
/// whatever thread, and the index is built anew before the next look-up. For the rest it is used by
/// one thread at a time. Only names items; where a key is that of several, or memory is short, it
/// leaves the answer to the order of the queue.
class QueueIndex {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;
  using Items = std::vector<std::unique_ptr<Item>>;

  /// The item, null if absent, or nullopt when only the queue itself can tell.
  using Answer = std::optional<Item*>;

  void add(Item& item) noexcept;
  void remove(const Item& item);
  void clear();

  /// Builds the index of `items` unless it is up to date.
  void update(const Items& items);

  Answer withId(unsigned int id) const;
  Answer withUrl(const std::wstring& url) const;

 private:
  /// The item of each key; null for one that several items have.
  template <class Key>
  using Map = std::unordered_map<Key, Item*>;

  bool note(Item& item) noexcept;

  Map<unsigned int> ids_;
  Map<std::size_t> urls_;  ///< by the hash of the address
  bool isComplete_ = true;
  std::atomic<bool> hasChangedKeys_{false};  ///< set by the items themselves
};

}  // namespace plugin
