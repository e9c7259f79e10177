#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "persistence/TicketParser.h"

/// The steps of ticket reading that stand for themselves. Pure functions, but for the folder of the
/// films that the platform is asked for.
class TicketParser::TicketParserImpl {
 public:
  TicketParserImpl() = delete;

  static const std::wstring START_STRING;    ///< the line that opens a film's block
  static const std::wstring END_STRING;      ///< the line that closes it
  static const std::wstring VERSION_STRING;  ///< the key of a ticket's first line

  /// The runs of characters that are not in `delimiters`, in order.
  static std::vector<std::wstring> tokenize(const std::wstring& text,
                                            const std::wstring& delimiters);

  /// Takes the first such run off `text`; empty when there is none.
  static std::wstring_view takeToken(std::wstring_view& text, std::wstring_view delimiters);

  /// `text` without tabs, then without LF, CR, and spaces at its ends. One pass each, in this
  /// order: what a later pass lays bare stays, as the format wants it.
  static std::wstring stripBeginingAndEndWhiteSpace(const std::wstring& text);

  /// Splits a line at its first "=" into a trimmed key and a trimmed value. The lines "start" and
  /// "end" are keys with an empty value; any other line without "=" is key and value in one.
  /// Returns false, without a value, for a line that is empty or ends in its first "=".
  static bool parseLine(const std::wstring& line, std::wstring& key, std::wstring& value);

  /// Where the film of a record goes: its title, unchanged, below the folder of the films. Two
  /// records of one title share a path; a "\" in it becomes a "/".
  static std::wstring getLocalFilePathFromTicketData(const VeskDrmTicketData* record);
};
