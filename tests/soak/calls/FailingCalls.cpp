// Loaded into a program before all other libraries (LD_PRELOAD), it lets one call of the system
// fail. Calls on files count when they are below the folder VESK_CALLS_FOLDER; pthread_create
// always counts.
//
// VESK_CALLS_RECORD   file to which the name of each call that counts is appended, a line each
// VESK_FAILING_CALL   name of the call that fails
// VESK_FAILING_FROM   which one of its calls fails, 1 for the first
// VESK_FAILING_TIMES  how many fail from there on
// VESK_FAILING_ERROR  the error, a number; 0 for half of what was to be written
//
// What fails is recorded with an exclamation mark before its name.

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

class Plan {
 public:
  bool covers(std::string_view path) const {
    return !folder_.empty() && path.starts_with(folder_) && path != record_;
  }

  bool covers(int file) const {
    if (folder_.empty()) return false;
    char path[PATH_MAX];
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    const ssize_t length = ::readlink(link.c_str(), path, sizeof path);
    return length > 0 && covers(std::string_view(path, static_cast<std::size_t>(length)));
  }

  /// Counts a call, and tells whether it is to fail.
  bool fails(const std::string& call) {
    if (folder_.empty()) return false;
    const bool isMeant = call == call_;
    const long number = isMeant ? ++count_ : 0;
    const bool fails = isMeant && number >= from_ && number < from_ + times_;
    note((fails ? "!" : "") + call + "\n");
    return fails;
  }

  int error() const { return error_; }

