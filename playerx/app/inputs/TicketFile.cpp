#include "playerx/app/inputs/TicketFile.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"
#include "persistence/ClearTicket.h"
#include "playerx/app/inputs/InputText.h"
#include "playerx/services/SealedTicket.h"
#include "playerx/settings/ServicesAddress.h"

namespace playerx::inputs {

using reasons::explain;
using reasons::Explanation;
using reasons::Reason;

namespace {

bool isTooLong(const persistence::TicketFilm& film) {
  return std::max({film.title.size(), film.contentProvider.size(), film.url.size()}) > kLongestText;
}

std::optional<Explanation> refusalOfFilm(const persistence::TicketFilm& film) {
  const auto line = static_cast<int>(film.line);
  if (isTooLong(film)) {
    return explain(Reason::kLongText, {.words = std::to_string(kLongestText), .number = line});
  }
  const auto reason = refusalOfAddress(kvpm::StringTools::wStringToString(film.url));
  if (!reason) return std::nullopt;
  const std::string why = explain(*reason).happened;
  return explain(Reason::kFilmOfTicket, {.words = why, .number = line});
}

bool isFolder(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_directory(path, error);
}

/// Why the file at `path` could not be opened.
Explanation explainUnreadable(const std::string& path) {
  const std::string shown = displayPath(path);
  std::error_code error;
  const std::filesystem::file_status found = std::filesystem::status(path, error);
  if (found.type() == std::filesystem::file_type::not_found) {
    return explain(Reason::kNoTicketFile, {.place = shown});
  }
  return explain(isFolder(path) ? Reason::kTicketIsFolder : Reason::kUnreadableTicket,
                 {.place = shown});
}

}  // namespace

std::optional<std::wstring> readTicketText(const std::wstring& path, Explanation* problem) {
  const std::string name = kvpm::StringTools::wStringToString(path);
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0 || isFolder(name)) {
    *problem = explainUnreadable(name);
    return std::nullopt;
  }
  const std::int64_t size = std::max<std::int64_t>(file.getTotalSize(), 0);
  if (size > kLargestTicket) {
    *problem = explain(Reason::kLargeTicket);
    return std::nullopt;
  }
  std::basic_string<unsigned char> bytes(static_cast<std::size_t>(size), 0);
  if (file.read(bytes.data(), bytes.size()) != size) {
    *problem = explain(Reason::kUnreadableTicket);
    return std::nullopt;
  }
  return kvpm::StringTools::uStringToWstring(bytes);
}

std::vector<std::string> filmsOfTicket(const std::wstring& path) {
  Explanation problem;
  const std::optional<std::wstring> text = readTicketText(path, &problem);
  std::vector<std::string> films;
  if (!text) return films;
  for (const persistence::TicketFilm& film : persistence::readClearTicket(*text).films) {
    films.push_back(kvpm::StringTools::wStringToString(film.url));
  }
  return films;
}

bool isSealedTicket(const std::wstring& text) {
  const auto line = std::wstring_view(text).substr(0, text.find_first_of(L"\n\r"));
  return std::ranges::equal(line, kSealedTicketLine);
}

std::optional<Explanation> refusalOfTicket(const std::wstring& path) {
  Explanation problem;
  const std::optional<std::wstring> text = readTicketText(path, &problem);
  if (!text) return problem;
  return refusalOfText(*text, !servicesAddress().empty());
}

Explanation explainNothing(const std::wstring& path) {
  Explanation problem;
  const std::optional<std::wstring> text = readTicketText(path, &problem);
  if (!text) return problem;
  // The manager reads the file by itself, which may have failed.
  const bool namesFilms = !persistence::readClearTicket(*text).films.empty();
  return explain(namesFilms ? Reason::kUnreadableTicket : Reason::kEmptyTicket);
}

std::optional<Explanation> refusalOfText(const std::wstring& text, bool hasServices) {
  if (isSealedTicket(text) && !hasServices) return explain(Reason::kSealedTicket);
  const persistence::ClearTicket ticket = persistence::readClearTicket(text);
  if (ticket.films.size() > kMostFilms) {
    return explain(Reason::kTooManyFilms, {.number = static_cast<int>(kMostFilms)});
  }
  for (const persistence::TicketFilm& film : ticket.films) {
    if (auto refusal = refusalOfFilm(film)) return refusal;
  }
  return std::nullopt;
}

}  // namespace playerx::inputs
