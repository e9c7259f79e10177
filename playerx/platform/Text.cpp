#include "playerx/platform/Text.h"

#include <QStringDecoder>

namespace playerx {
namespace {

char32_t scalarValue(wchar_t character) {
  const auto value = static_cast<char32_t>(character);
  const bool valid = value <= QChar::LastValidCodePoint && !QChar::isSurrogate(value);
  return valid ? value : char32_t{QChar::ReplacementCharacter};
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  constexpr char kBlanks[] = " \t\r\n\f\v";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

WideText decodeUtf8(std::string_view bytes) {
  // A byte-order mark is a character like any other here.
  QStringDecoder decoder(QStringDecoder::Utf8,
                         QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
  const QString text =
      decoder.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
  return {text.toStdWString(), decoder.hasError()};
}

QString toQString(std::wstring_view text) {
  QString result(2 * static_cast<qsizetype>(text.size()), Qt::Uninitialized);
  QChar* end = result.data();
  for (const wchar_t character : text) {
    for (const char16_t unit : QChar::fromUcs4(scalarValue(character))) *end++ = unit;
  }
  result.truncate(end - result.constData());
  return result;
}

}  // namespace playerx
