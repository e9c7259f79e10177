#include "playerx/transfers/PartFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace playerx::transfers {
namespace {

// Large writes are cheap, small ones are not: the network's library hands over 16 KiB at a time.
constexpr std::size_t kBufferSize = std::size_t{256} << 10U;

bool cannotReserve(int error) {
  return error == EOPNOTSUPP || error == ENOSYS || error == EINVAL || error == ENODEV;
}

// Stores in `*length` how much was written.
int writeAt(int file, std::uint64_t offset, const char* data, std::size_t* length) {
  std::size_t done = 0;
  int error = 0;
  while (done < *length && error == 0) {
    const ssize_t written =
        ::pwrite(file, data + done, *length - done, static_cast<off_t>(offset + done));
    if (written >= 0) done += static_cast<std::size_t>(written);
    if (written == 0) error = EIO;
    if (written < 0 && errno != EINTR) error = errno;
  }
  *length = done;
  return error;
}

}  // namespace

PartFile::PartFile(Descriptor file, std::uint64_t size) : file_(std::move(file)), written_(size) {}

int PartFile::append(const char* data, std::size_t length) {
  if (buffer_.capacity() == 0) buffer_.reserve(kBufferSize);
  if (buffer_.size() + length > kBufferSize) {
    if (const int error = flush(); error != 0) return error;
  }
  if (length < kBufferSize) {
    buffer_.insert(buffer_.end(), data, data + length);
    return 0;
  }
  const int error = writeAt(file_.get(), written_, data, &length);
  written_ += length;
  return error;
}

int PartFile::flush() {
  if (buffer_.empty()) return 0;
  std::size_t length = buffer_.size();
  const int error = writeAt(file_.get(), written_, buffer_.data(), &length);
  written_ += length;
  buffer_.clear();
  return error;
}

int PartFile::cut(std::uint64_t size) {
  buffer_.clear();
  if (::ftruncate(file_.get(), static_cast<off_t>(size)) != 0) return errno;
  written_ = size;
  return 0;
}

int PartFile::reserve(std::uint64_t total) {
  if (const int error = flush(); error != 0) return error;
  if (total <= written_) return 0;
  if (total > static_cast<std::uint64_t>(INT64_MAX)) return EFBIG;
  int error = 0;
  do {
    const int result = ::fallocate(file_.get(), FALLOC_FL_KEEP_SIZE, static_cast<off_t>(written_),
                                   static_cast<off_t>(total - written_));
    error = result == 0 ? 0 : errno;
  } while (error == EINTR);
  if (error == 0 || cannotReserve(error)) return 0;
  giveBack();  // a reservation that failed may have taken all that was left
  return error;
}

void PartFile::giveBack() {
  // Cutting a file to the size that it has frees what lies behind its end.
  if (::ftruncate(file_.get(), static_cast<off_t>(written_)) != 0) errno = 0;
}

bool PartFile::read(std::uint64_t offset, char* data, std::size_t length) {
  if (flush() != 0 || offset > written_ || length > written_ - offset) return false;
  while (length > 0) {
    const ssize_t got = ::pread(file_.get(), data, length, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    data += got;
    offset += static_cast<std::uint64_t>(got);
    length -= static_cast<std::size_t>(got);
  }
  return true;
}

int PartFile::sync() const { return ::fdatasync(file_.get()) == 0 ? 0 : errno; }

}  // namespace playerx::transfers
