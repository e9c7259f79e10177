#include "persistence/WideText.h"

#include <cstring>
#include <memory>

#include "kvpm/Unicode.h"
#include "persistence/RFCBase64Codec.h"

namespace persistence {
namespace {

/// More than a conversion from UTF-8 ever needs.
constexpr std::size_t kCharactersPerByte = 10;

}  // namespace

std::string utf8Of(const std::wstring& text) {
  if (text.empty()) return {};
  const std::size_t capacity = text.size() * kBytesPerCharacter;
  const auto bytes = std::make_unique_for_overwrite<char[]>(capacity + 1);
  const int written = kvpm::WchartToUTF8(text.data(), text.size(), bytes.get(), capacity, false);
  return written > 0 ? std::string(bytes.get(), static_cast<std::size_t>(written)) : std::string();
}

std::wstring wideOf(std::string_view utf8) {
  const std::size_t capacity = utf8.size() * kCharactersPerByte;
  const auto characters = std::make_unique_for_overwrite<wchar_t[]>(capacity + 1);
  bool malformed = false;
  const int written =
      kvpm::UTF8ToWchart(utf8.data(), utf8.size(), characters.get(), capacity, &malformed);
  return written > 0 ? std::wstring(characters.get(), static_cast<std::size_t>(written))
                     : std::wstring();
}

std::wstring decodedText(std::string_view base64) {
  int length = 0;
  const std::unique_ptr<char[]> bytes(kv64::RFCBase64Codec().decode(std::string(base64), &length));
  if (bytes == nullptr) return {};
  std::wstring decoded(static_cast<std::size_t>(length) / sizeof(wchar_t), L'\0');
  std::memcpy(decoded.data(), bytes.get(), decoded.size() * sizeof(wchar_t));
  return decoded;
}

}  // namespace persistence
