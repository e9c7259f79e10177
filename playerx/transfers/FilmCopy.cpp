#include "playerx/transfers/FilmCopy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/HiddenFile.h"
#include "playerx/platform/Rename.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = std::size_t{4} << 20U;

int copyBytes(int from, int to, const std::atomic<bool>& isCancelled) {
  std::vector<char> buffer(kPiece);
  while (!isCancelled) {
    const IoResult got = readFully(from, buffer.data(), buffer.size());
    if (got.error != 0) return got.error;
    if (got.bytes == 0) return ::fsync(to) == 0 ? 0 : errno;
    const IoResult put = writeFully(to, buffer.data(), got.bytes);
    if (put.error != 0) return put.error;
  }
  return ECANCELED;
}

}  // namespace

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
  error = copyBytes(source.get(), copy.descriptor(), isCancelled);
  return error == 0 ? copy.claim(to) : error;
}

}  // namespace playerx::transfers
