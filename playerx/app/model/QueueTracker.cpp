#include "playerx/app/model/QueueTracker.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <unordered_map>
#include <utility>

namespace playerx::model {

namespace {

using VeskPlayerX::DownloadItemInterface;
using VeskPlayerX::QueuedVersion;
using VeskPlayerX::QueueReaderInterface;

bool hasId(const ItemState& state, const QueuedVersion& version) { return state.id == version.id; }

ItemState unseen(unsigned int id) {
  ItemState state;
  state.id = id;
  return state;
}

/// Puts `elements` in the place of those in [first, last).
template <class T>
void replace(std::vector<T>& all, std::size_t first, std::size_t last, std::vector<T>& elements) {
  const auto begin = all.begin() + static_cast<std::ptrdiff_t>(first);
  const auto place = all.erase(begin, begin + static_cast<std::ptrdiff_t>(last - first));
  all.insert(place, std::make_move_iterator(elements.begin()),
             std::make_move_iterator(elements.end()));
}

}  // namespace

QueueTracker::News QueueTracker::update(QueueReaderInterface& reader) {
  News news;
  const Versions versions = reader.getVersions();
  rearrange(versions, news.removed);
  for (std::size_t i = 0; i < versions.size(); ++i) {
    const auto version = versions[i].version;
    if (seen_[i] == version && version != 0) continue;
    const std::unique_ptr<DownloadItemInterface> item(reader.getCopy(versions[i].id));
    if (item == nullptr) continue;  // removed meanwhile: the next look tells of it
    const bool isNew = !std::exchange(seen_[i], version);
    const ItemState before = std::exchange(queue_[i], stateOf(*item));
    appendChanges(news.changes, isNew ? nullptr : &before, queue_[i]);
  }
  return news;
}

void QueueTracker::expectOutcome(unsigned int id) {
  for (ItemState& state : queue_) {
    if (state.id == id) state.status = DownloadStatusQueued;
  }
}

/// Brings what is known into the order of `versions`. What stands before and behind the places that
/// differ, as a rule nearly everything, is not touched.
void QueueTracker::rearrange(const Versions& versions, std::vector<ItemState>& removed) {
  const auto [front, firstNew] =
      std::mismatch(queue_.begin(), queue_.end(), versions.begin(), versions.end(), hasId);
  const auto [back, lastNew] =
      std::mismatch(queue_.rbegin(), std::reverse_iterator(front), versions.rbegin(),
                    std::reverse_iterator(firstNew), hasId);
  const auto first = static_cast<std::size_t>(front - queue_.begin());
  const auto last = static_cast<std::size_t>(back.base() - queue_.begin());
  std::unordered_map<unsigned int, std::size_t> places;
  for (std::size_t i = first; i < last; ++i) places.emplace(queue_[i].id, i);

  std::vector<ItemState> states;
  std::vector<std::optional<unsigned long long>> seen;
  for (auto version = firstNew; version != lastNew.base(); ++version) {
    const auto known = places.extract(version->id);
    states.push_back(known ? std::move(queue_[known.mapped()]) : unseen(version->id));
    seen.push_back(known ? seen_[known.mapped()] : std::nullopt);
  }
  for (std::size_t i = first; i < last && !places.empty(); ++i) {
    if (places.erase(queue_[i].id) > 0 && seen_[i]) removed.push_back(std::move(queue_[i]));
  }
  replace(queue_, first, last, states);
  replace(seen_, first, last, seen);
}

}  // namespace playerx::model
