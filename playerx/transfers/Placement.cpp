#include "playerx/transfers/Placement.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "playerx/platform/FileMove.h"
#include "playerx/transfers/FileNames.h"
#include "playerx/transfers/FilmMove.h"
#include "playerx/transfers/SystemError.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kMostVariants = 10'000;

bool isTaken(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

fs::path rightsOf(const fs::path& film) { return film.native() + ".rights"; }

/// One film on its way.
class Placing {
 public:
  Placing(Part& part, const fs::path& film, const Wish& wish, const std::atomic<bool>& giveUp)
      : part_(part),
        film_(film),
        wish_(wish),
        giveUp_(giveUp),
        hasRights_(isTaken(part.paths().rights()) || (!film.empty() && isTaken(rightsOf(film)))) {}

  Placed run() {
    if (const int error = settleBytes(); error != 0) {
      return failed(part_.paths().bytes(), error, TransferFailure::kWriteFailed);
    }
    for (unsigned number = 1; number <= kMostVariants; ++number) {
      const fs::path target =
          wish_.movies / (number == 1 ? wish_.name : numberedName(wish_.name, number));
      const int error = tryTarget(target);
      if (error == 0) return done(target);
      if (error == ECANCELED) return {Placed::Kind::kGivenUp, {}, TransferFailure::kNone, {}};
      if (error != EEXIST) return failed(target, error, TransferFailure::kMediaFolder);
    }
    return failed(wish_.path(), EEXIST, TransferFailure::kMediaFolder);
  }

 private:
  bool isPlacedAlready() const { return !film_.empty(); }

  int settleBytes() {
    if (isPlacedAlready()) return 0;
    if (const int error = part_.file().flush(); error != 0) return error;
    part_.file().giveBack();
    return part_.file().sync();
  }

  int tryTarget(const fs::path& target) {
    if (target == film_) return 0;
    if (isTaken(target) || (hasRights_ && isTaken(rightsOf(target)))) return EEXIST;
    const fs::path source = isPlacedAlready() ? film_ : part_.paths().bytes();
    const std::uint64_t size = isPlacedAlready() ? part_.state().size : part_.file().size();
    const auto announce = [&](std::uint64_t inode) {
      return part_.announceMove(target, film_, wish_.name, size, inode);
    };
    return moveFilm(source, target, {giveUp_, announce});
  }

  // New rights data is for this film and takes the place of what an earlier session has put there.
  int placeRights(const fs::path& target) {
    const fs::path fresh = part_.paths().rights();
    const fs::path old = isPlacedAlready() ? rightsOf(film_) : fs::path();
    const bool isFresh = isTaken(fresh);
    if (isFresh && !old.empty()) ::unlink(old.c_str());
    const fs::path& source = isFresh ? fresh : old;
    const fs::path place = rightsOf(target);
    if (source.empty() || source == place || !isTaken(source)) return 0;
    return moveFileWithoutOverwriting(source, place);
  }

  Placed done(const fs::path& target) {
    part_.placed();
    if (const int error = placeRights(target); error != 0) {
      return failed(rightsOf(target), error, TransferFailure::kMediaFolder);
    }
    return {Placed::Kind::kDone, target, TransferFailure::kNone, {}};
  }

  static Placed failed(const fs::path& where, int error, TransferFailure otherwise) {
    return {
        Placed::Kind::kFailed, {}, failureOfError(error, otherwise), describeError(where, error)};
  }

  Part& part_;
  const fs::path& film_;
  const Wish& wish_;
  const std::atomic<bool>& giveUp_;
  const bool hasRights_;
};

}  // namespace

Placed placeFilm(Part& part, const fs::path& film, const Wish& wish,
                 const std::atomic<bool>& giveUp) {
  return Placing(part, film, wish, giveUp).run();
}

}  // namespace playerx::transfers
