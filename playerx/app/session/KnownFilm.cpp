#include "playerx/app/session/KnownFilm.h"

#include <filesystem>
#include <string_view>

#include "playerx/transfers/Address.h"

namespace playerx::session {

using model::ItemState;

namespace {

/// Whether an address may have this form. Parsing takes far longer than this look, which nearly all
/// addresses of a long queue do not pass.
bool mayHaveForm(const std::string& address, std::string_view form) {
  const std::string_view end = form.substr(form.rfind('/'));
  // Bytes may be escaped, a slash may be missing, steps like ".." and a fragment may follow.
  const bool isCertain = end.find('%') == std::string_view::npos && !end.starts_with("/?") &&
                         end != "/" && address.find('#') == std::string::npos;
  return !isCertain || address.ends_with(end);
}

int progressOf(const ItemState& item) {
  if (item.status == DownloadStatusCompleted) return 3;
  if (model::isUnfinished(item.status)) return 2;
  return item.status == DownloadStatusStopped ? 1 : 0;
}

}  // namespace

std::string formOf(const std::string& address) {
  const std::optional<Address> parsed = parseAddress(address);
  return parsed ? parsed->remembered : "";
}

std::optional<ItemState> findKnownFilm(const std::vector<ItemState>& queue,
                                       const std::string& address) {
  const std::string form = formOf(address);
  if (form.empty()) return std::nullopt;
  const ItemState* best = nullptr;
  for (const ItemState& item : queue) {
    const bool isCandidate = best == nullptr || progressOf(item) > progressOf(*best);
    if (!mayHaveForm(item.url, form)) continue;
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
