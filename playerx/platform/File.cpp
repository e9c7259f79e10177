#include "kvpm/File.h"

#include <sys/stat.h>

#include <cerrno>
#include <limits>
#include <utility>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/FileSave.h"
#include "playerx/platform/NativePath.h"
#include "playerx/platform/WholeVersion.h"

namespace kvpm {
namespace {

std::int64_t count(std::size_t bytes) { return static_cast<std::int64_t>(bytes); }

std::size_t clamped(std::uint64_t length) {
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  return static_cast<std::size_t>(length < kMost ? length : kMost);
}

}  // namespace

struct File::Impl {
  playerx::Descriptor reading;
  std::unique_ptr<playerx::FileSave> writing;
  std::int64_t written = 0;
  int failure = 0;  // the first failed write or sync of the present writing
};

File::File() : impl_(std::make_unique<Impl>()) {}

File::~File() = default;

int File::open(const std::wstring& path, FileOpenMode mode) {
  *impl_ = Impl();
  const auto native = playerx::nativePath(path);
  if (!native) return EINVAL;
  if (native->empty()) return ENOENT;
  int error = 0;
  if (mode == FileOpenRead) {
    impl_->reading = playerx::openWhole(*native, error);
    return error;
  }
  const std::filesystem::path target = playerx::followLinks(*native, error);
  if (error == 0) impl_->writing = playerx::FileSave::begin(target, error);
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

void File::expectChange(std::uint64_t begin, std::uint64_t end) {
  if (impl_->writing) impl_->writing->expectChange(clamped(begin), clamped(end));
}

std::int64_t File::write(const void* buffer, std::uint64_t length) {
  if (!impl_->writing || impl_->failure != 0) return -1;
  const playerx::IoResult put =
      impl_->writing->write(static_cast<const char*>(buffer), clamped(length));
  impl_->failure = put.error;
  impl_->written += count(put.bytes);
  return put.error != 0 && put.bytes == 0 ? -1 : count(put.bytes);
}

int File::sync() {
  if (!impl_->writing) return EBADF;
  if (impl_->failure == 0) impl_->failure = impl_->writing->sync();
  return impl_->failure;
}

int File::close() {
  const std::unique_ptr<Impl> ended = std::exchange(impl_, std::make_unique<Impl>());
  if (!ended->writing) return 0;
  return ended->failure != 0 ? ended->failure : ended->writing->finish();
}

}  // namespace kvpm
