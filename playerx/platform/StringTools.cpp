#include "kvpm/StringTools.h"

#include <QChar>
#include <QString>
#include <algorithm>
#include <cmath>

#include "playerx/platform/Text.h"

namespace kvpm {
namespace {

constexpr char kBlanks[] = " \t\n\v\f\r";

// Wraps as unsigned arithmetic does, which also gives every narrower width its own wrapped value.
std::uint64_t wrappedNumber(const std::string& text) {
  std::size_t at = std::min(text.find_first_not_of(kBlanks), text.size());
  const bool negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  std::uint64_t value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    value = value * 10 + static_cast<std::uint64_t>(text[at] - '0');
  }
  return negative ? std::uint64_t{0} - value : value;
}

wchar_t lowerCase(wchar_t character) {
  const auto value = static_cast<char32_t>(character);
  if (value > QChar::LastValidCodePoint) return character;
  return static_cast<wchar_t>(QChar::toLower(value));
}

}  // namespace

std::wstring StringTools::stripBeginingAndEndChar(const std::wstring& text, wchar_t character) {
  const std::size_t first = text.find_first_not_of(character);
  if (first == std::wstring::npos) return {};
  return text.substr(first, text.find_last_not_of(character) - first + 1);
}

std::wstring StringTools::toLower(const std::wstring& text) {
  std::wstring result(text);
  std::transform(result.begin(), result.end(), result.begin(), lowerCase);
  return result;
}

std::wstring StringTools::replaceString(const std::wstring& search, const std::wstring& replacement,
                                        const std::wstring& subject) {
  if (search.empty()) return subject;
  std::wstring result;
  std::size_t from = 0;
  for (std::size_t at; (at = subject.find(search, from)) != std::wstring::npos;) {
    result.append(subject, from, at - from).append(replacement);
    from = at + search.size();
  }
  return result.append(subject, from);
}

std::string StringTools::int32ToString(std::int32_t value) { return std::to_string(value); }

std::string StringTools::uint64ToString(std::uint64_t value) { return std::to_string(value); }

std::int32_t StringTools::stringToInt32(const std::string& text) {
  return static_cast<std::int32_t>(wrappedNumber(text));
}

std::uint64_t StringTools::stringToUint64(const std::string& text) { return wrappedNumber(text); }

std::string StringTools::boolToString(bool value) { return value ? "true" : "false"; }

bool StringTools::stringToBool(const std::string& text) {
  return text == "1" || QLatin1String(text.data(), static_cast<qsizetype>(text.size()))
                                .compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
}

float StringTools::wstringToFloat(const std::wstring& text) {
  bool spelt = false;
  const float value = playerx::toQString(text).trimmed().toFloat(&spelt);
  return spelt && std::isfinite(value) ? value : 0.0F;
}

std::wstring StringTools::uStringToWstring(const std::basic_string<unsigned char>& bytes) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  text = text.substr(0, text.find('\0'));
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  return playerx::decodeUtf8(text).characters;
}

std::string StringTools::wStringToString(const std::wstring& text) {
  const bool isAscii =
      std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= 0 && c < 0x80; });
  // Most texts are ASCII, and a long queue has many.
  return isAscii ? std::string(text.begin(), text.end()) : playerx::toQString(text).toStdString();
}

std::wstring StringTools::stringToWString(const std::string& text) {
  return playerx::decodeUtf8(text).characters;
}

}  // namespace kvpm
