#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace persistence {

/// A text of which parts are replaced again and again. What stands behind a part has another place
/// when the part becomes longer or shorter; in a long text what stands before it is moved instead
/// where that is less, so that a change near either end costs little. Used by one thread at a time.
class EditedText {
 public:
  EditedText() = default;

  // A string that is taken over is not copied. It may have room for more at its end.
  EditedText& operator=(std::string text) noexcept;

  /// Valid until the next change.
  std::string_view view() const { return std::string_view(buffer_).substr(begin_); }
  std::size_t size() const { return buffer_.size() - begin_; }

  /// Puts `part`, which is not of this text, in the place of the bytes [begin, begin + length).
  /// When `std::bad_alloc` is thrown, nothing has changed.
  void replace(std::size_t begin, std::size_t length, std::string_view part);

 private:
  void replaceMovingFront(std::size_t begin, std::size_t length, std::string_view part);

  std::string buffer_;     // room, then the text
  std::size_t begin_ = 0;  // of the text
};

}  // namespace persistence
