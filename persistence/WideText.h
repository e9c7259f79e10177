#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Wide text as the queue files hold it. All functions may be called from any thread and throw
/// `std::bad_alloc` alone.
namespace persistence {

/// More than a conversion to UTF-8 ever needs.
constexpr std::size_t kBytesPerCharacter = 10;

/// Empty where the text cannot be converted.
std::string utf8Of(const std::wstring& text);

/// Empty where the text cannot be converted.
std::wstring wideOf(std::string_view utf8);

/// Text as an earlier release wrote it: base64 of its 32-bit characters. An incomplete last
/// character is dropped. Empty for a text that the codec rejects.
std::wstring decodedText(std::string_view base64);

}  // namespace persistence
