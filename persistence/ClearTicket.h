#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The grammar of clear tickets. All functions are pure and may be called from any thread.
namespace persistence {

inline constexpr std::wstring_view kTicketStart = L"start";             ///< opens a film's block
inline constexpr std::wstring_view kTicketEnd = L"end";                 ///< closes it
inline constexpr std::wstring_view kTicketVersion = L"TixVeskVersion";  ///< key of the header

/// A film that a clear ticket names.
struct TicketFilm {
  std::size_t line = 0;          ///< of its "start", from 1 on
  std::wstring url;              ///< never empty
  std::wstring title;            ///< empty when the ticket gives none
  std::wstring contentProvider;  ///< empty when the ticket gives none

  bool operator==(const TicketFilm&) const = default;
};

/// Why a film, or the whole ticket, cannot be read.
enum class TicketProblem {
  kEmptyTicket,       ///< every line is blank
  kNoHeader,          ///< the key of the first line is not `kTicketVersion`
  kOtherVersion,      ///< the header's version is not 1
  kNoStart,           ///< no line opens a block
  kNoUrl,             ///< a block is closed without an address
  kUnclosed,          ///< the last block is not closed
  kUnclosedAtStart,   ///< a block is not closed before the next one is opened
  kEndOutsideABlock,  ///< an "end" without an open block
};

struct TicketFault {
  std::size_t line = 0;  ///< from 1 on; of a block, its "start"; 0 means the whole ticket
  TicketProblem problem = {};

  bool operator==(const TicketFault&) const = default;
};

/// The content of a clear ticket, in its order.
struct ClearTicket {
  std::vector<TicketFilm> films;
  std::vector<TicketFault> faults;
  std::wstring version;  ///< as the header spells it; empty without one
};

/// Reads the text of a clear ticket, whose lines end in LF, CR or CR LF, in linear time.
ClearTicket readClearTicket(std::wstring_view text);

/// `text` without tabs at its ends, then without LF, then CR, then spaces. The format wants one
/// pass for each character, in this order, so " \tx" keeps its tab.
std::wstring_view trimTicketText(std::wstring_view text);

/// A line of a ticket. A line without "=" is its own key and value, except that "start" and "end"
/// have an empty value.
struct TicketEntry {
  std::wstring_view key;                   ///< before the first "=", trimmed
  std::optional<std::wstring_view> value;  ///< after it, trimmed; nullopt when nothing follows it
};

/// Splits a line, trimming it first. The result points into `line`.
TicketEntry splitTicketLine(std::wstring_view line);

}  // namespace persistence
