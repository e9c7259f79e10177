#include "playerx/transfers/PartFinder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "playerx/transfers/FileNames.h"
#include "playerx/transfers/SmallFile.h"
#include "playerx/transfers/SystemError.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

constexpr char kStateExtension[] = ".json";
constexpr unsigned kMostPartsOfOnePlace = 10'000;

struct Candidate {
  PartPaths paths;
  PartState state;
  int rank = 0;  ///< the lowest is tried first
};

Opened failed(TransferFailure failure, const fs::path& where, int error) {
  Opened opened;
  opened.failure = failureOfError(error, failure);
  opened.detail = describeError(where, error);
  return opened;
}

bool isFileOfSize(const fs::path& path, std::uint64_t size) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         static_cast<std::uint64_t>(status.st_size) == size;
}

bool isTheMovedFile(const fs::path& path, const PartState& state) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && status.st_ino == state.inode;
}

// Where the film is, when it has left the partial. While the partial is whole too, only the number
// that the file system knows a file by tells ours from a stranger's of the same size.
std::optional<fs::path> findFilm(const PartState& state, bool partIsWhole) {
  if (isFileOfSize(state.target, state.size) &&
      (!partIsWhole || isTheMovedFile(state.target, state))) {
    return state.target;
  }
  if (!state.source.empty() && isFileOfSize(state.source, state.size)) return state.source;
  return std::nullopt;
}

bool partIsWhole(const Candidate& candidate) {
  return isFileOfSize(candidate.paths.bytes(), candidate.state.size);
}

bool isSameAddress(const Wish& wish, const PartState& state) {
  return state.address == wish.address.remembered;
}

// Once noted, a film is asked for again under its old address alone by somebody who has lost the
// note; under a new authorisation it is wanted once more.
bool isSameFilm(const Wish& wish, const PartState& state) {
  if (isSameAddress(wish, state)) return true;
  return wish.rightsManaged && state.place == wish.address.place && !state.noted;
}

std::string nameOf(const std::string& path) { return fs::path(path).filename(); }

bool nameFits(const Wish& wish, const PartState& state) {
  const std::string name = nameOf(wish.name);
  return isNameOrVariant(name, nameOf(state.target)) ||
         isNameOrVariant(name, nameOf(state.wished)) ||
         (!state.source.empty() && isNameOrVariant(name, nameOf(state.source)));
}

enum Rank { kFinishedRank, kArrivedRank, kSameAddressRank, kSamePlaceRank, kUselessRank };

int rankOf(const Wish& wish, const Candidate& candidate) {
  const PartState& state = candidate.state;
  if (!isSameFilm(wish, state)) return kUselessRank;
  if (state.isComplete()) {
    const bool isWhole = partIsWhole(candidate);
    if (findFilm(state, isWhole)) return nameFits(wish, state) ? kFinishedRank : kUselessRank;
    if (isWhole) return kArrivedRank;
  }
  return isSameAddress(wish, state) ? kSameAddressRank : kSamePlaceRank;
}

std::vector<Candidate> readStates(const fs::path& folder, const std::string& keyStart) {
  std::vector<Candidate> candidates;
  std::error_code failure;
  for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    const fs::path& file = entry->path();
    if (file.extension() != kStateExtension) continue;
    if (!file.filename().native().starts_with(keyStart)) continue;
    const auto state = readState(readSmallFile(file));
    if (state) candidates.push_back({{folder, file.stem()}, *state});
  }
  return candidates;
}

bool filmIsGone(const Candidate& candidate) {
  const bool isWhole = partIsWhole(candidate);
  return !isWhole && !findFilm(candidate.state, isWhole);
}

// Only a record without a partial is let go: whoever has the partial is still at work.
void forget(const Candidate& candidate) {
  int error = 0;
  const std::unique_ptr<Part> part = Part::claim(candidate.paths, error);
  if (!part || part->state() != candidate.state) return;
  part->forgetCompletion();
}

void forgetSettled(const Wish& wish) {
  for (const Candidate& candidate : readStates(wish.downloads, "")) {
    const PartState& state = candidate.state;
    if (!state.isComplete() || isSameFilm(wish, state)) continue;
    if (state.noted || filmIsGone(candidate)) forget(candidate);
  }
}

bool makeFolder(const fs::path& folder, int& error) {
  std::error_code failure;
  fs::create_directories(folder, failure);
  error = failure.value();
  if (error == 0 && !fs::is_directory(folder, failure)) error = ENOTDIR;
  if (error == 0 && ::access(folder.c_str(), W_OK | X_OK) != 0) error = errno;
  return error == 0;
}

Opened opened(std::unique_ptr<Part> part, const Wish& wish) {
  Opened result;
  const PartState state = part->state();
  if (state.isComplete()) {
    const bool isWhole = part->file().size() == state.size;
    const auto film = findFilm(state, isWhole);
    if (film) {
      result.kind = Opened::Kind::kFinished;
      result.film = *film;
    } else if (isWhole) {
      result.kind = Opened::Kind::kArrived;
    } else {
      part->forgetCompletion();
    }
  }
  int error = part->adopt(wish.address.remembered, wish.address.place);
  if (error == 0 && !wish.rights.empty()) error = part->keepRights(wish.rights);
  if (error != 0) return failed(TransferFailure::kTempFolder, wish.downloads, error);
  result.part = std::move(part);
  return result;
}

std::unique_ptr<Part> claimKnown(const Wish& wish, int& error) {
  std::vector<Candidate> candidates = readStates(wish.downloads, partKey(wish.address.place));
  for (Candidate& candidate : candidates) candidate.rank = rankOf(wish, candidate);
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) { return a.rank < b.rank; });
  for (const Candidate& candidate : candidates) {
    if (candidate.rank == kUselessRank) break;
    std::unique_ptr<Part> part = Part::claim(candidate.paths, error);
    // Between look and claim somebody else may have finished with it.
    if (part && part->state() == candidate.state) return part;
  }
  return nullptr;
}

// Something else than a file bears the name: a folder, a link, a device that is not there.
bool isInTheWay(int error) { return error == EISDIR || error == ELOOP || error == ENXIO; }

std::unique_ptr<Part> claimNew(const Wish& wish, int& error) {
  const std::string key = partKey(wish.address.place);
  for (unsigned number = 1; number <= kMostPartsOfOnePlace; ++number) {
    const std::string tail = number == 1 ? "" : "-" + std::to_string(number);
    const PartPaths paths{wish.downloads, key + tail};
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

Opened openPart(const Wish& wish) {
  int error = 0;
  if (!makeFolder(wish.downloads, error)) {
    return failed(TransferFailure::kTempFolder, wish.downloads, error);
  }
  if (const fs::path folder = wish.path().parent_path(); !makeFolder(folder, error)) {
    return failed(TransferFailure::kMediaFolder, folder, error);
  }
  forgetSettled(wish);
  std::unique_ptr<Part> part = claimKnown(wish, error);
  if (!part) part = claimNew(wish, error);
  if (!part) return failed(TransferFailure::kTempFolder, wish.downloads, error);
  return opened(std::move(part), wish);
}

void noteCompletion(const PartPaths& paths) {
  int error = 0;
  const std::unique_ptr<Part> part = Part::claim(paths, error);
  if (part && part->state().isComplete()) part->noteCompletion();
}

void forgetNoted(const fs::path& folder) {
  for (const Candidate& candidate : readStates(folder, "")) {
    if (candidate.state.isComplete() && candidate.state.noted) forget(candidate);
  }
}

}  // namespace playerx::transfers
