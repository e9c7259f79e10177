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

ItemState unseen(unsigned int id) {
  ItemState state;
  state.id = id;
  return state;
}

/// Moves the first element of [first, last) to its end. `std::rotate` would swap each with the
/// next.
template <class T>
void rotate(std::vector<T>& all, std::size_t first, std::size_t last) {
  const auto begin = all.begin() + static_cast<std::ptrdiff_t>(first);
  const auto end = all.begin() + static_cast<std::ptrdiff_t>(last);
  T moved = std::move(*begin);
  *std::move(begin + 1, end, begin) = std::move(moved);
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

// One item at a time: copies of all of a long queue would take as much memory as the queue.
QueueTracker::QueueTracker(QueueReaderInterface& reader, Arriving isArriving)
    : reader_(reader), isArriving_(std::move(isArriving)) {
  const Versions versions = reader.getVersions();
  // With room for more, because a long queue that grows would be there twice for a moment.
  queue_.reserve(versions.size() + versions.size() / 8);
  seen_.reserve(versions.size());
  for (const QueuedVersion& version : versions) {
    const std::unique_ptr<DownloadItemInterface> item(reader.getCopy(version.id));
    if (item == nullptr) continue;
    queue_.push_back(stateOf(*item));
    count(queue_.back());
    seen_.push_back({version.id, version.version});
  }
}

QueueTracker::News QueueTracker::update() {
  News news;
  const Versions versions = reader_.getVersions();
  rearrange(versions, news);
  std::vector<QueueChange> others;
  for (std::size_t i = 0; i < versions.size(); ++i) {
    const auto version = versions[i].version;
    const bool mayHaveStopped = versions[i].id == arriving_;
    if (seen_[i].version == version && version != 0 && !mayHaveStopped) continue;
    const std::unique_ptr<DownloadItemInterface> item(reader_.getCopy(versions[i].id));
    if (item == nullptr) continue;  // removed meanwhile: the next look tells of it
    const bool isNew = !std::exchange(seen_[i].version, version);
    const ItemState before = std::exchange(queue_[i], look(*item, versions[i].status, queue_[i]));
    discount(before);
    count(queue_[i]);
    const bool hasEnded = !isNew && !isUnfinished(queue_[i].status);
    appendChanges(hasEnded ? news.changes : others, isNew ? nullptr : &before, queue_[i]);
  }
  news.changes.insert(news.changes.end(), std::make_move_iterator(others.begin()),
                      std::make_move_iterator(others.end()));
  return news;
}

/// The status is that of the moment at which all were looked at: the copy may be younger, and would
/// let an item that is passed over as unchanged end after the one that was begun after it.
ItemState QueueTracker::look(const DownloadItemInterface& item, DownloadStatusEnumType status,
                             const ItemState& before) {
  ItemState state = stateOf(item);
  state.status = status;
  if (state.id == arriving_) arriving_ = 0;
  const bool mayArrive =
      before.status == DownloadStatusDownloading && state.status == DownloadStatusQueued;
  if (mayArrive && isArriving_(state)) {
    state.status = DownloadStatusDownloading;
    arriving_ = state.id;
  }
  return state;
}

void QueueTracker::expectOutcome(unsigned int id) {
  for (ItemState& state : queue_) {
    if (state.id != id) continue;
    discount(state);
    state.status = DownloadStatusQueued;
    count(state);
  }
}

/// Brings what is known into the order of `versions`. What stands before and behind the places that
/// differ, as a rule nearly everything, is not touched.
void QueueTracker::rearrange(const Versions& versions, News& news) {
  const auto hasSameId = [](const Seen& seen, const QueuedVersion& version) {
    return seen.id == version.id;
  };
  const auto [front, firstNew] =
      std::mismatch(seen_.begin(), seen_.end(), versions.begin(), versions.end(), hasSameId);
  news.isRearranged = front != seen_.end() || firstNew != versions.end();
  if (!news.isRearranged) return;
  const auto [back, lastNew] =
      std::mismatch(seen_.rbegin(), std::reverse_iterator(front), versions.rbegin(),
                    std::reverse_iterator(firstNew), hasSameId);
  const auto first = static_cast<std::size_t>(front - seen_.begin());
  const auto last = static_cast<std::size_t>(back.base() - seen_.begin());
  rearrange({firstNew, lastNew.base()}, first, last, news);
}

/// Whether `versions` has what stands in [first, last), with the first one at the end, as when a
/// film is complete.
bool QueueTracker::isRotated(Range versions, std::size_t first, std::size_t last) const {
  if (versions.size() != last - first || versions.empty()) return false;
  if (versions.back().id != seen_[first].id) return false;
  const auto second = seen_.begin() + static_cast<std::ptrdiff_t>(first) + 1;
  return std::equal(versions.begin(), versions.end() - 1, second,
                    [](const auto& l, const auto& r) { return l.id == r.id; });
}

/// Brings what stands in [first, last) into the order of `versions`.
void QueueTracker::rearrange(Range versions, std::size_t first, std::size_t last, News& news) {
  if (isRotated(versions, first, last)) {
    rotate(queue_, first, last);
    return rotate(seen_, first, last);
  }
  const Places places = placesOf(versions, first, last);
  std::vector<ItemState> states;
  std::vector<Seen> seen;
  std::vector<bool> isKept(last - first);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto place = places[i];
    if (place) isKept[*place - first] = true;
    states.push_back(place ? std::move(queue_[*place]) : unseen(versions[i].id));
    if (!place) count(states.back());
    seen.push_back(place ? seen_[*place] : Seen{versions[i].id, std::nullopt});
  }
  for (std::size_t i = first; i < last; ++i) {
    if (isKept[i - first]) continue;
    discount(queue_[i]);
    if (seen_[i].version) news.removed.push_back(std::move(queue_[i]));
  }
  replace(queue_, first, last, states);
  replace(seen_, first, last, seen);
}

/// Where each of `versions` stands in [first, last); nullopt for a new one. Both are gone through
/// side by side, so that only an item that has moved is looked for, not those that it has passed.
QueueTracker::Places QueueTracker::placesOf(Range versions, std::size_t first,
                                            std::size_t last) const {
  Places places;
  std::unordered_map<unsigned int, std::size_t> others;
  const auto holds = [&](std::size_t place, unsigned int id) {
    return place < last && seen_[place].id == id;
  };
  std::size_t next = first;
  for (const auto& [id, version, status] : versions) {
    if (!holds(next, id) && holds(next + 1, id)) {
      others.emplace(seen_[next].id, next);
      ++next;
    }
    places.push_back(holds(next, id) ? std::optional(next++) : std::nullopt);
  }
  for (; next < last; ++next) others.emplace(seen_[next].id, next);
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (places[i]) continue;
    if (const auto found = others.extract(versions[i].id)) places[i] = found.mapped();
  }
  return places;
}

}  // namespace playerx::model
