#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace plugin {

/// Finds the items of a queue by id and by address in constant time.
///
/// Each of the two maps is built at its first look-up. A host may change the id or the address of
/// an item that it has a pointer to, so each item reports that, on whatever thread, and the index
/// is built anew before the next look-up. For the rest it is used by one thread at a time. Only
/// names items; where a key is that of several, or memory is short, it leaves the answer to the
/// order of the queue.
class QueueIndex {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;
  using Items = std::vector<std::unique_ptr<Item>>;

  /// The item, null if absent, or nullopt when only the queue itself can tell.
  using Answer = std::optional<Item*>;

  void add(Item& item) noexcept;
  void remove(const Item& item);
  void clear();

  // `items` are those of the queue.

  Answer withId(const Items& items, unsigned int id);
  Answer withUrl(const Items& items, const std::wstring& url);

 private:
  /// The items by one key.
  template <class Key>
  struct Map {
    Key (*keyOf)(const Item& item);
    std::unordered_map<Key, Item*> items{};  ///< null for a key that several items have
    bool isComplete = false;
  };

  template <class Key>
  void add(Map<Key>& map, Item& item) noexcept;
  template <class Key>
  Answer find(Map<Key>& map, const Items& items, Key key);

  Map<unsigned int> ids_{[](const Item& item) { return item.getId(); }};
  Map<std::size_t> urls_{hashOfUrl};
  std::atomic<bool> hasChangedKeys_{false};  ///< set by the items themselves

  static std::size_t hashOfUrl(const Item& item);
};

}  // namespace plugin
