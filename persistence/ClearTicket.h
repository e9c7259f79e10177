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

/// What keeps a film, or all of them, from being read.
enum class TicketProblem {
  kEmptyTicket,       ///< every line is blank
  kNoHeader,          ///< the first line has another key than `kTicketVersion`
  kOtherVersion,      ///< the header's version is not 1
  kNoStart,           ///< no line opens a block
  kNoUrl,             ///< a block is closed without an address
  kUnclosed,          ///< the last block is not closed
  kUnclosedAtStart,   ///< a block is not closed before the next one is opened
  kEndOutsideABlock,  ///< a line closes a block outside a block
};

struct TicketFault {
  std::size_t line = 0;  ///< from 1 on, of the block's "start" for one of a block; 0: whole ticket
  TicketProblem problem = {};

  bool operator==(const TicketFault&) const = default;
};

/// What a clear ticket says, in its order.
struct ClearTicket {
  std::vector<TicketFilm> films;
  std::vector<TicketFault> faults;
  std::wstring version;  ///< as the header spells it; empty without one
};

/// Reads the text of a clear ticket, whose lines end in LF, CR or CR LF. Takes time in proportion
/// to its length.
ClearTicket readClearTicket(std::wstring_view text);

/// `text` without tabs at its ends, then without LF, then CR, then spaces. Each kind is removed
/// once, in this order: what a later one lays bare stays, as the format wants it.
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
