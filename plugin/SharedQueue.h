#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "VeskPlayerX/QueueReaderInterface.h"
#include "download/AttachedView.h"
#include "kvpm/CritSection.h"
#include "plugin/DownloadQueue.h"
#include "plugin/EventCount.h"

namespace plugin {

/// The queue that all parts of the manager share: its items and their lock, its file, and the view
/// that is told of its changes.
///
/// Safe on all threads. The queue lock is held for a moment only, over a look-up together with what
/// is done about it, so that a removed item is never written to. Nothing foreign is called under
/// it. Item pointers that are returned belong to the queue and are gone when their item is removed.
class SharedQueue {
 public:
  using Item = DownloadQueue::Item;
  using View = download::AttachedView::View;
  using Change = std::function<void(Item&)>;

  SharedQueue() = default;
  SharedQueue(const SharedQueue&) = delete;
  SharedQueue& operator=(const SharedQueue&) = delete;

  /// Reads the queue from the application-data folder and keeps it there from now on; without a
  /// folder, in memory alone. Called once, before another thread knows of this object.
  void open(const std::wstring& folder);

  // Look-ups. Null when there is no such item.

  Item* find(unsigned int id);
  Item* findUrl(const std::wstring& url);
  Item* findTicket(const std::string& ticket);
  Item* findPath(const std::wstring& path);
  Item* at(unsigned int index);
  std::optional<ItemState> state(unsigned int id);

  unsigned int size();

  /// New copies of all items, which belong to the caller like the vector.
  std::vector<Item*>* copy();

  /// All items in order, and a new copy of one of them, which belongs to the caller.
  std::vector<VeskPlayerX::QueuedVersion> versions();
  Item* copyOf(unsigned int id);

  // Changes.

  /// Returns `use(queue)`, run under the queue lock. What it does is announced by the caller.
  template <class Use>
  auto use(Use use) {
    const kvpm::CritLock lock(lock_);
    return use(queue_);
  }

  /// Changes an item; false when it is not queued.
  bool change(unsigned int id, const Change& change);

  /// The same, and announces the item.
  bool changeAndAnnounce(unsigned int id, const Change& change);

  // Announcements. Each writes the queue file, then tells the view; without a view neither.

  void announceList();
  void announceItem(unsigned int id);

  /// The host's view, through which every notice goes.
  download::AttachedView& view() { return view_; }

  /// Raised when something has changed that the scheduler, or an operation, may wait for.
  EventCount& events() { return events_; }

 private:
  void write() KVPM_REQUIRES(lock_);

  std::wstring file_;  ///< constant once `open` has returned; empty when nothing is to be written

  // Synchronised by themselves.
  download::AttachedView view_;
  EventCount events_;

  kvpm::CritSection lock_;
  DownloadQueue queue_ KVPM_GUARDED_BY(lock_);
};

}  // namespace plugin
