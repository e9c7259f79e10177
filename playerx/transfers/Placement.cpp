#include "playerx/transfers/Placement.h"

#include <fcntl.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QFile>
#include <cerrno>
#include <string_view>

#include "playerx/platform/FileMove.h"
#include "playerx/platform/FileSync.h"
#include "playerx/platform/HiddenFile.h"
#include "playerx/platform/Rename.h"
#include "playerx/platform/SmallFile.h"
#include "playerx/transfers/FileNames.h"
#include "playerx/transfers/FilmCopy.h"
#include "playerx/transfers/SystemError.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kMostVariants = 10'000;

bool needsCopy(int error) { return error == EXDEV || error == EPERM || error == EOPNOTSUPP; }

fs::path rightsOf(const fs::path& film) { return film.native() + kRightsSuffix; }

/// One film on its way from `source` to where it was requested.
class Placing {
 public:
  Placing(fs::path source, fs::path oldRights, const DownloadRequest& request,
          const std::atomic<bool>& isCancelled, Waiting waiting)
      : source_(std::move(source)),
        oldRights_(std::move(oldRights)),
        request_(request),
        isCancelled_(isCancelled),
        mayCopy_(waiting == Waiting::kAllowed),
        hasRights_(!request.rights.empty() || (!oldRights_.empty() && isTaken(oldRights_))) {}

  Placed run() {
    for (unsigned number = 1; number <= kMostVariants; ++number) {
      const fs::path target =
          request_.movies / (number == 1 ? request_.name : numberedName(request_.name, number));
      const int error = tryTarget(target);
      if (error == 0) return done(target);
      if (error == ECANCELED) return {Placed::Kind::kCancelled, {}, TransferFailure::kNone, {}};
      if (needsCopy(error)) return {Placed::Kind::kMustWait, {}, TransferFailure::kNone, {}};
      if (error != EEXIST) return failed(target, error, TransferFailure::kMediaFolder);
    }
    return failed(request_.path(), EEXIST, TransferFailure::kMediaFolder);
  }

  static Placed failed(const fs::path& where, int error, TransferFailure otherwise) {
    return {
        Placed::Kind::kFailed, {}, failureOfError(error, otherwise), describeError(where, error)};
  }

 private:
  int tryTarget(const fs::path& target) const {
    if (isCancelled_) return ECANCELED;
    if (target == source_) return 0;
    if (hasRights_ && isTaken(rightsOf(target))) return EEXIST;
    const int error = renameWithoutOverwriting(source_, target);
    return needsCopy(error) && mayCopy_ ? copy(target) : error;
  }

  int copy(const fs::path& target) const {
    FilmMark mark = readMark(source_).value_or(FilmMark{});
    mark.boot.clear();
    if (const int error = copyFilm(source_, target, mark, isCancelled_); error != 0) return error;
    // The film is in its place; what cannot be deleted here only costs space.
    if (::unlink(source_.c_str()) != 0) errno = 0;
    return 0;
  }

  Placed done(const fs::path& target) const {
    // On the disk before what is then saved of the completion: see docs/durability.md. The content
    // is there already, whether the film was renamed or copied.
    syncNameSoon(target);
    if (const int error = placeRights(target); error != 0) {
      return failed(rightsOf(target), error, TransferFailure::kMediaFolder);
    }
    return {Placed::Kind::kDone, target, TransferFailure::kNone, {}};
  }

  // New rights data is for this film and replaces what an earlier session has put beside it.
  int placeRights(const fs::path& target) const {
    const fs::path place = rightsOf(target);
    if (request_.rights.empty()) {
      if (!hasRights_ || place == oldRights_) return 0;
      return moveFileWithoutOverwriting(oldRights_, place);
    }
    if (!oldRights_.empty() && place != oldRights_) ::unlink(oldRights_.c_str());
    removeLeftovers(place);
    const std::string_view content(reinterpret_cast<const char*>(request_.rights.data()),
                                   request_.rights.size());
    const int error = replaceSmallFile(place, content);
    if (error == 0) syncFileSoon(place);
    return error;
  }

  const fs::path source_;
  const fs::path oldRights_;  ///< empty for a film that was never placed
  const DownloadRequest& request_;
  const std::atomic<bool>& isCancelled_;
  const bool mayCopy_;
  const bool hasRights_;
};

/// Fails unless the bytes of the partial have this sum; then they are gone.
Placed checkSum(Part& part, const std::string& sha256) {
  if (const int error = part.file().flush(); error != 0) {
    return Placing::failed(part.paths().bytes(), error, TransferFailure::kWriteFailed);
  }
  QFile bytes(QFile::decodeName(part.paths().bytes().c_str()));
  QCryptographicHash hash(QCryptographicHash::Sha256);
  if (!bytes.open(QIODevice::ReadOnly) || !hash.addData(&bytes)) {
    return Placing::failed(part.paths().bytes(), EIO, TransferFailure::kWriteFailed);
  }
  const std::string sum = hash.result().toHex().toStdString();
  if (sum == sha256) return {};
  part.drop();
  return {Placed::Kind::kFailed, {}, TransferFailure::kChecksum, "the SHA-256 sum is " + sum};
}

/// Moves a file to the first free one of numbered places, from 1 on. Returns 0 or an error number.
template <class PlaceOf>
int moveToFirstFree(const fs::path& file, PlaceOf placeOf) {
  int error = EEXIST;
  for (unsigned number = 1; number <= kMostVariants && error == EEXIST; ++number) {
    error = renameWithoutOverwriting(file, placeOf(number));
  }
  return error;
}

}  // namespace

Placed placePart(Part& part, const DownloadRequest& request, const std::string& sha256,
                 const std::atomic<bool>& isCancelled, Waiting waiting) {
  if (!sha256.empty()) {
    if (waiting == Waiting::kForbidden) return {Placed::Kind::kMustWait, {}, {}, {}};
    Placed checked = checkSum(part, sha256);
    if (checked.failure != TransferFailure::kNone) return checked;
  }
  if (const int error = part.finish(); error != 0) {
    return Placing::failed(part.paths().bytes(), error, TransferFailure::kWriteFailed);
  }
  Placed placed = Placing(part.paths().bytes(), {}, request, isCancelled, waiting).run();
  if (placed.kind == Placed::Kind::kDone) part.placed();
  return placed;
}

Placed placeFilmAgain(const fs::path& film, const DownloadRequest& request,
                      const std::atomic<bool>& isCancelled, Waiting waiting) {
  return Placing(film, rightsOf(film), request, isCancelled, waiting).run();
}

bool takeBack(const fs::path& film, const fs::path& folder) {
  const std::optional<FilmMark> mark = readMark(film);
  if (!mark) return false;
  const auto partial = [&](unsigned number) {
    return numberedPart(folder, mark->place, number).bytes();
  };
  const auto beside = [&](unsigned number) {
    return film.parent_path() / numberedName(film.filename(), number + 1);
  };
  int error = moveToFirstFree(film, partial);
  // A copy would take its time twice: it would have to come back.
  if (error == EXDEV) error = moveToFirstFree(film, beside);
  if (error == 0) ::unlink(rightsOf(film).c_str());
  return error == 0;
}

bool takeBackFilmOf(const Address& address, const fs::path& movies, const fs::path& folder) {
  const std::string name = fileNameOf(address);
  if (name.find('/') != std::string::npos) return false;
  const fs::path film = movies / name;
  const std::optional<FilmMark> mark = readMark(film);
  return mark && mark->address == digestOf(address.remembered) && takeBack(film, folder);
}

}  // namespace playerx::transfers