 private:
  // Past the wrappers.
  void note(const std::string& line) const {
    const long file = ::syscall(SYS_openat, AT_FDCWD, record_.c_str(),
                                O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::syscall(SYS_write, file, line.data(), line.size());
    ::syscall(SYS_close, file);
  }

  const std::string folder_ = variable("VESK_CALLS_FOLDER");
  const std::string record_ = variable("VESK_CALLS_RECORD");
  const std::string call_ = variable("VESK_FAILING_CALL");
  const long from_ = std::atol(variable("VESK_FAILING_FROM").c_str());
  const long times_ = std::atol(variable("VESK_FAILING_TIMES").c_str());
  const int error_ = std::atoi(variable("VESK_FAILING_ERROR").c_str());
  std::atomic<long> count_{0};
};

Plan& plan() {
  static Plan& instance = *new Plan;  // other threads may outlive `main`
  return instance;
}

template <class Where, class Operation>
auto mayFail(const char* call, Where where, Operation operation) -> decltype(operation()) {
  if (!plan().covers(where) || !plan().fails(call)) return operation();
  errno = plan().error();
  return -1;
}

/// The length that is really written; 0 for an error.
template <class Operation>
ssize_t mayWriteLess(const char* call, int file, std::size_t length, Operation operation) {
  if (!plan().covers(file) || !plan().fails(call)) return operation(length);
  if (plan().error() == 0) return operation(length > 1 ? length / 2 : length);
  errno = plan().error();
  return -1;
}

int openThat(const char* name, const char* path, int flags, mode_t mode) {
  return mayFail("open", std::string_view(path),
                 [&] { return next<int(const char*, int, ...)>(name)(path, flags, mode); });
}

int openatThat(const char* name, int folder, const char* path, int flags, mode_t mode) {
  const auto call = [&] {
    return next<int(int, const char*, int, ...)>(name)(folder, path, flags, mode);
  };
  if (path[0] == '/') return mayFail("open", std::string_view(path), call);
  return mayFail("open", folder, call);
}

mode_t modeOf(int flags, va_list rest) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = modeOf(flags, rest);
  va_end(rest);
  return openThat("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = modeOf(flags, rest);
  va_end(rest);
  return openThat("open64", path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = modeOf(flags, rest);
  va_end(rest);
  return openatThat("openat", folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = modeOf(flags, rest);
  va_end(rest);
  return openatThat("openat64", folder, path, flags, mode);
}

ssize_t write(int file, const void* bytes, std::size_t length) {
  return mayWriteLess("write", file, length, [&](std::size_t some) {
    return next<ssize_t(int, const void*, std::size_t)>("write")(file, bytes, some);
  });
}

ssize_t pwrite(int file, const void* bytes, std::size_t length, off_t at) {
  return mayWriteLess("write", file, length, [&](std::size_t some) {
    return next<ssize_t(int, const void*, std::size_t, off_t)>("pwrite")(file, bytes, some, at);
  });
}

ssize_t pwrite64(int file, const void* bytes, std::size_t length, off_t at) {
  return mayWriteLess("write", file, length, [&](std::size_t some) {
    return next<ssize_t(int, const void*, std::size_t, off_t)>("pwrite64")(file, bytes, some, at);
  });
}

ssize_t read(int file, void* bytes, std::size_t length) {
  return mayFail("read", file, [&] {
    return next<ssize_t(int, void*, std::size_t)>("read")(file, bytes, length);
  });
}

ssize_t pread(int file, void* bytes, std::size_t length, off_t at) {
  return mayFail("read", file, [&] {
    return next<ssize_t(int, void*, std::size_t, off_t)>("pread")(file, bytes, length, at);
  });
}

ssize_t pread64(int file, void* bytes, std::size_t length, off_t at) {
  return mayFail("read", file, [&] {
    return next<ssize_t(int, void*, std::size_t, off_t)>("pread64")(file, bytes, length, at);
  });
}

int fsync(int file) {
  return mayFail("fsync", file, [&] { return next<int(int)>("fsync")(file); });
}

int fdatasync(int file) {
  return mayFail("fsync", file, [&] { return next<int(int)>("fdatasync")(file); });
}

int ftruncate(int file, off_t size) noexcept {
  return mayFail("ftruncate", file, [&] { return next<int(int, off_t)>("ftruncate")(file, size); });
}

int ftruncate64(int file, off_t size) noexcept {
  return mayFail("ftruncate", file,
                 [&] { return next<int(int, off_t)>("ftruncate64")(file, size); });
}

int fallocate(int file, int mode, off_t at, off_t length) {
  return mayFail("fallocate", file, [&] {
    return next<int(int, int, off_t, off_t)>("fallocate")(file, mode, at, length);
  });
}

int fallocate64(int file, int mode, off_t at, off_t length) {
  return mayFail("fallocate", file, [&] {
    return next<int(int, int, off_t, off_t)>("fallocate64")(file, mode, at, length);
  });
}

int rename(const char* from, const char* to) noexcept {
  return mayFail("rename", std::string_view(to),
                 [&] { return next<int(const char*, const char*)>("rename")(from, to); });
}

int renameat2(int oldFolder, const char* from, int newFolder, const char* to,
              unsigned flags) noexcept {
  return mayFail("rename", std::string_view(to), [&] {
    return next<int(int, const char*, int, const char*, unsigned)>("renameat2")(
        oldFolder, from, newFolder, to, flags);
  });
}

int unlink(const char* path) noexcept {
  return mayFail("unlink", std::string_view(path),
                 [&] { return next<int(const char*)>("unlink")(path); });
}

int mkdir(const char* path, mode_t mode) noexcept {
  return mayFail("mkdir", std::string_view(path),
                 [&] { return next<int(const char*, mode_t)>("mkdir")(path, mode); });
}

int fsetxattr(int file, const char* name, const void* value, std::size_t size, int flags) noexcept {
  return mayFail("fsetxattr", file, [&] {
    return next<int(int, const char*, const void*, std::size_t, int)>("fsetxattr")(
        file, name, value, size, flags);
  });
}

// The descriptor is closed all the same, as the system does it.
int close(int file) {
  const bool isCovered = plan().covers(file);
  const int result = next<int(int)>("close")(file);
  if (!isCovered || !plan().fails("close")) return result;
  errno = plan().error();
  return -1;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) {
  if (plan().fails("pthread_create")) return EAGAIN;
  return next<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create")(
      thread, attributes, body, argument);
}

}  // extern "C"
