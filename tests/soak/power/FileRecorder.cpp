// Loaded into a program before all other libraries (LD_PRELOAD), it records in VESK_FILE_RECORD
// what the program does to files below the folder VESK_RECORDED_FOLDER.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "tests/soak/power/FileRecord.h"

namespace {

using power_test::FileOperation;
using power_test::OperationHead;

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// The record; the operations happen under its lock, so that it has their order.
class Record {
 public:
  Record() {
    const char* folder = std::getenv("VESK_RECORDED_FOLDER");
    const char* file = std::getenv("VESK_FILE_RECORD");
    if (folder == nullptr || file == nullptr) return;
    folder_ = std::string(folder) + "/";
    file_ = next<int(const char*, int, ...)>("open")(
        file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  }

  bool covers(std::string_view path) const { return file_ >= 0 && path.starts_with(folder_); }

  bool covers(int file) const {
    char path[PATH_MAX];
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    const ssize_t length = file_ < 0 ? -1 : ::readlink(link.c_str(), path, sizeof path);
    const std::string folder = folder_.substr(0, folder_.size() - 1);
    return length > 0 &&
           std::string_view(path, static_cast<std::size_t>(length)).starts_with(folder);
  }

  std::string nameBelow(std::string_view path) const {
    return std::string(path.substr(folder_.size()));
  }

  /// `payload` is what the operation's kind says.
  void add(FileOperation kind, int file, std::uint64_t number, std::string_view payload) {
    struct stat status {};
    if (file >= 0) ::fstat(file, &status);
    add(kind, status, number, payload);
  }

  void add(FileOperation kind, const struct stat& status, std::uint64_t number,
           std::string_view payload) {
    if (kind == FileOperation::kCreate && number == 1) ++generations_[status.st_ino];
    const OperationHead head = {power_test::now(),
                                kind,
                                fileOf(status.st_ino),
                                static_cast<std::uint64_t>(status.st_size),
                                status.st_mtim.tv_sec,
                                status.st_mtim.tv_nsec,
                                number,
                                payload.size()};
    std::string entry(reinterpret_cast<const char*>(&head), sizeof head);
    entry += payload;
    static const auto write = next<ssize_t(int, const void*, std::size_t)>("write");
    if (write(file_, entry.data(), entry.size()) != static_cast<ssize_t>(entry.size())) ::abort();
    ++count_;
  }

  std::uint64_t count() const { return count_; }
  std::mutex& mutex() { return mutex_; }

 private:
  // The number of a file that was deleted is soon given to another.
  std::uint64_t fileOf(ino_t inode) { return inode << 16U | generations_[inode]; }

  std::mutex mutex_;
  std::map<ino_t, std::uint16_t> generations_;
  std::string folder_;
  int file_ = -1;
  std::uint64_t count_ = 0;
};

Record& record() {
  static Record& instance = *new Record;  // other threads may outlive `main`
  return instance;
}

/// Carries an operation out, and records it if it succeeded.
template <class Operation, class Note>
auto recorded(bool isCovered, Operation operation, Note note) {
  if (!isCovered) return operation();
  const std::lock_guard lock(record().mutex());
  const auto result = operation();
  const int error = errno;
  if (result >= 0) note(result);
  errno = error;
  return result;
}

int openRecorded(const char* name, const char* path, int flags, mode_t mode) {
  const auto open = next<int(const char*, int, ...)>(name);
  const bool isCovered = (flags & O_CREAT) != 0 && record().covers(path);
  bool isNew = false;
  return recorded(
      isCovered,
      [&] {
        isNew = isCovered && ::access(path, F_OK) != 0;
        return open(path, flags, mode);
      },
      [&](int file) {
        record().add(FileOperation::kCreate, file, isNew ? 1 : 0, record().nameBelow(path));
      });
}

ssize_t writeRecorded(const char* name, int file, const void* bytes, std::size_t length, off_t at) {
  const auto write = next<ssize_t(int, const void*, std::size_t, off_t)>(name);
  return recorded(
      record().covers(file), [&] { return write(file, bytes, length, at); },
      [&](ssize_t put) {
        const std::string_view written(static_cast<const char*>(bytes),
                                       static_cast<std::size_t>(put));
        record().add(FileOperation::kWrite, file, static_cast<std::uint64_t>(at), written);
      });
}

int truncateRecorded(const char* name, int file, off_t size) {
  const auto truncate = next<int(int, off_t)>(name);
  return recorded(
      record().covers(file), [&] { return truncate(file, size); },
      [&](int) { record().add(FileOperation::kTruncate, file, 0, {}); });
}

// What was recorded before the sync began is on the disk once it has returned.
int syncRecorded(const char* name, int file) {
  const auto sync = next<int(int)>(name);
  if (!record().covers(file)) return sync(file);
  std::uint64_t before = 0;
  {
    const std::lock_guard lock(record().mutex());
    before = record().count();
  }
  const int result = sync(file);
  const std::lock_guard lock(record().mutex());
  if (result == 0) record().add(FileOperation::kSync, file, before, {});
  return result;
}

std::string bothNames(const char* from, const char* to) {
  return record().nameBelow(from) + '\0' + record().nameBelow(to);
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return openRecorded("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return openRecorded("open64", path, flags, mode);
}

ssize_t write(int file, const void* bytes, std::size_t length) {
  static const auto call = next<ssize_t(int, const void*, std::size_t)>("write");
  return recorded(
      record().covers(file), [&] { return call(file, bytes, length); },
      [&](ssize_t put) {
        const auto end = static_cast<std::uint64_t>(::lseek(file, 0, SEEK_CUR));
        const std::string_view written(static_cast<const char*>(bytes),
                                       static_cast<std::size_t>(put));
        record().add(FileOperation::kWrite, file, end - written.size(), written);
      });
}

ssize_t pwrite(int file, const void* bytes, std::size_t length, off_t at) {
  return writeRecorded("pwrite", file, bytes, length, at);
}

ssize_t pwrite64(int file, const void* bytes, std::size_t length, off_t at) {
  return writeRecorded("pwrite64", file, bytes, length, at);
}

int ftruncate(int file, off_t size) noexcept { return truncateRecorded("ftruncate", file, size); }

int ftruncate64(int file, off_t size) noexcept {
  return truncateRecorded("ftruncate64", file, size);
}

int fsync(int file) { return syncRecorded("fsync", file); }

int fdatasync(int file) { return syncRecorded("fdatasync", file); }

int rename(const char* from, const char* to) noexcept {
  static const auto call = next<int(const char*, const char*)>("rename");
  return recorded(
      record().covers(from), [&] { return call(from, to); },
      [&](int) { record().add(FileOperation::kRename, -1, 0, bothNames(from, to)); });
}

int renameat2(int oldFolder, const char* from, int newFolder, const char* to,
              unsigned flags) noexcept {
  static const auto call = next<int(int, const char*, int, const char*, unsigned)>("renameat2");
  const bool exchanges = (flags & RENAME_EXCHANGE) != 0;
  const auto kind = exchanges ? FileOperation::kExchange : FileOperation::kRename;
  return recorded(
      record().covers(from), [&] { return call(oldFolder, from, newFolder, to, flags); },
      [&](int) { record().add(kind, -1, 0, bothNames(from, to)); });
}

int unlink(const char* path) noexcept {
  static const auto call = next<int(const char*)>("unlink");
  return recorded(
      record().covers(path), [&] { return call(path); },
      [&](int) { record().add(FileOperation::kUnlink, -1, 0, record().nameBelow(path)); });
}

int fsetxattr(int file, const char* name, const void* value, std::size_t size, int flags) noexcept {
  static const auto call = next<int(int, const char*, const void*, std::size_t, int)>("fsetxattr");
  return recorded(
      record().covers(file), [&] { return call(file, name, value, size, flags); },
      [&](int) {
        const std::string_view bytes(static_cast<const char*>(value), size);
        record().add(FileOperation::kSetAttribute, file, 0,
                     std::string(name) + '\0' + std::string(bytes));
      });
}

int fremovexattr(int file, const char* name) noexcept {
  static const auto call = next<int(int, const char*)>("fremovexattr");
  return recorded(
      record().covers(file), [&] { return call(file, name); },
      [&](int) { record().add(FileOperation::kRemoveAttribute, file, 0, name); });
}

int lremovexattr(const char* path, const char* name) noexcept {
  static const auto call = next<int(const char*, const char*)>("lremovexattr");
  return recorded(
      record().covers(path), [&] { return call(path, name); },
      [&](int) {
        struct stat status {};
        ::lstat(path, &status);
        record().add(FileOperation::kRemoveAttribute, status, 0, name);
      });
}

}  // extern "C"
