#pragma once

#include <string>
#include <vector>

namespace playerx::inputs {

/// One film that a clear ticket names.
struct TicketFilm {
  std::wstring title;     ///< empty when the ticket gives none
  std::wstring provider;  ///< empty when the ticket gives none
  std::wstring url;
  int line = 0;  ///< of its "start", from 1 on

  bool operator==(const TicketFilm&) const = default;
};

/// Something in a ticket that keeps a film, or all of them, from being downloaded.
struct TicketProblem {
  int line = 0;  ///< from 1 on; 0 for the file as a whole
  std::string sentence;

  bool operator==(const TicketProblem&) const = default;
};

/// What a clear ticket says, line by line.
struct TicketCheck {
  std::vector<TicketFilm> films;
  std::vector<TicketProblem> problems;
};

/// Reads the text of a clear ticket the way the download manager does, and says why where that
/// yields nothing. Lines end in LF, CR or CR LF.
TicketCheck checkClearTicket(const std::wstring& text);

/// Whether this is the text of a protected ticket, which only the online services can read.
bool isSealedTicket(const std::wstring& text);

}  // namespace playerx::inputs
