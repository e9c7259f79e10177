#include "playerx/app/session/KnownFilm.h"

#include <filesystem>
#include <utility>

#include "playerx/transfers/Address.h"

namespace playerx::session {

using model::ItemState;

namespace {

/// The last part of an address of this form; nullopt for a form whose addresses may end otherwise:
/// bytes may be escaped, a slash may be missing, steps like ".." may follow.
std::optional<std::string> endOf(const std::string& form) {
  std::string end = form.substr(form.rfind('/'));
  const bool isCertain = end.find('%') == std::string::npos && !end.starts_with("/?") && end != "/";
  return isCertain ? std::optional(std::move(end)) : std::nullopt;
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
    if (isCandidate && formOf(item.url) == form) best = &item;
  }
  return best != nullptr ? std::optional(*best) : std::nullopt;
}

/// Parsing takes far longer than a look at the ends of the addresses, which nearly all of a long
/// queue do not pass.
std::optional<ItemState> findKnownFilm(const model::QueueTracker& queue,
                                       const std::string& address) {
  const std::string form = formOf(address);
  if (form.empty()) return std::nullopt;
  const std::optional<std::string> end = endOf(form);
  return findKnownFilm(end ? queue.withAddressEnd(*end) : queue.all(), address);
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
