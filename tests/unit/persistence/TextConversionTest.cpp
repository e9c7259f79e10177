#include <gmock/gmock.h>

#include <memory>

#include "persistence/DownloadManagerPersistence.h"

namespace {

std::string utf8(const std::wstring& text) {
  const std::unique_ptr<unsigned char[]> bytes(DownloadManagerPersistence::wstringToUtf8(text));
  return reinterpret_cast<const char*>(bytes.get());
}

std::wstring wide(const char* text) {
  return DownloadManagerPersistence::utf8ToWstring(reinterpret_cast<const unsigned char*>(text));
}

TEST(TextConversion, EmptyTextStaysEmpty) {
  EXPECT_EQ(utf8(L""), "");
  EXPECT_EQ(wide(""), L"");
  EXPECT_EQ(wide(nullptr), L"");
}

TEST(TextConversion, EveryWidthOfCharacterIsConverted) {
  EXPECT_EQ(utf8(L"a\u00E4\u20AC\U0001F600\U0010FFFF"),
            "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF");
  EXPECT_EQ(wide("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"),
            L"a\u00E4\u20AC\U0001F600\U0010FFFF");
}

TEST(TextConversion, LongTextsFit) {
  const std::wstring text(1'000'000, L'\U0001F600');
  EXPECT_EQ(wide(utf8(text).c_str()), text);
}

TEST(TextConversion, MalformedTextIsReplaced) {
  EXPECT_EQ(wide("a\xFFz"), L"a\uFFFDz");
  EXPECT_EQ(utf8(std::wstring(1, static_cast<wchar_t>(0xD800))), "\xEF\xBF\xBD");
}

}  // namespace
