#include "playerx/platform/FileMove.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/HiddenFile.h"
#include "playerx/platform/Rename.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;

int copyModeAndTimes(const struct stat& from, int to) {
  const struct timespec times[] = {from.st_atim, from.st_mtim};
  setPermissions(to, from.st_mode & 0777U);
  if (::futimens(to, times) != 0) errno = 0;
  return ::fsync(to) == 0 ? 0 : errno;
}

// Undoes the copy when the original cannot be removed, so that there is never one file too many.
int removeOriginal(const fs::path& from, const fs::path& copy) {
  if (::unlink(from.c_str()) == 0) return 0;
  const int error = errno;
  ::unlink(copy.c_str());
  return error;
}

}  // namespace

int moveFileByCopying(const fs::path& from, const fs::path& to) {
  if (isTaken(to)) return EEXIST;
  const Descriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!source) return errno;
  struct stat status {};
  if (::fstat(source.get(), &status) != 0) return errno;
  if (!S_ISREG(status.st_mode)) return EINVAL;
  removeLeftovers(to);
  int error = 0;
  HiddenFile copy = HiddenFile::create(to, error);
  if (error == 0) error = copyRest(source.get(), copy.descriptor());
  if (error == 0) error = copyModeAndTimes(status, copy.descriptor());
  if (error == 0) error = copy.claim(to);
  if (error != 0) return error;
  syncFolderOf(to);
  return removeOriginal(from, to);
}

int moveFileWithoutOverwriting(const fs::path& from, const fs::path& to) {
  struct stat status {};
  if (::lstat(from.c_str(), &status) != 0) return errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  const int error = renameWithoutOverwriting(from, to);
  return error == EXDEV ? moveFileByCopying(from, to) : error;
}

}  // namespace playerx
