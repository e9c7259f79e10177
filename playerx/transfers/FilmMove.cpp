#include "playerx/transfers/FilmMove.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/FileSync.h"
#include "playerx/platform/Rename.h"
#include "playerx/platform/ReplacementFile.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = std::size_t{4} << 20U;

int copyUnlessGivenUp(int from, int to, const std::atomic<bool>& giveUp) {
  std::vector<char> buffer(kPiece);
  while (!giveUp) {
    const IoResult got = readFully(from, buffer.data(), buffer.size());
    if (got.error != 0) return got.error;
    if (got.bytes == 0) return 0;
    const IoResult put = writeFully(to, buffer.data(), got.bytes);
    if (put.error != 0) return put.error;
  }
  return ECANCELED;
}

int copyToDisk(int from, int to, const std::atomic<bool>& giveUp) {
  const int error = copyUnlessGivenUp(from, to, giveUp);
  if (error != 0) return error;
  return ::fsync(to) == 0 ? 0 : errno;
}

int moveByCopy(const fs::path& from, const fs::path& to, const MoveGuide& guide) {
  const Descriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (!source) return errno;
  removeLeftovers(to);
  int error = 0;
  const std::unique_ptr<ReplacementFile> copy = ReplacementFile::create(to, error);
  if (!copy) return error;
  error = copyToDisk(source.get(), copy->descriptor(), guide.giveUp);
  struct stat status {};
  if (error == 0 && ::fstat(copy->descriptor(), &status) != 0) error = errno;
  if (error == 0) error = guide.beforeAppearing(status.st_ino);
  if (error == 0) error = copy->claim();
  if (error != 0) return error;
  syncFolderOf(to);
  // The film is in its place; what cannot be removed here only costs space.
  if (::unlink(from.c_str()) != 0) errno = 0;
  return 0;
}

// Without a second name either, only a copy is left.
bool copyHelps(int error) { return error == EXDEV || error == EPERM || error == EOPNOTSUPP; }

}  // namespace

int moveFilm(const fs::path& from, const fs::path& to, const MoveGuide& guide) {
  struct stat film {
  }, taken{};
  if (::lstat(to.c_str(), &taken) == 0) return EEXIST;
  if (::lstat(from.c_str(), &film) != 0) return errno;
  if (guide.giveUp) return ECANCELED;
  if (const int error = guide.beforeAppearing(film.st_ino); error != 0) return error;
  const int error = renameWithoutOverwriting(from, to);
  return copyHelps(error) ? moveByCopy(from, to, guide) : error;
}

}  // namespace playerx::transfers
