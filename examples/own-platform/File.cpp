// Files on POSIX and QSaveFile. Simpler than the player's: `close` waits for the disk.

#include "kvpm/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QSaveFile>
#include <cerrno>

namespace kvpm {

struct File::Impl {
  int reading = -1;
  std::unique_ptr<QSaveFile> writing;
};

File::File() : impl_(std::make_unique<Impl>()) {}

File::~File() {
  if (impl_->reading >= 0) ::close(impl_->reading);
}

int File::open(const std::wstring& path, FileOpenMode mode) {
  if (impl_->reading >= 0) ::close(std::exchange(impl_->reading, -1));
  impl_->writing.reset();
  const QString name = QString::fromStdWString(path);
  if (mode == FileOpenRead) {
    impl_->reading = ::open(name.toUtf8().constData(), O_RDONLY | O_CLOEXEC);
    return impl_->reading < 0 ? errno : 0;
  }
  auto file = std::make_unique<QSaveFile>(name);
  if (!file->open(QIODevice::WriteOnly)) return EACCES;
  impl_->writing = std::move(file);
  return 0;
}

std::int64_t File::getTotalSize() const {
  if (impl_->writing) return impl_->writing->size();
  struct stat status {};
  if (impl_->reading < 0 || ::fstat(impl_->reading, &status) != 0) return -1;
  return status.st_size;
}

std::int64_t File::read(void* buffer, std::uint64_t length) {
  return ::read(impl_->reading, buffer, length);
}

// A hint alone: here every file is written whole.
void File::expectChange(std::uint64_t, std::uint64_t) {}

std::int64_t File::write(const void* buffer, std::uint64_t length) {
  if (!impl_->writing) return -1;
  return impl_->writing->write(static_cast<const char*>(buffer), static_cast<qint64>(length));
}

int File::sync() {
  if (!impl_->writing) return EBADF;
  return impl_->writing->flush() ? 0 : EIO;  // the rest is done by `close`
}

int File::close() {
  if (impl_->reading >= 0) ::close(std::exchange(impl_->reading, -1));
  const auto file = std::exchange(impl_->writing, nullptr);
  return file == nullptr || file->commit() ? 0 : EIO;
}

}  // namespace kvpm
