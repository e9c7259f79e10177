// The conversions of text between items and files.
#include <cstring>
#include <memory>

#include "kvpm/Unicode.h"
#include "persistence/DownloadManagerPersistence.h"
#include "persistence/RFCBase64Codec.h"

namespace {

/// Room for more than UTF-8 can need per wide character, or the other way round.
constexpr std::size_t kBytesPerCharacter = 10;
constexpr std::size_t kCharactersPerByte = 10;

}  // namespace

unsigned char* DownloadManagerPersistence::wstringToUtf8(const std::wstring& text) {
  const std::size_t capacity = text.size() * kBytesPerCharacter;
  auto bytes = std::make_unique_for_overwrite<unsigned char[]>(capacity + 1);
  const int written =
      text.empty() ? 0
                   : kvpm::WchartToUTF8(text.data(), text.size(),
                                        reinterpret_cast<char*>(bytes.get()), capacity, false);
  bytes[written > 0 ? static_cast<std::size_t>(written) : 0] = '\0';
  return bytes.release();
}

std::wstring DownloadManagerPersistence::utf8ToWstring(const unsigned char* text) {
  if (text == nullptr) return {};
  const auto* const bytes = reinterpret_cast<const char*>(text);
  const std::size_t length = std::strlen(bytes);
  const std::size_t capacity = length * kCharactersPerByte;
  const auto characters = std::make_unique_for_overwrite<wchar_t[]>(capacity + 1);
  bool malformed = false;
  const int written = kvpm::UTF8ToWchart(bytes, length, characters.get(), capacity, &malformed);
  return written > 0 ? std::wstring(characters.get(), static_cast<std::size_t>(written))
                     : std::wstring();
}

std::wstring DownloadManagerPersistence::encodedStringToWstring(const char* text) {
  if (text == nullptr) return {};
  int length = 0;
  const std::unique_ptr<char[]> bytes(kv64::RFCBase64Codec().decode(text, &length));
  if (bytes == nullptr) return {};
  std::wstring decoded(static_cast<std::size_t>(length) / sizeof(wchar_t), L'\0');
  std::memcpy(decoded.data(), bytes.get(), decoded.size() * sizeof(wchar_t));
  return decoded;
}
