#pragma once

#include <string>
#include <vector>

#include "persistence/TicketParser.h"

/// The steps of ticket reading that can be called by themselves. Pure functions, but for the folder
/// of the films that the platform is asked for.
class TicketParser::TicketParserImpl {
 public:
  TicketParserImpl() = delete;

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

  /// Where the film of a record goes: its title, unchanged, below the folder of the films. Two
  /// records of one title share a path; a "\" in it becomes a "/".
  static std::wstring getLocalFilePathFromTicketData(const VeskDrmTicketData* record);
};
