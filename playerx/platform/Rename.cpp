#include "playerx/platform/Rename.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "playerx/platform/Descriptor.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;

// Whether the file system does not support the method, rather than this file or name.
bool isUnsupported(int error) {
  return error == EINVAL || error == ENOSYS || error == EPERM || error == EOPNOTSUPP ||
         error == EMLINK;
}

// Removes the new name again, so that a failure changes nothing.
int undo(const fs::path& added) {
  const int error = errno;
  ::unlink(added.c_str());
  return error;
}

}  // namespace

bool isTaken(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

int renameInOneStep(const fs::path& from, const fs::path& to) {
  const int result = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
  return result == 0 ? 0 : errno;
}

int renameBySecondName(const fs::path& from, const fs::path& to) {
  if (::link(from.c_str(), to.c_str()) != 0) return errno;
  return ::unlink(from.c_str()) == 0 ? 0 : undo(to);
}

int renameOntoPlaceholder(const fs::path& from, const fs::path& to) {
  const Descriptor placeholder(
      ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!placeholder) return errno;
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : undo(to);
}

int renameWithoutOverwriting(const fs::path& from, const fs::path& to) {
  int error = renameInOneStep(from, to);
  if (isUnsupported(error)) error = renameBySecondName(from, to);
  if (isUnsupported(error)) error = renameOntoPlaceholder(from, to);
  return error;
}

int exchangeNames(const fs::path& one, const fs::path& other) {
  const int result = ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
  return result == 0 ? 0 : errno;
}

}  // namespace playerx
