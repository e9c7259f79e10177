#pragma once

#include <cstdint>
#include <string_view>

namespace persistence {

/// Watches over the bytes of a document on their way to the XML library.
///
/// The library compares every attribute of an element with every other, so an element of a hundred
/// thousand would keep it busy for minutes. Everything that could be an attribute is counted, even
/// in comments and character data: where the library sees the end of a malformed one is unknown
/// here.
class XmlGuard {
 public:
  /// Takes the next bytes. False when the library must not read them, because those so far would
  /// take it too long.
  bool take(std::string_view bytes);

 private:
  enum class Place { kOutside, kInTag, kBehindSign, kInValue };

  void takeTag(std::string_view text);
  std::size_t step(std::string_view text, std::size_t at);

  Place place_ = Place::kOutside;
  char quote_ = '"';               // of the value
  std::uint64_t attributes_ = 0;   // of the tag
  std::uint64_t comparisons_ = 0;  // of all tags
};

}  // namespace persistence
