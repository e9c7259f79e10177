#include "playerx/app/model/QueueTracker.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace playerx::model {

namespace {

using VeskPlayerX::DownloadItemInterface;

bool hasId(const ItemState& state, const DownloadItemInterface* item) {
  return state.id == item->getId();
}

}  // namespace

QueueTracker::News QueueTracker::update(VeskPlayerX::DownloadManagerInterface& manager) {
  const QueueCopy items = copyOf(manager);
  News news;
  const std::vector<unsigned int> added = rearrange(*items, news.removed);
  auto nextAdded = added.begin();
  for (std::size_t i = 0; i < queue_.size(); ++i) {
    if (nextAdded != added.end() && *nextAdded == queue_[i].id) {
      ++nextAdded;
      appendChanges(news.changes, nullptr, queue_[i]);
    } else if (!isStateOf(queue_[i], *(*items)[i])) {
      const ItemState before = std::exchange(queue_[i], stateOf(*(*items)[i]));
      appendChanges(news.changes, &before, queue_[i]);
    }
  }
  return news;
}

void QueueTracker::expectOutcome(unsigned int id) {
  for (ItemState& state : queue_) {
    if (state.id == id) state.status = DownloadStatusQueued;
  }
}

/// Brings the known states into the order of `items`, and in the place of those that are new puts
/// their state. Returns the ids of these, in order. Whatever stands before and behind the changed
/// places, as a rule nearly everything, is not touched.
std::vector<unsigned int> QueueTracker::rearrange(const Items& items,
                                                  std::vector<ItemState>& removed) {
  const auto front = std::mismatch(queue_.begin(), queue_.end(), items.begin(), items.end(), hasId);
  const auto back = std::mismatch(queue_.rbegin(), std::reverse_iterator(front.first),
                                  items.rbegin(), std::reverse_iterator(front.second), hasId);
  std::unordered_map<unsigned int, ItemState*> known;
  for (auto state = front.first; state != back.first.base(); ++state) {
    known.emplace(state->id, &*state);
  }
  std::vector<unsigned int> added;
  std::vector<ItemState> arranged;
  arranged.reserve(static_cast<std::size_t>(back.second.base() - front.second));
  for (auto item = front.second; item != back.second.base(); ++item) {
    const auto state = known.find((*item)->getId());
    if (state == known.end()) added.push_back((*item)->getId());
    arranged.push_back(state == known.end() ? stateOf(**item) : std::move(*state->second));
    if (state != known.end()) known.erase(state);
  }
  for (auto state = front.first; state != back.first.base(); ++state) {
    const auto left = known.find(state->id);
    if (left != known.end() && left->second == &*state) removed.push_back(std::move(*state));
  }
  const auto place = queue_.erase(front.first, back.first.base());
  queue_.insert(place, std::make_move_iterator(arranged.begin()),
                std::make_move_iterator(arranged.end()));
  return added;
}

}  // namespace playerx::model
