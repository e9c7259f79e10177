#include "playerx/transfers/PartFinder.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "playerx/platform/NativePath.h"
#include "playerx/platform/Rename.h"
#include "playerx/transfers/FileNames.h"
#include "playerx/transfers/SystemError.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kMostPartsOfOnePlace = 10'000;
constexpr std::size_t kMostPlaces = 1000;

Opened failed(TransferFailure failure, const fs::path& where, int error) {
  return {nullptr, {}, failureOfError(error, failure), describeError(where, error)};
}

int makeFolders(const fs::path& folder) {
  std::error_code failure;
  fs::create_directories(folder, failure);
  if (failure) return failure.value();
  return fs::is_directory(folder, failure) ? 0 : ENOTDIR;
}

/// The error number (`errno` values) with which a file cannot be added to a folder; 0 when it can.
int writeError(const fs::path& folder) {
  return ::access(folder.c_str(), W_OK | X_OK) == 0 ? 0 : errno;
}

bool isSameFilm(const DownloadRequest& request, const FilmMark& mark) {
  if (mark.address == digestOf(request.address.remembered)) return true;
  return request.rightsManaged && mark.place == digestOf(request.address.place);
}

/// The names under which an earlier session may have placed the film, or `takeBack` have put it.
std::vector<std::string> namesOfPlaced(const DownloadRequest& request) {
  std::vector<std::string> names = namesBefore(request.name);
  for (unsigned number = 2; names.size() < kMostPlaces; ++number) {
    std::string name = numberedName(request.name, number);
    if (!isTaken(request.movies / name)) break;
    names.push_back(std::move(name));
  }
  return names;
}

std::optional<fs::path> findPlacedFilm(const DownloadRequest& request) {
  for (const std::string& name : namesOfPlaced(request)) {
    fs::path film = request.movies / name;
    const std::optional<FilmMark> mark = readMark(film);
    if (mark && isSameFilm(request, *mark) && isWhole(*mark, film)) return film;
  }
  return std::nullopt;
}

/// A partial that an earlier session has left.
struct Candidate {
  PartPaths paths;
  PartState state;  ///< empty for one that is known by its mark
  int rank = 0;     ///< the lowest is tried first
};

enum Rank { kWholeRank, kSameAddressRank, kSamePlaceRank, kUselessRank };

int rankOf(const DownloadRequest& request, const Candidate& candidate) {
  const std::optional<FilmMark> mark = readMark(candidate.paths.bytes());
  if (mark && isWhole(*mark, candidate.paths.bytes())) {
    return isSameFilm(request, *mark) ? kWholeRank : kUselessRank;
  }
  if (candidate.state.address == request.address.remembered) return kSameAddressRank;
  const bool isSamePlace = candidate.state.place == request.address.place;
  return request.rightsManaged && isSamePlace ? kSamePlaceRank : kUselessRank;
}

std::vector<Candidate> findCandidates(const DownloadRequest& request, const std::string& keyStart) {
  std::vector<Candidate> candidates;
  std::error_code failure;
  for (fs::directory_iterator entry(request.downloads, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    const fs::path file = entry->path().filename();
    if (!file.native().starts_with(keyStart) || file.extension() != PartPaths::kBytesExtension)
      continue;
    Candidate candidate{{request.downloads, file.stem()}, {}, 0};
    candidate.state = loadState(candidate.paths.state()).value_or(PartState{});
    candidate.rank = rankOf(request, candidate);
    if (candidate.rank != kUselessRank) candidates.push_back(std::move(candidate));
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) { return a.rank < b.rank; });
  return candidates;
}

std::unique_ptr<Part> claimKnown(const DownloadRequest& request, const std::string& key,
                                 int& error) {
  for (const Candidate& candidate : findCandidates(request, key)) {
    std::unique_ptr<Part> part = Part::claim(candidate.paths, error);
    // Another session may have finished with it since it was looked at.
    if (part && !part->isNew() && part->state() == candidate.state) return part;
  }
  return nullptr;
}

/// Deletes the partials of a film that was placed: a kill may come between the two when they lie on
/// different file systems.
void deleteWholeParts(const DownloadRequest& request, const std::string& key) {
  for (const Candidate& candidate : findCandidates(request, key)) {
    int error = 0;
    const auto part = candidate.rank == kWholeRank ? Part::claim(candidate.paths, error) : nullptr;
    if (!part) continue;
    std::error_code ignored;
    fs::remove(candidate.paths.state(), ignored);
    fs::remove(candidate.paths.bytes(), ignored);
  }
}

// Something else than a file has the name: a folder, a link, a device that is not there.
bool isInTheWay(int error) { return error == EISDIR || error == ELOOP || error == ENXIO; }

std::unique_ptr<Part> claimNew(const DownloadRequest& request, const std::string& key, int& error) {
  for (unsigned number = 1; number <= kMostPartsOfOnePlace; ++number) {
    const PartPaths paths = numberedPart(request.downloads, key, number);
    std::error_code ignored;
    if (fs::exists(paths.state(), ignored)) continue;
    std::unique_ptr<Part> part = Part::claim(paths, error);
    if (part && part->isNew()) return part;
    if (error != 0 && !isInTheWay(error)) return nullptr;
  }
  error = EEXIST;
  return nullptr;
}

}  // namespace

Opened openPart(const DownloadRequest& request) {
  int error = makePrivateFolders(request.downloads);
  if (error == 0) error = writeError(request.downloads);
  if (error != 0) return failed(TransferFailure::kTempFolder, request.downloads, error);
  const fs::path folder = request.path().parent_path();
  error = makeFolders(folder);
  if (error == 0) error = writeError(folder);
  if (error != 0) return failed(TransferFailure::kMediaFolder, folder, error);
  const std::string key = digestOf(request.address.place);
  if (auto film = findPlacedFilm(request)) {
    deleteWholeParts(request, key);
    return {nullptr, *std::move(film), TransferFailure::kNone, {}};
  }
  std::unique_ptr<Part> part = claimKnown(request, key, error);
  if (!part) part = claimNew(request, key, error);
  if (part) error = part->adopt(request.address);
  if (error != 0) return failed(TransferFailure::kTempFolder, request.downloads, error);
  return {std::move(part), {}, TransferFailure::kNone, {}};
}

}  // namespace playerx::transfers
