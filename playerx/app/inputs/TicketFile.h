#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "playerx/app/reasons/Reason.h"

namespace playerx::inputs {

/// Largest ticket file that the player takes, in bytes, and most films in one ticket. The download
/// manager itself has no limit: a queue of a million films would be written anew at every change.
constexpr std::int64_t kLargestTicket = 64 * 1024 * 1024;
constexpr std::size_t kMostFilms = 10'000;

/// Longest title, provider or address of a film, in characters.
constexpr std::size_t kLongestText = 8192;

/// The text of a ticket file; nullopt, with the reason in `*problem`, when it cannot be read or is
/// too large.
std::optional<std::wstring> readTicketText(const std::wstring& path, reasons::Explanation* problem);

/// The addresses that a clear ticket names, in UTF-8; empty for another file.
std::vector<std::string> filmsOfTicket(const std::wstring& path);

/// Whether this is the text of a protected ticket, which only the online services can read.
bool isSealedTicket(const std::wstring& text);

/// Why the player does not hand this ticket to the download manager; nullopt when it does, whatever
/// the manager then makes of it. On the host's thread.
std::optional<reasons::Explanation> refusalOfTicket(const std::wstring& path);

/// Why a ticket that was handed over has brought no film.
reasons::Explanation explainNothing(const std::wstring& path);

/// What `refusalOfTicket` says of a ticket's text; `hasServices` when there are online services to
/// read a protected one.
std::optional<reasons::Explanation> refusalOfText(const std::wstring& text, bool hasServices);

}  // namespace playerx::inputs
