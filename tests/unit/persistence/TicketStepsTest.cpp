// Random tickets are read as the parser's single steps would read them one after the other.
#include <gmock/gmock.h>

#include <array>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "kvpm/StringTools.h"
#include "persistence/ClearTicket.h"
#include "persistence/TicketParserImpl.h"

namespace persistence {
namespace {

using Steps = TicketParser::TicketParserImpl;
using Texts = std::vector<std::wstring>;

/// Address, title and content provider.
using Film = std::array<std::wstring, 3>;

/// The lines of a ticket that are not empty once they are trimmed.
Texts linesOf(const std::wstring& text) {
  Texts lines;
  for (const std::wstring& token : Steps::tokenize(text, L"\n\r")) {
    const std::wstring line = Steps::stripBeginingAndEndWhiteSpace(token);
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

bool isAcceptedHeader(const std::wstring& line) {
  std::wstring key;
  std::wstring value;
  if (!Steps::parseLine(line, key, value)) return true;
  return key == Steps::VERSION_STRING && kvpm::StringTools::wstringToFloat(value) == 1.0F;
}

/// Reads one line of the body into the open block, if any.
void readLine(const std::wstring& line, std::optional<Film>& open, std::vector<Film>& films) {
  std::wstring key;
  std::wstring value;
  if (!Steps::parseLine(line, key, value)) return;
  const std::wstring word = Steps::stripBeginingAndEndWhiteSpace(line);
  if (word == Steps::START_STRING) {
    open.emplace();
  } else if (word == Steps::END_STRING) {
    if (open && !(*open)[0].empty()) films.push_back(*open);
    open.reset();
  } else if (open) {
    if (key == L"url") (*open)[0] = value;
    if (key == L"title") (*open)[1] = value;
    if (key == L"contentProvider") (*open)[2] = value;
  }
}

std::vector<Film> filmsByTheSteps(const std::wstring& text) {
  const Texts lines = linesOf(text);
  std::vector<Film> films;
  if (lines.empty() || !isAcceptedHeader(lines.front())) return films;
  std::optional<Film> open;
  for (std::size_t i = 1; i < lines.size(); ++i) readLine(lines[i], open, films);
  return films;
}

std::vector<Film> filmsOf(const std::wstring& text) {
  std::vector<Film> films;
  for (const TicketFilm& film : readClearTicket(text).films) {
    films.push_back({film.url, film.title, film.contentProvider});
  }
  return films;
}

class RandomTickets {
 public:
  std::wstring next() {
    std::wstring ticket = any({L"TixVeskVersion=1\n", L"TixVeskVersion=\r", L" \t \n", L""});
    for (std::size_t count = random_() % 16; count > 0; --count) ticket += any(kPieces);
    return ticket;
  }

 private:
  std::wstring any(const Texts& texts) { return texts[random_() % texts.size()]; }

  const Texts kPieces{L"start\n", L"start\r\n", L"url=a\n",
                      L"url=b\r", L"end\n",     L"end",
                      L"start",   L"title=c",   L"contentProvider=d",
                      L"url",     L"title",     L"=",
                      L" ",       L"\t",        L"\n",
                      L"\r",      L"start\n",   L"\turl=e ",
                      L"end\n",   L"x"};
  std::mt19937 random_{1};
};

TEST(TicketSteps, GiveTheFilmsThatAreRead) {
  RandomTickets tickets;
  int filled = 0;
  for (int count = 0; count < 50'000; ++count) {
    const std::wstring ticket = tickets.next();
    const std::vector<Film> films = filmsByTheSteps(ticket);
    ASSERT_EQ(filmsOf(ticket), films) << testing::PrintToString(ticket);
    if (!films.empty()) ++filled;
  }
  EXPECT_GT(filled, 1'000);
}

}  // namespace
}  // namespace persistence
