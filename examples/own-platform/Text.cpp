// Text on Qt Core.

#include <QStringDecoder>
#include <cstdlib>
#include <cstring>

#include "kvpm/StringTools.h"
#include "kvpm/Unicode.h"

namespace kvpm {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

std::wstring decoded(QByteArrayView bytes, bool* error) {
  QStringDecoder decoder(QStringDecoder::Utf8,
                         QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
  const QString text = decoder.decode(bytes);
  if (error != nullptr) *error = decoder.hasError();
  return text.toStdWString();
}

QByteArray encoded(std::wstring text) {
  for (wchar_t& character : text) {
    if (character > 0x10FFFF || (character >= 0xD800 && character < 0xE000)) {
      character = kReplacement;
    }
  }
  return QString::fromStdWString(text).toUtf8();
}

}  // namespace

int UTF8ToWchart(const char* source, std::size_t length, wchar_t* target, std::size_t capacity,
                 bool* error) {
  const std::wstring text = decoded({source, static_cast<qsizetype>(length)}, error);
  if (text.size() > capacity) return -1;
  std::wmemcpy(target, text.data(), text.size());
  return static_cast<int>(text.size());
}

int WchartToUTF8(const wchar_t* source, std::size_t length, char* target, std::size_t capacity,
                 bool final) {
  const QByteArray bytes = encoded(std::wstring(source, length));
  const auto size = static_cast<std::size_t>(bytes.size());
  if (size + (final ? 1 : 0) > capacity) return -1;
  std::memcpy(target, bytes.constData(), size);
  if (final) target[size] = '\0';
  return static_cast<int>(size);
}

std::wstring StringTools::stripBeginingAndEndChar(const std::wstring& text, wchar_t character) {
  const std::size_t first = text.find_first_not_of(character);
  if (first == std::wstring::npos) return {};
  return text.substr(first, text.find_last_not_of(character) - first + 1);
}

std::wstring StringTools::toLower(const std::wstring& text) {
  std::wstring lower = text;
  for (wchar_t& character : lower) {
    character = static_cast<wchar_t>(QChar::toLower(static_cast<char32_t>(character)));
  }
  return lower;
}

std::wstring StringTools::replaceString(const std::wstring& search, const std::wstring& replacement,
                                        const std::wstring& subject) {
  std::wstring result = subject;
  if (search.empty()) return result;
  for (std::size_t at = result.find(search); at != std::wstring::npos;
       at = result.find(search, at + replacement.size())) {
    result.replace(at, search.size(), replacement);
  }
  return result;
}

std::string StringTools::int32ToString(std::int32_t value) { return std::to_string(value); }
std::string StringTools::uint64ToString(std::uint64_t value) { return std::to_string(value); }

std::int32_t StringTools::stringToInt32(const std::string& text) {
  return static_cast<std::int32_t>(stringToUint64(text));
}

std::uint64_t StringTools::stringToUint64(const std::string& text) {
  return std::strtoull(text.c_str(), nullptr, 10);
}

std::string StringTools::boolToString(bool value) { return value ? "true" : "false"; }

bool StringTools::stringToBool(const std::string& text) {
  return text == "1" || QByteArray::fromStdString(text).toLower() == "true";
}

float StringTools::wstringToFloat(const std::wstring& text) {
  return QString::fromStdWString(text).trimmed().toFloat();
}

std::wstring StringTools::uStringToWstring(const std::basic_string<unsigned char>& bytes) {
  const std::string text(bytes.begin(), bytes.end());
  const std::wstring wide = decoded(text.c_str(), nullptr);  // up to the first NUL
  return wide.substr(wide.starts_with(wchar_t{0xFEFF}) ? 1 : 0);
}

std::string StringTools::wStringToString(const std::wstring& text) {
  return encoded(text).toStdString();
}

std::wstring StringTools::stringToWString(const std::string& text) {
  return decoded({text.data(), static_cast<qsizetype>(text.size())}, nullptr);
}

}  // namespace kvpm
