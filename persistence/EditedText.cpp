#include "persistence/EditedText.h"

#include <algorithm>
#include <utility>

namespace persistence {
namespace {

/// A text of fewer bytes is moved as fast as it is looked at.
constexpr std::size_t kLong = std::size_t{1} << 18U;

/// Bytes of room that are made in front of a long text at once.
constexpr std::size_t kRoom = std::size_t{1} << 16U;

}  // namespace

EditedText& EditedText::operator=(std::string text) noexcept {
  buffer_ = std::move(text);
  begin_ = 0;
  return *this;
}

void EditedText::replace(std::size_t begin, std::size_t length, std::string_view part) {
  const std::size_t behind = size() - begin - length;
  if (part.size() != length && size() >= kLong && begin < behind) {
    replaceMovingFront(begin, length, part);
  } else {
    buffer_.replace(begin_ + begin, length, part);
  }
}

void EditedText::replaceMovingFront(std::size_t begin, std::size_t length, std::string_view part) {
  if (begin_ + length < part.size()) {
    const std::size_t room = std::max(kRoom, part.size());
    buffer_.insert(0, room, ' ');
    begin_ += room;
  }
  // From here on nothing is thrown.
  const std::size_t from = begin_;
  begin_ = begin_ + length - part.size();
  char* const bytes = buffer_.data();
  std::char_traits<char>::move(bytes + begin_, bytes + from, begin);
  std::copy(part.begin(), part.end(), bytes + begin_ + begin);
  // Much room is of more use behind the text.
  if (begin_ > std::max(size(), kRoom * 2)) {
    buffer_.erase(0, begin_);
    begin_ = 0;
  }
}

}  // namespace persistence
