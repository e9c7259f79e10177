#include "playerx/transfers/SmallFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/HiddenFile.h"

namespace playerx::transfers {
namespace {

constexpr std::size_t kMostBytes = std::size_t{1} << 20U;

}  // namespace

int replaceSmallFile(const std::filesystem::path& file, std::string_view content) {
  int error = 0;
  HiddenFile fresh = HiddenFile::create(file, error);
  if (error != 0) return error;
  if (::fchmod(fresh.descriptor(), S_IRUSR | S_IWUSR) != 0) errno = 0;
  error = writeFully(fresh.descriptor(), content.data(), content.size()).error;
  return error == 0 ? fresh.replace(file) : error;
}

std::string readSmallFile(const std::filesystem::path& file) {
  const Descriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!opened) return {};
  std::string content(kMostBytes, '\0');
  const IoResult got = readFully(opened.get(), content.data(), content.size());
  content.resize(got.error == 0 ? got.bytes : 0);
  return content;
}

}  // namespace playerx::transfers
