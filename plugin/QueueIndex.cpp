#include "plugin/QueueIndex.h"

#include <exception>

#include "item/DownloadItem.h"

namespace plugin {
namespace {

template <class Map>
void erase(Map& map, const QueueIndex::Item& item) {
  const auto entry = map.items.find(map.keyOf(item));
  if (entry != map.items.end() && entry->second == &item) map.items.erase(entry);
}

bool hasUrl(const QueueIndex::Item& item, const std::wstring& url) {
  const DownloadItem* const own = DownloadItem::exactly(item);
  return own != nullptr ? own->url() == url : item.getUrl() == url;
}

template <class Map>
void empty(Map& map) {
  map.items.clear();
  map.isComplete = false;
}

}  // namespace

void QueueIndex::add(Item& item) noexcept {
  add(ids_, item);
  add(urls_, item);
}

void QueueIndex::remove(const Item& item) {
  erase(ids_, item);
  erase(urls_, item);
}

void QueueIndex::clear() {
  empty(ids_);
  empty(urls_);
}

std::size_t QueueIndex::hashOfUrl(const Item& item) {
  const DownloadItem* const own = DownloadItem::exactly(item);
  return own != nullptr ? own->url().hash() : ItemText::hashOf(item.getUrl());
}

QueueIndex::Answer QueueIndex::withId(const Items& items, unsigned int id) {
  return find(ids_, items, id);
}

QueueIndex::Answer QueueIndex::withUrl(const Items& items, const std::wstring& url) {
  const Answer answer = find(urls_, items, ItemText::hashOf(url));
  const bool isAnother = answer && *answer != nullptr && !hasUrl(**answer, url);
  return isAnother ? nullptr : answer;
}

/// Adds an item to a complete map, which it leaves incomplete when the item does not report its
/// changes or memory is short.
template <class Key>
void QueueIndex::add(Map<Key>& map, Item& item) noexcept {
  if (!map.isComplete) return;
  map.isComplete = false;
  auto* const reporting = dynamic_cast<DownloadItem*>(&item);
  if (reporting == nullptr) return;
  try {
    reporting->reportKeyChanges(&hasChangedKeys_);
    const auto [entry, isNew] = map.items.try_emplace(map.keyOf(item), &item);
    if (!isNew) entry->second = nullptr;
    map.isComplete = true;
  } catch (const std::exception&) {
    // The next look-up tries again.
  }
}

template <class Key>
QueueIndex::Answer QueueIndex::find(Map<Key>& map, const Items& items, Key key) {
  if (hasChangedKeys_.exchange(false)) clear();
  if (!map.isComplete) {
    empty(map);
    map.isComplete = true;
    for (auto item = items.begin(); item != items.end() && map.isComplete; ++item) add(map, **item);
  }
  if (!map.isComplete) return std::nullopt;
  const auto entry = map.items.find(key);
  if (entry == map.items.end()) return nullptr;
  return entry->second != nullptr ? Answer(entry->second) : std::nullopt;
}

}  // namespace plugin
