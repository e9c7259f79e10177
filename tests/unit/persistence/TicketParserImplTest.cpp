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

/// What `parseLine` answers; key and value begin as "before".
struct Line {
  bool parsed;
  std::wstring key;
  std::wstring value;
  bool operator==(const Line&) const = default;
};

Line parsed(const std::wstring& text) {
  Line line{false, L"before", L"before"};
  line.parsed = Impl::parseLine(text, line.key, line.value);
  return line;
}

TEST(TicketLine, IsSplitAtTheFirstEqualsSign) {
  EXPECT_EQ(parsed(L"key=value"), (Line{true, L"key", L"value"}));
  EXPECT_EQ(parsed(L"url=x?a=b"), (Line{true, L"url", L"x?a=b"}));
  EXPECT_EQ(parsed(L"a=="), (Line{true, L"a", L"="}));
  EXPECT_EQ(parsed(L"=value"), (Line{true, L"", L"value"}));
}

TEST(TicketLine, IsTrimmedAroundKeyAndValue) {
  EXPECT_EQ(parsed(L" \t key \t=\t value \t"), (Line{true, L"key", L"value"}));
}

TEST(TicketLine, StartAndEndHaveNoValue) {
  EXPECT_EQ(parsed(L"start"), (Line{true, L"start", L""}));
  EXPECT_EQ(parsed(L"  end\t"), (Line{true, L"end", L""}));
}

TEST(TicketLine, AValueOfMixedBlanksIsParsedAsEmpty) {
  EXPECT_EQ(parsed(L"key=\t "), (Line{true, L"key", L""}));
  EXPECT_EQ(parsed(L"key=\t \t "), (Line{true, L"key", L""}));
}

TEST(TicketLine, OtherWordsWithStartAreOrdinary) {
  EXPECT_EQ(parsed(L"Start"), (Line{true, L"Start", L"Start"}));
  EXPECT_EQ(parsed(L"END"), (Line{true, L"END", L"END"}));
  EXPECT_EQ(parsed(L"start x"), (Line{true, L"start x", L"start x"}));
  EXPECT_EQ(parsed(L"start=1"), (Line{true, L"start", L"1"}));
}

TEST(TicketLine, WithoutAnEqualsSignIsKeyAndValueAsWanted) {
  EXPECT_EQ(parsed(L" title "), (Line{true, L"title", L"title"}));
}

TEST(TicketLine, ThatIsEmptyOrEndsInItsEqualsSignIsRefused) {
  EXPECT_FALSE(parsed(L"").parsed);
  EXPECT_FALSE(parsed(L"  \t").parsed);
  EXPECT_FALSE(parsed(L"=").parsed);
  EXPECT_EQ(parsed(L"key=  "), (Line{false, L"key", L"before"}));
}

}  // namespace
