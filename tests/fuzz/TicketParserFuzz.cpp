// Input: the content of a ticket file.
#include <algorithm>

#include "kvpm/StringTools.h"
#include "persistence/ClearTicket.h"
#include "persistence/TicketParserImpl.h"
#include "tests/fuzz/Fuzz.h"

namespace {

std::size_t occurrences(const std::string& text, const std::string& word) {
  std::size_t count = 0;
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    ++count;
  }
  return count;
}

void checkLines(const std::string& text) {
  const std::wstring wide(text.begin(), text.end());
  for (const std::wstring& line : TicketParser::TicketParserImpl::tokenize(wide, L"\n\r")) {
    fuzz::require(!line.empty(), "no line is empty");
    fuzz::require(line.find_first_of(L"\n\r") == std::wstring::npos, "no line holds a line end");
    fuzz::require(
        TicketParser::TicketParserImpl::stripBeginingAndEndWhiteSpace(line).size() <= line.size(),
        "nothing is added");
    std::wstring key;
    std::wstring value;
    if (!TicketParser::TicketParserImpl::parseLine(line, key, value)) continue;
    fuzz::require(key.size() <= line.size() && value.size() <= line.size(), "parts are shorter");
    fuzz::require(key.find(L'=') == std::wstring::npos, "keys end before the equals sign");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::textOf(data, size);
  const auto ticket =
      persistence::readClearTicket(kvpm::StringTools::uStringToWstring({data, size}));
  fuzz::require(
      ticket.films.size() <= std::min(occurrences(text, "start"), occurrences(text, "end")),
      "every film has its block");
  for (const persistence::TicketFilm& film : ticket.films) {
    fuzz::require(!film.url.empty(), "every film has an address");
    fuzz::require(film.line > 0 && film.line <= size, "every film has its line");
  }
  for (const persistence::TicketFault& fault : ticket.faults) {
    fuzz::require(fault.line <= size, "every fault has its line");
  }
  checkLines(text);
  return 0;
}
