#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "VeskPlayerX/DownloadStatus.h"
#include "plugin/QueueIndex.h"

namespace plugin {

/// Whether two local paths name the same file as people see it: "/" and `separator` are the same,
/// and so are capital and small letters (of the process's locale). Pure.
bool isSamePath(const std::wstring& left, const std::wstring& right, wchar_t separator);

/// What operations go by, as it was when the item was looked up.
struct ItemState {
  unsigned int id = 0;
  DownloadStatusEnumType status = DownloadStatusQueued;
  int percent = 0;
};

/// The state of an item; nullopt for null.
std::optional<ItemState> stateOf(const VeskPlayerX::DownloadItemInterface* item);

/// The ordered list of downloads: what is downloaded first stands first, completed and failed items
/// collect at the bottom.
///
/// Owns its items. Has no lock of its own. Items are named by their id; an id that is not queued
/// changes nothing and is answered with null, false or nullopt.
class DownloadQueue {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;
  using Items = std::vector<Item*>;

  DownloadQueue() = default;
  DownloadQueue(const DownloadQueue&) = delete;
  DownloadQueue& operator=(const DownloadQueue&) = delete;

  /// Replaces all items by `items`, of which the queue becomes the owner.
  void assign(const Items& items);

  /// The items in order; they stay the queue's.
  Items items() const;
  std::size_t size() const { return items_.size(); }

  Item* at(std::size_t index) const;

  // The first item with this id, exactly this address, exactly this ticket text, or this local
  // path. The first two take no longer in a long queue, unless several items have the same.

  Item* find(unsigned int id) const;
  Item* findUrl(const std::wstring& url) const;
  Item* findTicket(const std::string& ticket) const;
  Item* findPath(const std::wstring& path) const;

  /// Whether `item` must not be added: it is rights-protected and its ticket is queued already.
  bool refuses(const Item& item) const;

  /// Makes room for so many more items, so that adding them cannot fail.
  void reserve(std::size_t more);

  /// Adds an item as the last one above the completed and failed items at the bottom.
  void add(std::unique_ptr<Item> item);

  /// One place up, past anything; false at the top.
  bool moveUp(unsigned int id);

  /// One place down; false at the end and above a completed or failed item.
  bool moveDown(unsigned int id);

  /// To the very end, past everything.
  void moveToBottom(unsigned int id);

  /// Drops the first item with this id; returns whether there was one.
  bool remove(unsigned int id);

  /// Drops the items for which `dropped` holds; returns how many there were.
  std::size_t removeIf(const std::function<bool(const Item&)>& dropped);

  /// The first item that may be downloaded, a held one included.
  Item* nextForDownload() const;

  /// Pauses: the first parkable item becomes paused, each later one queued. Returns the session of
  /// the paused one when it was held: its transfer is not the worker's and has to be stopped too.
  std::optional<unsigned long long> park();

  /// Ends a pause: the paused item, and those that a stopped transfer left behind, become queued.
  void requeue();

 private:
  using Owned = QueueIndex::Items;

  Item* findIf(const std::function<bool(const Item&)>& wanted) const;
  std::size_t indexOf(unsigned int id) const;

  Owned items_;
  mutable QueueIndex index_;
};

}  // namespace plugin
