#include <gmock/gmock.h>

#include "persistence/TicketParserImpl.h"

namespace {

using Impl = TicketParser::TicketParserImpl;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(TicketWords, AreFixed) {
  EXPECT_EQ(Impl::START_STRING, L"start");
  EXPECT_EQ(Impl::END_STRING, L"end");
  EXPECT_EQ(Impl::VERSION_STRING, L"TixVeskVersion");
}

TEST(TicketTokens, AreTheRunsBetweenDelimiters) {
  EXPECT_THAT(Impl::tokenize(L"a\nb\r\nc", L"\n\r"), ElementsAre(L"a", L"b", L"c"));
  EXPECT_THAT(Impl::tokenize(L"\n\na\r\r\nbc\n", L"\n\r"), ElementsAre(L"a", L"bc"));
  EXPECT_THAT(Impl::tokenize(L"a b\tc", L"\n\r"), ElementsAre(L"a b\tc"));
}

TEST(TicketTokens, OfDelimitersAloneAreEmpty) {
  EXPECT_THAT(Impl::tokenize(L"", L"\n\r"), IsEmpty());
  EXPECT_THAT(Impl::tokenize(L"\n\r\r\n", L"\n\r"), IsEmpty());
}

TEST(TicketTokens, WithoutDelimitersAreTheWholeText) {
  EXPECT_THAT(Impl::tokenize(L"a\nb", L""), ElementsAre(L"a\nb"));
  EXPECT_THAT(Impl::tokenize(L"", L""), IsEmpty());
}

TEST(TicketTrimming, RemovesWholeRunsAtBothEnds) {
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L"  a b  "), L"a b");
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L"\t\ta\t\t"), L"a");
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L"\n\na\r\r"), L"a");
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L"a"), L"a");
}

TEST(TicketTrimming, RemovesATextOfOneKindOfBlanks) {
  for (const wchar_t* blanks :
       {L"", L" ", L"    ", L"\t\t", L"\n", L"\r\r", L"\t\n\r ", L"\n  \n"}) {
    EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(blanks), L"");
  }
}

TEST(TicketTrimming, HasOnePassPerCharacterAsWanted) {
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L" \tx"), L"\tx");
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L"\t x"), L"x");
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L"x\t "), L"x\t");
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L"x \t"), L"x");
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L"\t\n\r x \r\n\t"), L"x");
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L" \r\n\tx"), L"\r\n\tx");
}

TEST(TicketTrimming, LeavesOtherKindsOfBlanks) {
  EXPECT_EQ(Impl::stripBeginingAndEndWhiteSpace(L"\v\f\u00A0x"), L"\v\f\u00A0x");
}

TEST(TicketLine, IsKeyAndValueAroundTheFirstEqualsSign) {
  const struct {
    const wchar_t* line;
    bool isParsed;
    const wchar_t* key;
    const wchar_t* value;
    const char* what;
  } rows[] = {
      {L"key=value", true, L"key", L"value", "split at the equals sign"},
      {L"url=x?a=b", true, L"url", L"x?a=b", "a later equals sign belongs to the value"},
      {L"a==", true, L"a", L"=", "the value may be an equals sign"},
      {L"=value", true, L"", L"value", "the key may be empty"},
      {L" \t key \t=\t value \t", true, L"key", L"value", "trimmed around key and value"},
      {L"start", true, L"start", L"", "start has no value"},
      {L"  end\t", true, L"end", L"", "end has no value"},
      {L"key=\t ", true, L"key", L"", "a value of mixed blanks is empty"},
      {L"key=\t \t ", true, L"key", L"", "a value of several mixed blanks is empty"},
      {L"Start", true, L"Start", L"Start", "another word than start is ordinary"},
      {L"END", true, L"END", L"END", "another word than end is ordinary"},
      {L"start x", true, L"start x", L"start x", "start among other words is ordinary"},
      {L"start=1", true, L"start", L"1", "start with a value is ordinary"},
      {L" title ", true, L"title", L"title", "key and value without an equals sign, as wanted"},
      {L"", false, L"", L"before", "an empty line is refused"},
      {L"  \t", false, L"", L"before", "blanks alone are refused"},
      {L"=", false, L"", L"before", "an equals sign alone is refused"},
      {L"key=  ", false, L"key", L"before", "a key that ends in its equals sign is refused"},
  };
  for (const auto& row : rows) {
    std::wstring key = L"before";
    std::wstring value = L"before";
    EXPECT_EQ(Impl::parseLine(row.line, key, value), row.isParsed) << row.what;
    EXPECT_EQ(key, row.key) << row.what;
    EXPECT_EQ(value, row.value) << row.what;
  }
}

}  // namespace
