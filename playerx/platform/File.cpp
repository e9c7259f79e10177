#include "kvpm/File.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <limits>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/FileSync.h"
#include "playerx/platform/NativePath.h"
#include "playerx/platform/ReplacementFile.h"

namespace kvpm {
namespace {

// Does not wait for the other end of a pipe, as opening one otherwise would.
playerx::Descriptor openForReading(const std::filesystem::path& path, int& error) {
  playerx::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  const bool known = file && ::fstat(file.get(), &status) == 0;
  error = known ? 0 : errno;
  if (known && S_ISDIR(status.st_mode)) error = EISDIR;
  if (error != 0) return {};
  ::fcntl(file.get(), F_SETFL, 0);
  return file;
}

std::int64_t count(std::size_t bytes) { return static_cast<std::int64_t>(bytes); }

std::size_t clamped(std::uint64_t length) {
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  return static_cast<std::size_t>(length < kMost ? length : kMost);
}

}  // namespace

struct File::Impl {
  playerx::Descriptor reading;
  std::unique_ptr<playerx::ReplacementFile> writing;
  std::int64_t written = 0;
  int failure = 0;  // the first failed write or sync of the present writing
  bool syncing = false;
};

File::File() : impl_(std::make_unique<Impl>()) {}

File::~File() = default;

int File::open(const std::wstring& path, FileOpenMode mode) {
  *impl_ = Impl();
  const auto native = playerx::nativePath(path);
  if (!native) return EINVAL;
  int error = 0;
  if (mode == FileOpenRead) {
    impl_->reading = openForReading(*native, error);
    return error;
  }
  const std::filesystem::path target = playerx::followLinks(*native, error);
  if (error == 0) impl_->writing = playerx::ReplacementFile::create(target, error);
  return error;
}

std::int64_t File::getTotalSize() const {
  if (impl_->writing) return impl_->written;
  struct stat status {};
  if (!impl_->reading || ::fstat(impl_->reading.get(), &status) != 0) return -1;
  return S_ISREG(status.st_mode) ? std::int64_t{status.st_size} : -1;
}

std::int64_t File::read(void* buffer, std::uint64_t length) {
  if (!impl_->reading) return -1;
  const playerx::IoResult got = playerx::readFully(impl_->reading.get(), buffer, clamped(length));
  return got.error != 0 && got.bytes == 0 ? -1 : count(got.bytes);
}

std::int64_t File::write(const void* buffer, std::uint64_t length) {
  if (!impl_->writing || impl_->failure != 0) return -1;
  const playerx::IoResult put =
      playerx::writeFully(impl_->writing->descriptor(), buffer, clamped(length));
  impl_->failure = put.error;
  impl_->written += count(put.bytes);
  return put.error != 0 && put.bytes == 0 ? -1 : count(put.bytes);
}

int File::sync() {
  if (!impl_->writing) return EBADF;
  if (impl_->failure == 0 && ::fsync(impl_->writing->descriptor()) != 0) impl_->failure = errno;
  impl_->syncing = true;
  return impl_->failure;
}

int File::close() {
  const std::unique_ptr<Impl> ended = std::exchange(impl_, std::make_unique<Impl>());
  if (!ended->writing) return 0;
  if (ended->failure != 0) return ended->failure;
  const int error = ended->writing->replace();
  if (error != 0) return error;
  playerx::syncSoon(ended->writing->target());
  if (ended->syncing) playerx::flushFileSyncs();
  return 0;
}

}  // namespace kvpm
