#include "playerx/app/model/QueueTracker.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "kvpm/StringTools.h"

namespace playerx::model {

namespace {

using VeskPlayerX::DownloadItemInterface;
using VeskPlayerX::QueuedVersion;
using VeskPlayerX::QueueReaderInterface;

constexpr std::uint32_t kAnyEnd = 0;

/// One number for the same end of an address; two ends may share one.
std::uint32_t markOf(std::string_view end) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>()(end)) | 1U;
}

/// The mark of the last part of an address, or `kAnyEnd`.
std::uint32_t addressMarkOf(std::string_view address) {
  if (address.find('#') != std::string_view::npos) return kAnyEnd;
  return markOf(address.substr(std::min(address.rfind('/'), address.size())));
}

ItemState unseen(unsigned int id) {
  ItemState state;
  state.id = id;
  return state;
}

/// What is needed of an item whose state is not kept.
ItemState outlineOf(const DownloadItemInterface& item) {
  ItemState state;
  state.id = item.getId();
  state.url = kvpm::StringTools::wStringToString(item.getUrl());
  state.status = item.getStatus();
  state.size = item.getSize();
  return state;
}

template <class T>
auto placeIn(std::vector<T>& all, std::size_t place) {
  return all.begin() + static_cast<std::ptrdiff_t>(place);
}

/// Moves the first element of [first, last) to its end. `std::rotate` would swap each with the
/// next.
template <class T>
void rotateOne(std::vector<T>& all, std::size_t first, std::size_t last) {
  const auto begin = placeIn(all, first);
  const auto end = placeIn(all, last);
  T moved = std::move(*begin);
  *std::move(begin + 1, end, begin) = std::move(moved);
}

/// Puts `elements` in the place of those in [first, last).
template <class T>
void replace(std::vector<T>& all, std::size_t first, std::size_t last, std::vector<T>& elements) {
  const auto place = all.erase(placeIn(all, first), placeIn(all, last));
  all.insert(place, std::make_move_iterator(elements.begin()),
             std::make_move_iterator(elements.end()));
}

}  // namespace

// One item at a time: copies of all of a long queue would take as much memory as the queue.
QueueTracker::QueueTracker(QueueReaderInterface& reader, Keep keep, Arriving isArriving)
    : reader_(reader), keep_(keep), isArriving_(std::move(isArriving)) {
  const Versions versions = reader.getVersions();
  rows_.reserve(versions.size());
  for (const QueuedVersion& version : versions) {
    const std::unique_ptr<DownloadItemInterface> item(reader.getCopy(version.id));
    if (item == nullptr) continue;
    rows_.push_back(
        {.id = version.id, .version = version.version, .isKnown = true, .isKept = false});
    ItemState state = isToKeep(rows_.back(), version.status) ? stateOf(*item) : outlineOf(*item);
    count(state);
    note(rows_.back(), kept_.size(), std::move(state));
  }
}

