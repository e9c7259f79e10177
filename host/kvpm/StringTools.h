#pragma once

#include <cstdint>
#include <string>

namespace kvpm {

/// Text conversions of the platform. Wide text is UTF-32, narrow text UTF-8. All operations are
/// static, pure and may be called from any thread.
class StringTools {
 public:
  StringTools() = delete;

  /// `text` without the whole run of `character` at its beginning and the whole run at its end.
  static std::wstring stripBeginingAndEndChar(const std::wstring& text, wchar_t character);

  /// Lower case, character by character, independent of the locale.
  static std::wstring toLower(const std::wstring& text);

  /// `subject` with every occurrence of `search`, from the left and without overlap, replaced. An
  /// empty `search` changes nothing.
  static std::wstring replaceString(const std::wstring& search, const std::wstring& replacement,
                                    const std::wstring& subject);

  /// Decimal texts, without blanks or leading zeros.
  static std::string int32ToString(std::int32_t value);
  static std::string uint64ToString(std::uint64_t value);

  /// The decimal number at the beginning of `text`: blanks, a sign, digits; 0 without a digit. The
  /// value wraps to 32 bits, so '18446744073709551615' reads as -1.
  static std::int32_t stringToInt32(const std::string& text);

  /// As `stringToInt32`, wrapped to 64 bits: '-1' reads as all bits set.
  static std::uint64_t stringToUint64(const std::string& text);

  /// "true" or "false".
  static std::string boolToString(bool value);

  /// True for "true" in any case and for "1"; false for everything else.
  static bool stringToBool(const std::string& text);

  /// The number that the whole of `text`, blanks around it aside, spells with a "." as decimal
  /// point, independent of the locale; 0 when it spells none.
  static float wstringToFloat(const std::wstring& text);

  /// The text of a file's bytes: UTF-8, a leading byte-order mark skipped, malformed bytes as
  /// U+FFFD, ending at the first NUL character.
  static std::wstring uStringToWstring(const std::basic_string<unsigned char>& bytes);

  /// Wide to narrow and back. Characters that the target cannot carry become U+FFFD.
  static std::string wStringToString(const std::wstring& text);
  static std::wstring stringToWString(const std::string& text);
};

}  // namespace kvpm
