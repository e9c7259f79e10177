#include "plugin/DownloadQueue.h"

#include <algorithm>
#include <cwctype>
#include <iterator>
#include <utility>

#include "kvpm/PathTools.h"
#include "plugin/StatusGroups.h"

namespace plugin {

bool isSamePath(const std::wstring& left, const std::wstring& right, wchar_t separator) {
  const auto fold = [separator](wchar_t character) {
    return std::towlower(static_cast<std::wint_t>(character == L'/' ? separator : character));
  };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [fold](wchar_t l, wchar_t r) { return fold(l) == fold(r); });
}

std::optional<ItemState> stateOf(const VeskPlayerX::DownloadItemInterface* item) {
  if (item == nullptr) return std::nullopt;
  return ItemState{item->getId(), item->getStatus(), item->getPercentDownloaded()};
}

void DownloadQueue::assign(const Items& items) {
  Owned owned;
  for (Item* const item : items) owned.emplace_back(item);
  items_ = std::move(owned);
  index_.clear();
}

DownloadQueue::Items DownloadQueue::items() const {
  Items items;
  items.reserve(items_.size());
  for (const auto& item : items_) items.push_back(item.get());
  return items;
}

DownloadQueue::Item* DownloadQueue::at(std::size_t index) const {
  return index < items_.size() ? items_[index].get() : nullptr;
}

DownloadQueue::Item* DownloadQueue::find(unsigned int id) const {
  const QueueIndex::Answer answer = index_.withId(items_, id);
  return answer ? *answer : findIf([id](const Item& item) { return item.getId() == id; });
}

DownloadQueue::Item* DownloadQueue::findUrl(const std::wstring& url) const {
  const QueueIndex::Answer answer = index_.withUrl(items_, url);
  return answer ? *answer : findIf([&url](const Item& item) { return item.getUrl() == url; });
}

DownloadQueue::Item* DownloadQueue::findTicket(const std::string& ticket) const {
  return findIf([&ticket](const Item& item) { return item.getTicket() == ticket; });
}

DownloadQueue::Item* DownloadQueue::findPath(const std::wstring& path) const {
  static const wchar_t separator = kvpm::PathTools::getWPathSeparator()[0];
  return findIf([&](const Item& item) { return isSamePath(item.getPath(), path, separator); });
}

bool DownloadQueue::refuses(const Item& item) const {
  return item.getEncrypted() && findTicket(item.getTicket()) != nullptr;
}

void DownloadQueue::reserve(std::size_t more) { items_.reserve(items_.size() + more); }

void DownloadQueue::add(std::unique_ptr<Item> item) {
  const auto settled = [](const auto& other) { return isAtBottom(other->getStatus()); };
  const auto bottom = std::find_if_not(items_.rbegin(), items_.rend(), settled).base();
  index_.add(**items_.insert(bottom, std::move(item)));
}

bool DownloadQueue::moveUp(unsigned int id) {
  const std::size_t index = indexOf(id);
  if (index == 0 || index == items_.size()) return false;
  std::swap(items_[index], items_[index - 1]);
  return true;
}

bool DownloadQueue::moveDown(unsigned int id) {
  const std::size_t below = indexOf(id) + 1;
  if (below >= items_.size() || isAtBottom(items_[below]->getStatus())) return false;
  std::swap(items_[below], items_[below - 1]);
  return true;
}

void DownloadQueue::moveToBottom(unsigned int id) {
  const std::size_t index = indexOf(id);
  if (index == items_.size()) return;
  const auto item = items_.begin() + static_cast<std::ptrdiff_t>(index);
  std::rotate(item, std::next(item), items_.end());
}

bool DownloadQueue::remove(unsigned int id) {
  const std::size_t index = indexOf(id);
  if (index == items_.size()) return false;
  index_.remove(*items_[index]);
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index));
  return true;
}

std::size_t DownloadQueue::removeIf(const std::function<bool(const Item&)>& dropped) {
  return std::erase_if(items_, [this, &dropped](const auto& item) {
    const bool isDropped = dropped(*item);
    if (isDropped) index_.remove(*item);
    return isDropped;
  });
}

DownloadQueue::Item* DownloadQueue::nextForDownload() const {
  return findIf([](const Item& item) { return isCandidate(item.getStatus()); });
}

std::optional<unsigned long long> DownloadQueue::park() {
  std::optional<unsigned long long> heldSession;
  DownloadStatusEnumType parked = DownloadStatusPaused;
  for (const auto& item : items_) {
    if (!isParkable(item->getStatus())) continue;
    const bool first = parked == DownloadStatusPaused;
    if (first && item->getStatus() == DownloadStatusHeld) heldSession = item->getUID();
    item->setStatus(std::exchange(parked, DownloadStatusQueued));
  }
  return heldSession;
}

void DownloadQueue::requeue() {
  for (const auto& item : items_) {
    if (isResumable(item->getStatus())) item->setStatus(DownloadStatusQueued);
  }
}

DownloadQueue::Item* DownloadQueue::findIf(const std::function<bool(const Item&)>& wanted) const {
  const auto found = std::find_if(items_.begin(), items_.end(),
                                  [&wanted](const auto& item) { return wanted(*item); });
  return found == items_.end() ? nullptr : found->get();
}

std::size_t DownloadQueue::indexOf(unsigned int id) const {
  const Item* const wanted = find(id);
  if (wanted == nullptr) return items_.size();
  const auto found = std::find_if(items_.begin(), items_.end(),
                                  [wanted](const auto& item) { return item.get() == wanted; });
  return static_cast<std::size_t>(found - items_.begin());
}

}  // namespace plugin
