#include "playerx/app/session/KnownFilm.h"

#include <filesystem>
#include <string_view>

#include "playerx/transfers/Address.h"

namespace playerx::session {

using model::ItemState;

namespace {

/// Every spelling of an address has one form in which it is remembered.
std::string formOf(const std::string& address) {
  const std::optional<Address> parsed = parseAddress(address);
  return parsed ? parsed->remembered : "";
}

/// The end of an address, which stays as it is in every spelling; empty where that is not certain.
std::string_view endOf(const std::string& form) {
  const std::string_view end = std::string_view(form).substr(form.rfind('/'));
  const bool isEscaped = end.find('%') != std::string_view::npos;
  const bool isSlashAdded = end.starts_with("/?");
  return isEscaped || isSlashAdded ? std::string_view() : end;
}

int progressOf(const ItemState& item) {
  if (item.status == DownloadStatusCompleted) return 3;
  if (model::isUnfinished(item.status)) return 2;
  return item.status == DownloadStatusStopped ? 1 : 0;
}

}  // namespace

std::optional<ItemState> findKnownFilm(const std::vector<ItemState>& queue,
                                       const std::string& address) {
  const std::string form = formOf(address);
  if (form.empty()) return std::nullopt;
  // Parsing takes far longer than this look, which nearly all items of a long queue do not pass.
  const std::string_view end = endOf(form);
  const ItemState* best = nullptr;
  for (const ItemState& item : queue) {
    if (item.url.find(end) == std::string::npos) continue;
    const bool isCandidate = best == nullptr || progressOf(item) > progressOf(*best);
    if (isCandidate && formOf(item.url) == form) best = &item;
  }
  return best != nullptr ? std::optional(*best) : std::nullopt;
}

std::string findFilm(const ItemState& film, const std::string& mediaFolder) {
  namespace fs = std::filesystem;
  if (film.path.empty()) return "";
  const fs::path place = film.path;
  std::error_code error;
  for (const fs::path& candidate : {place, fs::path(mediaFolder) / place.filename()}) {
    if (fs::is_regular_file(candidate, error)) return candidate;
  }
  return "";
}

}  // namespace playerx::session
