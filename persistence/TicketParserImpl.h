#pragma once

#include <string>
#include <vector>

#include "persistence/TicketParser.h"

/// The single steps of reading a ticket. All are pure, except that `getLocalFilePathFromTicketData`
/// asks the platform for the movies folder.
class TicketParser::TicketParserImpl {
 public:
  static const std::wstring START_STRING;    ///< the line that opens a film's block
  static const std::wstring END_STRING;      ///< the line that closes it
  static const std::wstring VERSION_STRING;  ///< the key of a ticket's first line

  /// The runs of characters that are not in `delimiters`, in order.
  static std::vector<std::wstring> tokenize(const std::wstring& text,
                                            const std::wstring& delimiters);

  /// `trimTicketText` of a copy.
  static std::wstring stripBeginingAndEndWhiteSpace(const std::wstring& text);

  /// Splits a line as `splitTicketLine` does. Returns false, and leaves `value` as it is, for a
  /// line that is empty or ends in its first "=".
  static bool parseLine(const std::wstring& line, std::wstring& key, std::wstring& value);

  /// The local path of a record's film: its title, unchanged, in the movies folder. Records of the
  /// same title share a path; a "\" becomes a "/".
  static std::wstring getLocalFilePathFromTicketData(const VeskDrmTicketData* record);
};
