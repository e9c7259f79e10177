#include "playerx/platform/SmallFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/HiddenFile.h"

namespace playerx {
namespace {

// Opening a pipe would wait for its other end.
Descriptor openRegular(const std::filesystem::path& file, int flags, struct stat& status,
                       int& error) {
  Descriptor opened(::open(file.c_str(), flags | O_CLOEXEC | O_NONBLOCK));
  error = opened && ::fstat(opened.get(), &status) == 0 ? 0 : errno;
  if (error == 0 && !S_ISREG(status.st_mode)) error = EINVAL;
  return error == 0 ? std::move(opened) : Descriptor();
}

}  // namespace

int replaceSmallFile(const std::filesystem::path& file, std::string_view content) {
  int error = 0;
  HiddenFile fresh = HiddenFile::create(file, error);
  if (error != 0) return error;
  // It has the permissions of the file that it replaces, which may have been open to others.
  setPermissions(fresh.descriptor(), kOwnerOnly);
  error = writeFully(fresh.descriptor(), content.data(), content.size()).error;
  return error == 0 ? fresh.replace(file) : error;
}

int appendToSmallFile(const std::filesystem::path& file, std::string_view content) {
  int error = 0;
  struct stat status {};
  const Descriptor opened = openRegular(file, O_WRONLY | O_APPEND | O_NOFOLLOW, status, error);
  // Creating it by its name would follow a link that leads nowhere.
  if (error == ENOENT || error == ELOOP) return replaceSmallFile(file, content);
  // One of an earlier release, or made by hand, may be open to others.
  if (error == 0) setPermissions(opened.get(), kOwnerOnly);
  return error == 0 ? writeFully(opened.get(), content.data(), content.size()).error : error;
}

std::string readSmallFile(const std::filesystem::path& file, std::size_t most) {
  int error = 0;
  struct stat status {};
  const Descriptor opened = openRegular(file, O_RDONLY, status, error);
  if (error != 0) return {};
  std::string content(std::min(static_cast<std::size_t>(status.st_size), most), '\0');
  const IoResult got = readFully(opened.get(), content.data(), content.size());
  content.resize(got.error == 0 ? got.bytes : 0);
  return content;
}

}  // namespace playerx
