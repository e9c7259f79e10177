#include "persistence/QueueText.h"

#include <algorithm>
#include <utility>

#include "item/DownloadItem.h"
#include "persistence/QueueDocument.h"
#include "persistence/QueueElement.h"
#include "persistence/XmlText.h"

namespace persistence {
namespace {

using VeskPlayerX::DownloadItemInterface;

constexpr std::uint64_t kNoVersion = 0;

/// So many elements in a row that stay as they are end an edit; fewer are copied.
constexpr std::size_t kLongestRun = 64;

/// Each edit may move all the text behind it. The last one takes everything that is left.
constexpr int kMostEdits = 8;

/// How many items ahead memory is prefetched: they lie far apart in it.
constexpr std::size_t kPrefetchDistance = 16;

/// Bytes of an element beside its texts, with some to spare for a text that grows.
constexpr std::size_t kMarkup = 320;

std::uint32_t charactersOf(const DownloadItemInterface& item) {
  return static_cast<std::uint32_t>(persistence::charactersOf(item, kLongestXmlValue));
}

std::uint64_t charactersOf(const QueueText::Items& items, std::size_t limit) {
  std::uint64_t sum = 0;
  for (const DownloadItemInterface* item : items) sum += persistence::charactersOf(*item, limit);
  return sum;
}

}  // namespace

// Inline because every save asks it of each item of the queue.
inline bool QueueText::Element::isOf(const DownloadItemInterface& item) const {
  return version != kNoVersion && version == DownloadItem::versionOf(item);
}

/// Writes one edit: goes through the elements and the items that come in their place side by side,
/// until they are the same for a while.
class QueueText::EditWriter {
 public:
  /// Begins at the element `first`, which stands at `begin`. A run of `longestRun` elements that
  /// stay as they are ends the edit.
  EditWriter(const QueueText& queue, std::size_t first, std::size_t begin, std::size_t longestRun)
      : queue_(queue), longestRun_(longestRun), characters_(queue.characters_) {
    edit_.first = first;
    edit_.begin = begin;
  }

  /// Takes the next item, which stands before `following`, or null. Returns false when the texts
  /// might not fit a document.
  bool take(const DownloadItemInterface& item, const DownloadItemInterface* following) {
    if (!isNext(item) && isWritten(next() + 1, item)) drop();
    if (isNext(item)) {
      ++run_;
      return true;
    }
    if (!write(item)) return false;
    const bool isInserted = following != nullptr && isNext(*following);
    if (!isInserted && next() < queue_.elements_.size()) drop();
    return true;
  }

  bool isDone() const { return run_ == longestRun_; }

  /// Ends the edit. When the items have run out, the remaining elements are dropped.
  Edit finish() {
    while (!isDone() && next() < queue_.elements_.size()) drop();
    return std::move(edit_);
  }

 private:
  std::size_t next() const { return edit_.first + edit_.count + run_; }
  bool isNext(const DownloadItemInterface& item) const { return isWritten(next(), item); }
  bool isWritten(std::size_t index, const DownloadItemInterface& item) const {
    return index < queue_.elements_.size() && queue_.elements_[index].isOf(item);
  }

  void drop() {
    keepRun();
    const Element& element = queue_.elements_[edit_.first + edit_.count++];
    edit_.length += element.length;
    characters_ -= element.characters;
  }

  bool write(const DownloadItemInterface& item) {
    const std::uint32_t characters = charactersOf(item);
    characters_ += characters;
    if (!fitsDocument(characters_)) return false;
    keepRun();
    edit_.append(item, kLongestXmlValue, characters);
    return true;
  }

  /// Makes the run, behind which something changes, a part of the edit.
  void keepRun() {
    for (; run_ > 0; --run_) {
      const Element& element = queue_.elements_[edit_.first + edit_.count++];
      edit_.text += queue_.text().substr(edit_.begin + edit_.length, element.length);
      edit_.length += element.length;
      edit_.elements.push_back(element);
    }
  }

