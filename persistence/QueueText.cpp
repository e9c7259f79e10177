#include "persistence/QueueText.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "item/DownloadItem.h"
#include "persistence/QueueDocument.h"
#include "persistence/QueueElement.h"
#include "persistence/XmlText.h"

namespace persistence {
namespace {

using VeskPlayerX::DownloadItemInterface;

constexpr std::uint64_t kNoVersion = 0;

/// What tells every state of every item from all others.
std::uint64_t versionOf(const DownloadItemInterface& item) {
  // A class derived from the item could answer with fields that are not the item's.
  if (typeid(item) != typeid(DownloadItem)) return kNoVersion;
  return static_cast<const DownloadItem&>(item).version();
}

std::vector<std::size_t> textLengthsOf(const std::vector<DownloadItemInterface*>& items) {
  std::vector<std::size_t> lengths;
  for (const DownloadItemInterface* item : items) appendTextLengths(lengths, *item);
  return lengths;
}

std::uint32_t charactersOf(const DownloadItemInterface& item) {
  std::vector<std::size_t> lengths;
  appendTextLengths(lengths, item);
  std::size_t sum = 0;
  for (const std::size_t length : lengths) sum += std::min(length, kLongestXmlValue);
  return static_cast<std::uint32_t>(sum);
}

}  // namespace

/// Goes through the elements of an edit and the items that come in their place, side by side.
class QueueText::Rewriter {
 public:
  Rewriter(const QueueText& queue, Edit& edit)
      : queue_(queue), edit_(edit), next_(edit.first), characters_(queue.characters_) {}

  /// Adds the element of `item`, which stands before `following`, or null. Returns false when the
  /// texts might not fit a document.
  bool add(const DownloadItemInterface& item, const DownloadItemInterface* following) {
    if (!isNext(item) && isWritten(next_ + 1, item)) drop();
    if (isNext(item)) {
      keep();
      return true;
    }
    if (!write(item)) return false;
    const bool isInserted = following != nullptr && isNext(*following);
    if (!isInserted && next_ < end()) drop();
    return true;
  }

  void finish() {
    while (next_ < end()) drop();
  }

 private:
  std::size_t end() const { return edit_.first + edit_.count; }
  bool isNext(const DownloadItemInterface& item) const { return isWritten(next_, item); }
  bool isWritten(std::size_t index, const DownloadItemInterface& item) const {
    return index < end() && queue_.elements_[index].isOf(item);
  }

  void keep() {
    const Element& element = queue_.elements_[next_];
    edit_.text.append(queue_.text_, edit_.begin + edit_.length, element.length);
    edit_.elements.push_back(element);
    characters_ += element.characters;
    drop();
  }

  void drop() {
    const Element& element = queue_.elements_[next_++];
    edit_.length += element.length;
    characters_ -= element.characters;
  }

  bool write(const DownloadItemInterface& item) {
    const std::uint32_t characters = charactersOf(item);
    characters_ += characters;
    if (!fitsDocument(characters_)) return false;
    edit_.append(item, kLongestXmlValue, characters);
    return true;
  }

  const QueueText& queue_;
  Edit& edit_;
  std::size_t next_;          // index of the first element that is neither kept nor dropped
  std::uint64_t characters_;  // of what is written so far, and of elements not yet dropped
};

bool QueueText::Element::isOf(const DownloadItemInterface& item) const {
  return version != kNoVersion && version == versionOf(item);
}

void QueueText::Edit::append(const DownloadItemInterface& item, std::size_t limit,
                             std::uint32_t characters) {
  const std::size_t before = text.size();
  appendElement(text, item, limit);
  elements.push_back(
      {versionOf(item), static_cast<std::uint32_t>(text.size() - before), characters});
}

bool QueueText::update(const Items& items) {
  std::optional<Edit> edit;
  if (!elements_.empty() && !items.empty()) edit = editFor(items);
  return apply(edit ? *std::move(edit) : rewrite(items));
}

/// The edit between the items at both ends that are as they were; nullopt when the texts might not
/// fit a document unless they are cut.
std::optional<QueueText::Edit> QueueText::editFor(const Items& items) const {
  Edit edit;
  edit.begin = kQueueBeginning.size();
  const std::size_t shorter = std::min(items.size(), elements_.size());
  while (edit.first < shorter && elements_[edit.first].isOf(*items[edit.first])) {
    edit.begin += elements_[edit.first++].length;
  }
  std::size_t behind = 0;  // elements that stay behind the edit
  while (behind < shorter - edit.first &&
         elements_[elements_.size() - behind - 1].isOf(*items[items.size() - behind - 1])) {
    ++behind;
  }
  edit.count = elements_.size() - edit.first - behind;
  Rewriter rewriter(*this, edit);
  const std::size_t end = items.size() - behind;
  for (std::size_t i = edit.first; i < end; ++i) {
    if (!rewriter.add(*items[i], i + 1 < end ? items[i + 1] : nullptr)) return std::nullopt;
  }
  rewriter.finish();
  return edit;
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
  const std::size_t limit = longestValueFor(textLengthsOf(items));
  edit.text = kQueueBeginning;
  for (const DownloadItemInterface* item : items) edit.append(*item, limit, charactersOf(*item));
  edit.text += kQueueEnd;
  // What was cut to fit this queue may be whole in the next.
  if (limit != kLongestXmlValue) edit.elements.clear();
  return edit;
}

bool QueueText::apply(Edit edit) {
  const bool isChanged = text_.compare(edit.begin, edit.length, edit.text) != 0;
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
