#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// Text as an XML document can hold it. All functions are pure and may be called from any thread.
namespace persistence {

/// Bytes of text that one attribute may hold, as the XML library counts them when it builds a tree
/// without options: UTF-8, except that it keeps an "&" as five bytes. It refuses a document with
/// more than 10,000,000.
inline constexpr std::size_t kLongestXmlValue = 9'000'000;

/// Whether texts of so many characters together, none above `kLongestXmlValue`, stay within what
/// the XML library can count, whatever they hold.
bool fitsDocument(std::uint64_t characters);

/// The `limit` for `carriedByXml` with which texts together stay within what the XML library can
/// count: `kLongestXmlValue` for any queue of reasonable size, less for an enormous one.
/// `charactersWithin(limit)` is the sum of their lengths, each counted up to `limit`.
std::size_t longestValueFor(
    const std::function<std::uint64_t(std::size_t limit)>& charactersWithin);

/// `text` as XML can carry it: every character that it cannot is replaced with U+FFFD, and the text
/// is truncated, between characters, to `limit` bytes (counted as above).
std::wstring carriedByXml(const std::wstring& text, std::size_t limit = kLongestXmlValue);

/// The same for bytes. Valid UTF-8 of characters that XML can carry stays as it is, byte for byte;
/// every other byte is replaced with U+FFFD.
std::string carriedByXml(const std::string& bytes, std::size_t limit = kLongestXmlValue);

/// Appends text that XML can carry as a value in double quotes, with the escapes that the XML
/// library's own serializer writes.
void appendEscaped(std::string& document, std::string_view text);

}  // namespace persistence