QueueTracker::News QueueTracker::update() {
  News news;
  const Versions versions = reader_.getVersions();
  rearrange(versions, news);
  std::vector<QueueChange> others;
  std::size_t next = 0;  // place in `kept_`
  for (std::size_t i = 0; i < versions.size(); ++i) {
    Row& row = rows_[i];
    const std::size_t place = next;
    if (row.isKept) ++next;
    const auto version = versions[i].version;
    const bool mayHaveStopped = row.id == arriving_;
    if (row.isKnown && row.version == version && version != 0 && !mayHaveStopped) continue;
    const std::unique_ptr<DownloadItemInterface> item(reader_.getCopy(row.id));
    if (item == nullptr) continue;  // removed meanwhile: the next look tells of it
    row.version = version;
    const bool isNew = !std::exchange(row.isKnown, true);
    const ItemState before = row.isKept ? std::move(kept_[place]) : stateOfRow(row);
    ItemState now = look(*item, versions[i].status, before);
    discount(before);
    count(now);
    const bool hasEnded = !isNew && !isUnfinished(now.status);
    appendChanges(hasEnded ? news.changes : others, isNew ? nullptr : &before, now);
    note(row, place, std::move(now));
    next = place + (row.isKept ? 1 : 0);
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

/// What has no version is compared with its state at each look.
bool QueueTracker::isToKeep(const Row& row, DownloadStatusEnumType status) const {
  return keep_ == Keep::kAll || row.version == 0 || status != DownloadStatusCompleted;
}

/// Notes the present state of a row, at this place of `kept_` if it is kept.
void QueueTracker::note(Row& row, std::size_t place, ItemState state) {
  const bool wasKept = std::exchange(row.isKept, isToKeep(row, state.status));
  row.size = state.size;
  row.addressMark = addressMarkOf(state.url);
  if (wasKept && row.isKept) {
    kept_[place] = std::move(state);
  } else if (row.isKept) {
    kept_.insert(placeIn(kept_, place), std::move(state));
  } else if (wasKept) {
    kept_.erase(placeIn(kept_, place));
  }
}

ItemState QueueTracker::stateOfRow(const Row& row) {
  ItemState state;
  state.id = row.id;
  state.status = DownloadStatusCompleted;
  state.size = row.size;
  return state;
}

void QueueTracker::count(const ItemState& added) {
  unfinished_ += isUnfinished(added.status) ? 1 : 0;
  progress_.add(added);
}

void QueueTracker::discount(const ItemState& dropped) {
  unfinished_ -= isUnfinished(dropped.status) ? 1 : 0;
  progress_.remove(dropped);
}

void QueueTracker::expectOutcome(unsigned int id) {
  for (ItemState& state : kept_) {
    if (state.id != id) continue;
    discount(state);
    state.status = DownloadStatusQueued;
    count(state);
  }
}

QueueProgress QueueTracker::progress(bool isPaused) const {
  QueueProgress progress = progress_;
  progress.isPaused = isPaused;
  return progress;
}

std::optional<std::size_t> QueueTracker::placeOf(unsigned int id) const {
  const auto row =
      std::find_if(rows_.begin(), rows_.end(), [id](const Row& each) { return each.id == id; });
  if (row == rows_.end()) return std::nullopt;
  return static_cast<std::size_t>(row - rows_.begin());
}

std::set<unsigned int> QueueTracker::ids() const {
  std::set<unsigned int> ids;
  for (const Row& row : rows_) ids.insert(row.id);
  return ids;
}

std::optional<ItemState> QueueTracker::find(unsigned int id) const {
  const auto place = placeOf(id);
  return place ? at(*place) : std::nullopt;
}

std::optional<ItemState> QueueTracker::at(std::size_t place) const {
  if (place >= rows_.size()) return std::nullopt;
  if (rows_[place].isKept) return kept_[keptBefore(place)];
  return ask(rows_[place].id);
}

std::optional<ItemState> QueueTracker::ask(unsigned int id) const {
  const std::unique_ptr<DownloadItemInterface> item(reader_.getCopy(id));
  return item != nullptr ? std::optional(stateOf(*item)) : std::nullopt;
}

std::vector<ItemState> QueueTracker::all() const {
  return statesOf([](const Row&) { return true; });
}

std::vector<ItemState> QueueTracker::withAddressEnd(const std::string& end) const {
  return statesOf([mark = markOf(end)](const Row& row) {
    return row.addressMark == kAnyEnd || row.addressMark == mark;
  });
}

std::vector<ItemState> QueueTracker::statesOf(
    const std::function<bool(const Row&)>& isWanted) const {
  std::vector<ItemState> states;
  std::size_t next = 0;  // place in `kept_`
  for (const Row& row : rows_) {
    const std::size_t place = next;
    if (row.isKept) ++next;
    if (!isWanted(row)) continue;
    if (auto state = row.isKept ? std::optional(kept_[place]) : ask(row.id)) {
      states.push_back(*std::move(state));
    }
  }
  return states;
}

std::size_t QueueTracker::keptBefore(std::size_t place) const {
  const auto end = rows_.begin() + static_cast<std::ptrdiff_t>(place);
  return static_cast<std::size_t>(
      std::count_if(rows_.begin(), end, [](const Row& row) { return row.isKept; }));
}

/// Brings what is known into the order of `versions`. What stands before and behind the places that
/// differ, as a rule nearly everything, is not touched.
void QueueTracker::rearrange(const Versions& versions, News& news) {
  const auto hasSameId = [](const Row& row, const QueuedVersion& version) {
    return row.id == version.id;
  };
  const auto [front, firstNew] =
      std::mismatch(rows_.begin(), rows_.end(), versions.begin(), versions.end(), hasSameId);
  news.isRearranged = front != rows_.end() || firstNew != versions.end();
  if (!news.isRearranged) return;
  const auto [back, lastNew] =
      std::mismatch(rows_.rbegin(), std::reverse_iterator(front), versions.rbegin(),
                    std::reverse_iterator(firstNew), hasSameId);
  const auto first = static_cast<std::size_t>(front - rows_.begin());
  const auto last = static_cast<std::size_t>(back.base() - rows_.begin());
  rearrange({firstNew, lastNew.base()}, first, last, news);
}

/// Whether `versions` has what stands in [first, last), with the first one at the end, as when a
/// film is complete.
bool QueueTracker::isRotated(Range versions, std::size_t first, std::size_t last) const {
  if (versions.size() != last - first || versions.empty()) return false;
  if (versions.back().id != rows_[first].id) return false;
  const auto second = rows_.begin() + static_cast<std::ptrdiff_t>(first) + 1;
  return std::equal(versions.begin(), versions.end() - 1, second,
                    [](const auto& l, const auto& r) { return l.id == r.id; });
}

/// Moves the first item of [first, last) to its end.
void QueueTracker::rotate(std::size_t first, std::size_t last) {
  if (rows_[first].isKept) rotateOne(kept_, keptBefore(first), keptBefore(last));
  rotateOne(rows_, first, last);
}

/// Brings what stands in [first, last) into the order of `versions`.
void QueueTracker::rearrange(Range versions, std::size_t first, std::size_t last, News& news) {
  if (isRotated(versions, first, last)) return rotate(first, last);
  const Places places = placesOf(versions, first, last);
  const std::size_t firstKept = keptBefore(first);
  std::size_t lastKept = firstKept;
  std::vector<ItemState*> states(last - first);  // null: not kept
  for (std::size_t i = first; i < last; ++i) {
    if (rows_[i].isKept) states[i - first] = &kept_[lastKept++];
  }
  std::vector<Row> rows;
  std::vector<ItemState> kept;
  std::vector<bool> isStillThere(last - first);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto place = places[i];
    if (!place) {
      rows.push_back({.id = versions[i].id});
      kept.push_back(unseen(versions[i].id));
      count(kept.back());
      continue;
    }
    isStillThere[*place - first] = true;
    rows.push_back(rows_[*place]);
    if (ItemState* const state = states[*place - first]) kept.push_back(std::move(*state));
  }
  for (std::size_t i = first; i < last; ++i) {
    if (isStillThere[i - first]) continue;
    ItemState* const state = states[i - first];
    ItemState gone = state != nullptr ? std::move(*state) : stateOfRow(rows_[i]);
    discount(gone);
    if (rows_[i].isKnown) news.removed.push_back(std::move(gone));
  }
  replace(rows_, first, last, rows);
  replace(kept_, firstKept, lastKept, kept);
}

/// Where each of `versions` stands in [first, last); nullopt for a new one. Both are gone through
/// side by side, so that only an item that has moved is looked for, not those that it has passed.
QueueTracker::Places QueueTracker::placesOf(Range versions, std::size_t first,
                                            std::size_t last) const {
  Places places;
  std::unordered_map<unsigned int, std::size_t> others;
  const auto holds = [&](std::size_t place, unsigned int id) {
    return place < last && rows_[place].id == id;
  };
  std::size_t next = first;
  for (const auto& [id, status, version] : versions) {
    if (!holds(next, id) && holds(next + 1, id)) {
      others.emplace(rows_[next].id, next);
      ++next;
    }
    places.push_back(holds(next, id) ? std::optional(next++) : std::nullopt);
  }
  for (; next < last; ++next) others.emplace(rows_[next].id, next);
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (places[i]) continue;
    if (const auto found = others.extract(versions[i].id)) places[i] = found.mapped();
  }
  return places;
}

}  // namespace playerx::model
