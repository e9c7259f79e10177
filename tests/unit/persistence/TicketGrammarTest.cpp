// The films and the faults that readClearTicket finds in a text.
#include <gmock/gmock.h>

#include "persistence/ClearTicket.h"

namespace persistence {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using enum TicketProblem;

std::vector<TicketFault> faultsOf(std::wstring_view text) { return readClearTicket(text).faults; }

TEST(TicketGrammar, AWellFormedTicketHasNoFaults) {
  const ClearTicket ticket = readClearTicket(
      L"TixVeskVersion=1.0\nstart\nurl=a\ntitle=b\ncontentProvider=c\nend\n\nstart\nurl=d\nend\n");
  EXPECT_THAT(ticket.films,
              ElementsAre(TicketFilm{2, L"a", L"b", L"c"}, TicketFilm{8, L"d", L"", L""}));
  EXPECT_THAT(ticket.faults, IsEmpty());
  EXPECT_EQ(ticket.version, L"1.0");
}

TEST(TicketGrammar, ATicketOfBlankLinesIsEmpty) {
  EXPECT_THAT(faultsOf(L""), ElementsAre(TicketFault{0, kEmptyTicket}));
  EXPECT_THAT(faultsOf(L"\n \r\n\t"), ElementsAre(TicketFault{0, kEmptyTicket}));
}

TEST(TicketGrammar, AFirstLineOfAnotherKeyIsNoHeader) {
  EXPECT_THAT(faultsOf(L"\nstart\nurl=a\nend"), ElementsAre(TicketFault{2, kNoHeader}));
}

TEST(TicketGrammar, AnotherVersionIsReported) {
  const ClearTicket ticket = readClearTicket(L"TixVeskVersion = 2.5 \nstart\nurl=a\nend");
  EXPECT_THAT(ticket.faults, ElementsAre(TicketFault{1, kOtherVersion}));
  EXPECT_THAT(ticket.films, IsEmpty());
  EXPECT_EQ(ticket.version, L"2.5");
}

TEST(TicketGrammar, AFaultOfABlockIsAtItsStart) {
  EXPECT_THAT(faultsOf(L"TixVeskVersion=1\nstart\ntitle=a\nend\nend\nstart\nstart\nurl=b\n"),
              ElementsAre(TicketFault{2, kNoUrl}, TicketFault{5, kEndOutsideABlock},
                          TicketFault{6, kUnclosedAtStart}, TicketFault{7, kUnclosed}));
}

TEST(TicketGrammar, ATicketWithoutABlockHasNoStart) {
  EXPECT_THAT(faultsOf(L"TixVeskVersion=1\nurl=a\n"), ElementsAre(TicketFault{0, kNoStart}));
}

TEST(TicketGrammar, LinesOfEveryKindOfEndAreCountedAlike) {
  for (const wchar_t* end : {L"\n", L"\r", L"\r\n"}) {
    std::wstring text;
    for (const wchar_t* line : {L"", L"TixVeskVersion=1", L"", L"", L"end"}) {
      text.append(line).append(end);
    }
    EXPECT_THAT(faultsOf(text),
                ElementsAre(TicketFault{5, kEndOutsideABlock}, TicketFault{0, kNoStart}));
  }
}

/// A million characters of a repeated text behind a header.
std::wstring largeTicket(const std::wstring& repeated) {
  std::wstring text = L"TixVeskVersion=1\n";
  while (text.size() < 1'000'000) text += repeated;
  return text;
}

// Some tens of milliseconds; work that grew with the square of the length would take many minutes,
// which the runner does not wait for.
TEST(TicketGrammar, LargeTicketsAreReadToTheirEnd) {
  for (const wchar_t* repeated : {L"start\nurl=a\nend\n", L"start\n", L"end\n", L"\n", L"\r\n",
                                  L" ", L" \t", L"=", L"a", L"start\nurl=a=\t \t \n"}) {
    const ClearTicket ticket = readClearTicket(largeTicket(repeated) + L"\nstart\nurl=last\nend\n");
    ASSERT_FALSE(ticket.films.empty()) << repeated;
    EXPECT_EQ(ticket.films.back().url, L"last") << repeated;
  }
}

}  // namespace
}  // namespace persistence
