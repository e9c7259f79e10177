#include "playerx/transfers/FilmCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/HiddenFile.h"
#include "playerx/platform/Rename.h"

namespace playerx::transfers {

namespace fs = std::filesystem;

int copyFilm(const fs::path& from, const fs::path& to, const FilmMark& mark,
             const std::atomic<bool>& isCancelled) {
  if (isTaken(to)) return EEXIST;
  const Descriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (!source) return errno;
  removeLeftovers(to);
  int error = 0;
  HiddenFile copy = HiddenFile::create(to, error);
  if (error != 0) return error;
  // Without extended attributes the film does without its mark.
  if (const int unmarked = writeMark(copy.descriptor(), mark); unmarked != 0) errno = 0;
  error = copyRest(source.get(), copy.descriptor(), isCancelled);
  struct stat status {};
  if (::fstat(source.get(), &status) == 0) {
    setPermissions(copy.descriptor(), status.st_mode & 0777U);
  }
  if (error == 0 && ::fsync(copy.descriptor()) != 0) error = errno;
  return error == 0 ? copy.claim(to) : error;
}

}  // namespace playerx::transfers
