#include "playerx/transfers/PartFile.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "playerx/platform/FileIo.h"

namespace playerx::transfers {
namespace {

// Large writes are cheap, small ones are not: libcurl hands over 16 KiB at a time.
constexpr std::size_t kWriteBuffer = std::size_t{256} << 10U;
constexpr std::uint64_t kMostLeftFree = 256'000'000;

bool cannotReserve(int error) {
  return error == EOPNOTSUPP || error == ENOSYS || error == EINVAL || error == ENODEV;
}

}  // namespace

PartFile::PartFile(Descriptor file, std::uint64_t size) : file_(std::move(file)), written_(size) {}

int PartFile::append(const char* data, std::size_t length) {
  if (buffer_.capacity() == 0) buffer_.reserve(kWriteBuffer);
  if (buffer_.size() + length > kWriteBuffer) {
    if (const int error = flush(); error != 0) return error;
  }
  if (length < kWriteBuffer) {
    buffer_.insert(buffer_.end(), data, data + length);
    return 0;
  }
  return write(data, length);
}

int PartFile::flush() {
  if (buffer_.empty()) return 0;
  const int error = write(buffer_.data(), buffer_.size());
  buffer_.clear();
  return error;
}

int PartFile::write(const char* data, std::size_t length) {
  if (written_ + length > reserved_ && !leavesRoom(length)) return ENOSPC;
  const IoResult put = writeFullyAt(file_.get(), data, length, static_cast<std::int64_t>(written_));
  written_ += put.bytes;
  return put.error;
}

// Where the system cannot tell, the disk itself says when it is full.
bool PartFile::leavesRoom(std::uint64_t bytes) const {
  struct statvfs disk {};
  if (::fstatvfs(file_.get(), &disk) != 0) return true;
  const std::uint64_t leftFree =
      std::min<std::uint64_t>(disk.f_blocks * disk.f_frsize / 100, kMostLeftFree);
  const std::uint64_t available = disk.f_bavail * disk.f_frsize;
  return available >= leftFree && bytes <= available - leftFree;
}

int PartFile::cut(std::uint64_t size) {
  buffer_.clear();
  if (size == written_ && reserved_ == 0) return 0;
  if (::ftruncate(file_.get(), static_cast<off_t>(size)) != 0) return errno;
  written_ = size;
  reserved_ = 0;
  return 0;
}

int PartFile::reserve(std::uint64_t total) {
  if (const int error = flush(); error != 0) return error;
  if (total <= written_) return 0;
  if (total > static_cast<std::uint64_t>(INT64_MAX)) return EFBIG;
  if (!leavesRoom(total - written_)) return ENOSPC;
  if (total < kLargeFilm) return 0;
  int error = 0;
  do {
    const int result = ::fallocate(file_.get(), FALLOC_FL_KEEP_SIZE, static_cast<off_t>(written_),
                                   static_cast<off_t>(total - written_));
    error = result == 0 ? 0 : errno;
  } while (error == EINTR);
  if (cannotReserve(error)) return 0;
  reserved_ = total;
  if (error != 0) releaseReserve();  // one that failed may have taken all that was left
  return error;
}

void PartFile::releaseReserve() {
  if (std::exchange(reserved_, 0) <= written_) return;
  // Cutting a file to the size that it has frees what lies behind its end.
  if (::ftruncate(file_.get(), static_cast<off_t>(written_)) != 0) errno = 0;
}

bool PartFile::read(std::uint64_t offset, char* data, std::size_t length) {
  if (flush() != 0 || offset > written_ || length > written_ - offset) return false;
  return readFullyAt(file_.get(), data, length, static_cast<std::int64_t>(offset)).bytes == length;
}

int PartFile::sync() const { return ::fdatasync(file_.get()) == 0 ? 0 : errno; }

}  // namespace playerx::transfers
