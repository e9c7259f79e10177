#include "playerx/platform/ReplacementFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <random>
#include <string>
#include <system_error>
#include <utility>

#include "playerx/platform/Rename.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;

constexpr char kSuffix[] = ".new";
constexpr std::size_t kRandomDigits = 16;

fs::path folderOf(const fs::path& target) {
  const fs::path folder = target.parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

// Leaves room below the system's 255 bytes of a name, and never ends within a character.
std::string prefixOf(const fs::path& target) {
  constexpr std::size_t kMostBytes = 200;
  std::string name = target.filename().native();
  if (name.size() > kMostBytes) {
    std::size_t end = kMostBytes;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) --end;
    name.resize(end);
  }
  return "." + name + ".";
}

std::string randomDigits() {
  std::random_device random;
  char digits[kRandomDigits + 1];
  std::snprintf(digits, sizeof digits, "%08x%08x", random(), random());
  return digits;
}

bool isLeftoverName(const std::string& name, const std::string& prefix) {
  constexpr std::size_t kTail = kRandomDigits + sizeof kSuffix - 1;
  if (name.size() != prefix.size() + kTail) return false;
  if (!name.starts_with(prefix) || !name.ends_with(kSuffix)) return false;
  const std::string digits = name.substr(prefix.size(), kRandomDigits);
  return digits.find_first_not_of("0123456789abcdef") == std::string::npos;
}

bool lockFile(int file, int how) {
  while (::flock(file, how) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

// Says whether the file still has its name: a tidier may have come between creation and lock. On a
// file system without locks nobody can tell the writer dead, and the file stays.
bool holdAgainstTidying(int file) {
  lockFile(file, LOCK_EX);
  struct stat status {};
  return ::fstat(file, &status) == 0 && status.st_nlink > 0;
}

// The state of a file that may be replaced; none when there is no file yet.
std::optional<struct stat> replaceableState(const fs::path& target, int& error) {
  struct stat status {};
  error = 0;
  if (::stat(target.c_str(), &status) != 0) {
    if (errno != ENOENT) error = errno;
    return std::nullopt;
  }
  if (S_ISDIR(status.st_mode)) error = EISDIR;
  if (error == 0 && !S_ISREG(status.st_mode)) error = EINVAL;
  if (error == 0 && ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) error = errno;
  return status;
}

// Changing the owner clears marks that permissions carry, so it comes first. A user who may not
// give the file away keeps it; if the group cannot be kept either, it gets what everybody gets.
void takeOverPermissions(int file, const struct stat& from) {
  constexpr auto kSameOwner = static_cast<uid_t>(-1);
  const bool groupKept =
      ::fchown(file, from.st_uid, from.st_gid) == 0 || ::fchown(file, kSameOwner, from.st_gid) == 0;
  const mode_t mode = from.st_mode & 07777U;
  const mode_t everybody = mode & 07U;
  if (::fchmod(file, groupKept ? mode : ((mode & ~070U) | (everybody << 3U))) != 0) errno = 0;
}

struct NamedFile {
  Descriptor file;
  fs::path name;
};

NamedFile createBeside(const fs::path& target, mode_t mode, int& error) {
  const fs::path start = folderOf(target) / prefixOf(target);
  while (true) {
    fs::path name = start.native() + randomDigits() + kSuffix;
    Descriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    error = file ? 0 : errno;
    if (file && holdAgainstTidying(file.get())) return {std::move(file), std::move(name)};
    if (error != 0 && error != EEXIST && error != EINTR) return {};
  }
}

}  // namespace

std::unique_ptr<ReplacementFile> ReplacementFile::create(const fs::path& target, int& error) {
  const std::optional<struct stat> old = replaceableState(target, error);
  if (error != 0) return nullptr;
  NamedFile made = createBeside(target, old ? 0600 : 0666, error);
  if (error != 0) return nullptr;
  if (old) takeOverPermissions(made.file.get(), *old);
  return std::unique_ptr<ReplacementFile>(
      new ReplacementFile(std::move(made.file), std::move(made.name), target));
}

ReplacementFile::ReplacementFile(Descriptor file, fs::path name, fs::path target)
    : file_(std::move(file)), name_(std::move(name)), target_(std::move(target)) {}

ReplacementFile::~ReplacementFile() {
  if (!name_.empty()) ::unlink(name_.c_str());
}

int ReplacementFile::endWriting() {
  // Some file systems report a failed write only when the file is closed. The second descriptor
  // keeps the lock until the file has its final name.
  Descriptor lock(::fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
  if (!lock) return errno;
  const bool closed = ::close(file_.release()) == 0 || errno == EINTR;
  const int error = closed ? 0 : errno;
  file_ = std::move(lock);
  return error;
}

int ReplacementFile::replace() {
  if (const int error = endWriting(); error != 0) return error;
  if (::rename(name_.c_str(), target_.c_str()) != 0) return errno;
  name_.clear();
  return 0;
}

int ReplacementFile::claim() {
  if (const int error = endWriting(); error != 0) return error;
  if (const int error = renameWithoutOverwriting(name_, target_); error != 0) return error;
  name_.clear();
  return 0;
}

void removeLeftovers(const fs::path& target) {
  const std::string prefix = prefixOf(target);
  std::error_code failure;
  for (fs::directory_iterator entry(folderOf(target), failure), end; !failure && entry != end;
       entry.increment(failure)) {
    if (!isLeftoverName(entry->path().filename().native(), prefix)) continue;
    const Descriptor file(
        ::open(entry->path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (file && lockFile(file.get(), LOCK_EX | LOCK_NB)) ::unlink(entry->path().c_str());
  }
}

}  // namespace playerx