  const QueueText& queue_;
  const std::size_t longestRun_;
  Edit edit_;
  std::size_t run_ = 0;       // elements behind the edit that stay as they are
  std::uint64_t characters_;  // of all elements, those not yet dropped included
};

void QueueText::Edit::append(const DownloadItemInterface& item, std::size_t limit,
                             std::uint32_t characters) {
  const std::size_t before = text.size();
  appendElement(text, item, limit);
  elements.push_back({DownloadItem::versionOf(item),
                      static_cast<std::uint32_t>(text.size() - before), characters});
}

bool QueueText::update(const Items& items) {
  change_ = {};
  std::optional<bool> isChanged;
  if (!elements_.empty() && !items.empty()) isChanged = updateElements(items);
  if (isChanged) return *isChanged;
  const bool isEdited = change_.end != 0;  // before it was given up
  return apply(rewrite(items)) || isEdited;
}

/// Edits what has changed. Returns nullopt when the texts might not fit a document unless they are
/// cut; some of the changes are missing then.
std::optional<bool> QueueText::updateElements(const Items& items) {
  bool isChanged = false;
  std::size_t begin = kQueueBeginning.size();
  std::size_t at = 0;
  for (int edits = 1; at < items.size() || at < elements_.size(); ++edits) {
    for (; at < items.size() && at < elements_.size() && elements_[at].isOf(*items[at]); ++at) {
      begin += elements_[at].length;
      __builtin_prefetch(items[std::min(at + kPrefetchDistance, items.size() - 1)]);
    }
    EditWriter writer(*this, at, begin, edits < kMostEdits ? kLongestRun : items.size());
    while (at < items.size() && !writer.isDone()) {
      const DownloadItemInterface& item = *items[at++];
      if (!writer.take(item, at < items.size() ? items[at] : nullptr)) return std::nullopt;
    }
    Edit edit = writer.finish();
    at = edit.first + edit.elements.size();
    begin += edit.text.size();
    if (apply(std::move(edit))) isChanged = true;
  }
  return isChanged;
}

/// The edit that writes everything anew.
QueueText::Edit QueueText::rewrite(const Items& items) const {
  Edit edit;
  edit.count = elements_.size();
  edit.length = text_.size();
  if (items.empty()) {
    edit.text = kEmptyQueueDocument;
    return edit;
  }
  std::uint64_t characters = 0;
  const std::size_t limit = longestValueFor(
      [&](std::size_t longest) { return characters = charactersOf(items, longest); });
  edit.text.reserve(characters + items.size() * kMarkup);
  edit.elements.reserve(items.size());
  edit.text = kQueueBeginning;
  for (const DownloadItemInterface* item : items) edit.append(*item, limit, charactersOf(*item));
  edit.text += kQueueEnd;
  // What was cut to fit this queue may be whole in the next.
  if (limit != kLongestXmlValue) edit.elements.clear();
  return edit;
}

bool QueueText::apply(Edit edit) {
  const bool isChanged = text().substr(edit.begin, edit.length) != edit.text;
  if (isChanged) {
    // Edits come in the order of their places.
    const std::size_t begin = change_.end == 0 ? edit.begin : std::min(change_.begin, edit.begin);
    change_ = {begin, edit.begin + edit.text.size()};
  }
  elements_.reserve(elements_.size() - edit.count + edit.elements.size());
  if (edit.length == text_.size()) {
    text_ = std::move(edit.text);
  } else if (isChanged) {
    text_.replace(edit.begin, edit.length, edit.text);
  }
  // From here on nothing is thrown.
  const std::size_t common = std::min(edit.count, edit.elements.size());
  const auto first = elements_.begin() + static_cast<std::ptrdiff_t>(edit.first);
  const auto last = first + static_cast<std::ptrdiff_t>(edit.count);
  for (auto old = first; old != last; ++old) characters_ -= old->characters;
  for (const Element& element : edit.elements) characters_ += element.characters;
  auto at = std::copy_n(edit.elements.begin(), common, first);
  at = elements_.erase(at, last);
  elements_.insert(at, edit.elements.begin() + static_cast<std::ptrdiff_t>(common),
                   edit.elements.end());
  return isChanged;
}

}  // namespace persistence
