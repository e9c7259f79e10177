#include "playerx/app/inputs/TicketFile.h"

#include <algorithm>
#include <filesystem>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"
#include "playerx/app/inputs/ServicesAddress.h"
#include "playerx/app/inputs/TicketCheck.h"

namespace playerx {

namespace {

bool isMonstrous(const TicketFilm& film) {
  return std::max({film.title.size(), film.provider.size(), film.url.size()}) > kLongestText;
}

bool isFolder(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_directory(path, error);
}

/// What stands in the way of reading this file.
std::string obstacleAt(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_status found = std::filesystem::status(path, error);
  const bool isMissing = found.type() == std::filesystem::file_type::not_found;
  if (isMissing) return "There is no file " + path + ".";
  if (isFolder(path)) return path + " is a folder.";
  return "The file cannot be read.";
}

}  // namespace

std::optional<std::wstring> readTicketText(const std::wstring& path, std::string* problem) {
  const std::string name = kvpm::StringTools::wStringToString(path);
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0 || isFolder(name)) {
    *problem = obstacleAt(name);
    return std::nullopt;
  }
  const std::int64_t size = std::max<std::int64_t>(file.getTotalSize(), 0);
  if (size > kLargestTicket) {
    *problem = "The file is too large for a ticket.";
    return std::nullopt;
  }
  std::basic_string<unsigned char> bytes(static_cast<std::size_t>(size), 0);
  if (file.read(bytes.data(), bytes.size()) != size) {
    *problem = "The file cannot be read.";
    return std::nullopt;
  }
  return kvpm::StringTools::uStringToWstring(bytes);
}

std::optional<FailureReason> refusalOfTicket(const std::wstring& path) {
  std::string problem;
  const std::optional<std::wstring> text = readTicketText(path, &problem);
  if (!text) return FailureReason{"bad_ticket", problem};
  return refusalOfText(*text, !servicesAddress().empty());
}

std::optional<FailureReason> refusalOfText(const std::wstring& text, bool hasServices) {
  if (isSealedTicket(text) && !hasServices) {
    return FailureReason{"empty_ticket",
                         "This is a protected ticket; name the online services with --services."};
  }
  const TicketCheck check = checkClearTicket(text);
  if (check.films.size() > kMostFilms) {
    return FailureReason{"bad_ticket", "This ticket names " + std::to_string(check.films.size()) +
                                           " films; the most is " + std::to_string(kMostFilms) +
                                           "."};
  }
  const auto monstrous = std::find_if(check.films.begin(), check.films.end(), isMonstrous);
  if (monstrous == check.films.end()) return std::nullopt;
  return FailureReason{"bad_ticket", "The film of line " + std::to_string(monstrous->line) +
                                         " has a text of more than " +
                                         std::to_string(kLongestText) + " characters."};
}

}  // namespace playerx
