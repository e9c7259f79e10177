#include "plugin/QueueIndex.h"

#include <exception>
#include <functional>

#include "item/DownloadItem.h"

namespace plugin {
namespace {

std::size_t hashOf(const std::wstring& url) { return std::hash<std::wstring>()(url); }

template <class Map, class Key>
void insert(Map& map, Key key, QueueIndex::Item& item) {
  const auto [entry, isNew] = map.try_emplace(key, &item);
  if (!isNew) entry->second = nullptr;
}

template <class Map, class Key>
void erase(Map& map, Key key, const QueueIndex::Item& item) {
  const auto entry = map.find(key);
  if (entry != map.end() && entry->second == &item) map.erase(entry);
}

template <class Map, class Key>
QueueIndex::Answer find(const Map& map, Key key) {
  const auto entry = map.find(key);
  if (entry == map.end()) return nullptr;
  return entry->second != nullptr ? QueueIndex::Answer(entry->second) : std::nullopt;
}

}  // namespace

void QueueIndex::add(Item& item) noexcept {
  if (!note(item)) isComplete_ = false;
}

void QueueIndex::remove(const Item& item) {
  erase(ids_, item.getId(), item);
  erase(urls_, hashOf(item.getUrl()), item);
}

void QueueIndex::clear() {
  ids_.clear();
  urls_.clear();
  isComplete_ = true;
}

void QueueIndex::update(const Items& items) {
  if (!hasChangedKeys_.exchange(false) && isComplete_) return;
  clear();
  for (const auto& item : items) {
    if (!note(*item)) {
      isComplete_ = false;
      return;
    }
  }
}

QueueIndex::Answer QueueIndex::withId(unsigned int id) const {
  return isComplete_ ? find(ids_, id) : std::nullopt;
}

QueueIndex::Answer QueueIndex::withUrl(const std::wstring& url) const {
  const Answer answer = isComplete_ ? find(urls_, hashOf(url)) : std::nullopt;
  const bool isAnother = answer && *answer != nullptr && (*answer)->getUrl() != url;
  return isAnother ? nullptr : answer;
}

/// False for an item that does not report its changes, or when memory is short.
bool QueueIndex::note(Item& item) noexcept {
  auto* const reporting = dynamic_cast<DownloadItem*>(&item);
  if (reporting == nullptr) return false;
  try {
    reporting->reportKeyChanges(&hasChangedKeys_);
    insert(ids_, item.getId(), item);
    insert(urls_, hashOf(item.getUrl()), item);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace plugin
