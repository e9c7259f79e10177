#include "persistence/TicketParserImpl.h"

#include <algorithm>

#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "persistence/ClearTicket.h"

namespace {

constexpr const wchar_t* kMediaExtension = L".vesk";

}  // namespace

const std::wstring TicketParser::TicketParserImpl::START_STRING(persistence::kTicketStart);
const std::wstring TicketParser::TicketParserImpl::END_STRING(persistence::kTicketEnd);
const std::wstring TicketParser::TicketParserImpl::VERSION_STRING(persistence::kTicketVersion);

std::vector<std::wstring> TicketParser::TicketParserImpl::tokenize(const std::wstring& text,
                                                                   const std::wstring& delimiters) {
  std::vector<std::wstring> tokens;
  std::size_t begin = text.find_first_not_of(delimiters);
  while (begin != std::wstring::npos) {
    const std::size_t end = std::min(text.find_first_of(delimiters, begin), text.size());
    tokens.push_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(delimiters, end);
  }
  return tokens;
}

std::wstring TicketParser::TicketParserImpl::stripBeginingAndEndWhiteSpace(
    const std::wstring& text) {
  return std::wstring(persistence::trimTicketText(text));
}

bool TicketParser::TicketParserImpl::parseLine(const std::wstring& line, std::wstring& key,
                                               std::wstring& value) {
  const persistence::TicketEntry entry = persistence::splitTicketLine(line);
  key = entry.key;
  if (entry.value) value = *entry.value;
  return entry.value.has_value();
}

std::wstring TicketParser::TicketParserImpl::getLocalFilePathFromTicketData(
    const VeskDrmTicketData* record) {
  // An existing film does not change the path: a free name is chosen when the download begins.
  const std::wstring path =
      kvpm::PathTools::getVeskMoviesFolder() + L"/" + record->title + kMediaExtension;
  return kvpm::StringTools::replaceString(L"\\", L"/", path);
}
