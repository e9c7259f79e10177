#include <gtest/gtest.h>

#include "playerx/app/inputs/TicketCheck.h"

namespace playerx::inputs {
namespace {

const std::wstring kHeader = L"TixVeskVersion=1.0\n";

int onlyProblemLine(const std::wstring& text) {
  const TicketCheck check = checkClearTicket(text);
  EXPECT_TRUE(check.films.empty());
  EXPECT_EQ(check.problems.size(), 1u);
  return check.problems.empty() ? -1 : check.problems[0].line;
}

TEST(TicketCheckTest, FilmsComeWithTheirLines) {
  const TicketCheck check =
      checkClearTicket(kHeader +
                       L"\nstart\n title = A = B\n contentProvider=P\nurl=http://h/a?x=1\nend\n"
                       L"start\nurl=http://h/b\nend");
  EXPECT_TRUE(check.problems.empty());
  ASSERT_EQ(check.films.size(), 2u);
  EXPECT_EQ(check.films[0], (TicketFilm{L"A = B", L"P", L"http://h/a?x=1", 3}));
  EXPECT_EQ(check.films[1], (TicketFilm{L"", L"", L"http://h/b", 8}));
}

TEST(TicketCheckTest, EveryKindOfLineEndCountsOnce) {
  for (const wchar_t* end : {L"\n", L"\r", L"\r\n"}) {
    const std::wstring text =
        std::wstring(L"TixVeskVersion=1") + end + end + L"start" + end + L"url=u" + end + L"end";
    const TicketCheck check = checkClearTicket(text);
    ASSERT_EQ(check.films.size(), 1u);
    EXPECT_EQ(check.films[0].line, 3);
  }
}

TEST(TicketCheckTest, AnEmptyTicketIsSaidToBeEmpty) {
  EXPECT_EQ(onlyProblemLine(L""), 0);
  EXPECT_EQ(onlyProblemLine(L" \n\t\r\n"), 0);
}

TEST(TicketCheckTest, AWrongHeaderIsNamedWithItsLine) {
  EXPECT_EQ(onlyProblemLine(L"\n\nstart\nurl=u\nend"), 3);
  EXPECT_EQ(onlyProblemLine(L"TixVeskVersion=2\nstart\nurl=u\nend"), 1);
}

TEST(TicketCheckTest, AHeaderWithoutValueIsPassedOver) {
  EXPECT_EQ(checkClearTicket(L"TixVeskVersion=\nstart\nurl=u\nend").films.size(), 1u);
}

TEST(TicketCheckTest, AProtectedTicketIsKnownByItsFirstLine) {
  for (const wchar_t* text :
       {L"VeskSealedTicket 1", L"VeskSealedTicket 1\nabc", L"VeskSealedTicket 1\r\nabc"}) {
    EXPECT_TRUE(isSealedTicket(text)) << text;
  }
  for (const wchar_t* text : {L"", L"TixVeskVersion=1.0\n", L"VeskSealedTicket 10\n",
                              L" VeskSealedTicket 1\n", L"VeskSealedTicket"}) {
    EXPECT_FALSE(isSealedTicket(text)) << text;
  }
}

TEST(TicketCheckTest, ABlockWithoutAddressIsNamed) {
  EXPECT_EQ(onlyProblemLine(kHeader + L"start\ntitle=x\nurl=\nend"), 2);
}

TEST(TicketCheckTest, ABlockThatIsNeverClosedIsNamed) {
  EXPECT_EQ(onlyProblemLine(kHeader + L"start\nurl=u"), 2);
}

TEST(TicketCheckTest, ASecondStartGivesTheFirstUp) {
  const TicketCheck check = checkClearTicket(kHeader + L"start\nurl=a\nstart\nurl=b\nend");
  ASSERT_EQ(check.films.size(), 1u);
  EXPECT_EQ(check.films[0].url, L"b");
  ASSERT_EQ(check.problems.size(), 1u);
  EXPECT_EQ(check.problems[0].line, 2);
}

TEST(TicketCheckTest, ATicketWithoutBlocksIsNamedAsAWhole) {
  EXPECT_EQ(onlyProblemLine(kHeader), 0);
}

TEST(TicketCheckTest, AnEndWithoutStartIsNamed) {
  const TicketCheck check = checkClearTicket(kHeader + L"end\nstart\nurl=u\nend");
  EXPECT_EQ(check.films.size(), 1u);
  ASSERT_EQ(check.problems.size(), 1u);
  EXPECT_EQ(check.problems[0].line, 2);
}

TEST(TicketCheckTest, ALineIsTrimmedOnceMoreAsTheManagerDoes) {
  const struct {
    const char* what;
    std::wstring text;
    std::vector<TicketFilm> films;
  } rows[] = {
      {"start", kHeader + L" \tstart\nurl=a\nend", {{L"", L"", L"a", 2}}},
      {"end",
       kHeader + L"start\nurl=a\n \tend\nstart\nurl=b\nend",
       {{L"", L"", L"a", 2}, {L"", L"", L"b", 5}}},
      {"first line", L" \t \nstart\nurl=a\nend", {{L"", L"", L"a", 2}}},
      {"header", L"x=\t \nstart\nurl=a\nend", {{L"", L"", L"a", 2}}},
      {"key", kHeader + L"start\n \turl=a\nend", {{L"", L"", L"a", 2}}},
      {"bare key", kHeader + L"start\n \turl\nend", {{L"", L"", L"url", 2}}},
      {"no value", kHeader + L"start\nurl=a\nurl=\t \nend", {{L"", L"", L"a", 2}}},
      {"emptied", kHeader + L"start\nurl=a\ntitle=b\ntitle=\t \t \t \nend", {{L"", L"", L"a", 2}}},
      {"kept", kHeader + L"start\nurl=a\ntitle=b\ntitle= \t \nend", {{L"b", L"", L"a", 2}}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(checkClearTicket(row.text).films, row.films) << row.what;
  }
}

}  // namespace
}  // namespace playerx::inputs
