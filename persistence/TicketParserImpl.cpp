#include "persistence/TicketParserImpl.h"

#include <algorithm>

#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"

using kvpm::StringTools;

namespace {

constexpr std::wstring_view kWhiteSpaceInOrder = L"\t\n\r ";
constexpr const wchar_t* kMediaExtension = L".vesk";

bool isAtAnEnd(const std::wstring& text, wchar_t character) {
  return !text.empty() && (text.front() == character || text.back() == character);
}

}  // namespace

const std::wstring TicketParser::TicketParserImpl::START_STRING = L"start";
const std::wstring TicketParser::TicketParserImpl::END_STRING = L"end";
const std::wstring TicketParser::TicketParserImpl::VERSION_STRING = L"TixVeskVersion";

std::wstring_view TicketParser::TicketParserImpl::takeToken(std::wstring_view& text,
                                                            std::wstring_view delimiters) {
  text.remove_prefix(std::min(text.find_first_not_of(delimiters), text.size()));
  const std::wstring_view token = text.substr(0, text.find_first_of(delimiters));
  text.remove_prefix(token.size());
  return token;
}

std::vector<std::wstring> TicketParser::TicketParserImpl::tokenize(const std::wstring& text,
                                                                   const std::wstring& delimiters) {
  std::vector<std::wstring> tokens;
  std::wstring_view rest = text;
  for (auto token = takeToken(rest, delimiters); !token.empty();
       token = takeToken(rest, delimiters)) {
    tokens.emplace_back(token);
  }
  return tokens;
}

std::wstring TicketParser::TicketParserImpl::stripBeginingAndEndWhiteSpace(
    const std::wstring& text) {
  std::wstring stripped = text;
  for (const wchar_t character : kWhiteSpaceInOrder) {
    if (!isAtAnEnd(stripped, character)) continue;
    stripped = StringTools::stripBeginingAndEndChar(stripped, character);
  }
  return stripped;
}

bool TicketParser::TicketParserImpl::parseLine(const std::wstring& line, std::wstring& key,
                                               std::wstring& value) {
  const std::wstring trimmed = stripBeginingAndEndWhiteSpace(line);
  if (trimmed == START_STRING || trimmed == END_STRING) {
    key = trimmed;
    value.clear();
    return true;
  }
  const std::size_t equals = trimmed.find(L'=');
  key = stripBeginingAndEndWhiteSpace(trimmed.substr(0, equals));
  // Without an "=" the value begins at 0 again: the whole line is both.
  const std::size_t begin = equals == std::wstring::npos ? 0 : equals + 1;
  if (begin >= trimmed.size()) return false;
  value = stripBeginingAndEndWhiteSpace(trimmed.substr(begin));
  return true;
}

std::wstring TicketParser::TicketParserImpl::getLocalFilePathFromTicketData(
    const VeskDrmTicketData* record) {
  // A film that is there already keeps its name; which variant of it is free is found out when the
  // download begins.
  const std::wstring path =
      kvpm::PathTools::getVeskMoviesFolder() + L"/" + record->title + kMediaExtension;
  return StringTools::replaceString(L"\\", L"/", path);
}
