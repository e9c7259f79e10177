#include "playerx/platform/HiddenFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <string>
#include <system_error>

#include "playerx/platform/FileIo.h"
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

// Short enough for a name of at most 255 bytes; never ends within a character.
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

bool isHiddenName(const std::string& name, const std::string& prefix) {
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

// Whether the file still has its name: it may have been removed as a leftover between its creation
// and its lock.
bool lockAgainstRemoval(int file) {
  lockFile(file, LOCK_EX);
  struct stat status {};
  return ::fstat(file, &status) == 0 && status.st_nlink > 0;
}

// Changing the owner clears the set-id bits, so it comes first. A user who may not change the owner
// stays it; if the group cannot be copied either, it gets the permissions of others.
void copyPermissions(const struct stat& from, int file) {
  constexpr auto kSameOwner = static_cast<uid_t>(-1);
  const bool isGroupCopied =
      ::fchown(file, from.st_uid, from.st_gid) == 0 || ::fchown(file, kSameOwner, from.st_gid) == 0;
  const mode_t mode = from.st_mode & 07777U;
  const mode_t others = mode & 07U;
  setPermissions(file, isGroupCopied ? mode : ((mode & ~070U) | (others << 3U)));
}

// Some file systems report a failed write only when a descriptor is closed.
int reportLateErrors(int file) {
  const int copy = ::fcntl(file, F_DUPFD_CLOEXEC, 0);
  if (copy < 0) return errno;
  return ::close(copy) == 0 || errno == EINTR ? 0 : errno;
}

}  // namespace

HiddenFile HiddenFile::create(const fs::path& target, const std::optional<struct stat>& old,
                              int& error) {
  const fs::path start = folderOf(target) / prefixOf(target);
  while (true) {
    fs::path name = start.native() + randomDigits() + kSuffix;
    Descriptor file(::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    error = file ? 0 : errno;
    if (error != 0 && error != EEXIST && error != EINTR) return {};
    if (!file || !lockAgainstRemoval(file.get())) continue;
    if (old) copyPermissions(*old, file.get());
    HiddenFile made;
    made.file_ = std::move(file);
    made.name_ = std::move(name);
    return made;
  }
}

HiddenFile HiddenFile::create(const fs::path& target, int& error) {
  const std::optional<struct stat> old = replaceableState(target, error);
  return error == 0 ? create(target, old, error) : HiddenFile();
}

HiddenFile::HiddenFile(Descriptor file, fs::path name)
    : file_(std::move(file)), name_(std::move(name)) {
  if (file_) lockFile(file_.get(), LOCK_EX | LOCK_NB);
}

HiddenFile::~HiddenFile() {
  if (!name_.empty()) ::unlink(name_.c_str());
}

int HiddenFile::replace(const fs::path& target) {
  if (const int error = reportLateErrors(file_.get()); error != 0) return error;
  return onRenamed(::rename(name_.c_str(), target.c_str()) == 0 ? 0 : errno);
}

int HiddenFile::claim(const fs::path& target) {
  if (const int error = reportLateErrors(file_.get()); error != 0) return error;
  return onRenamed(renameWithoutOverwriting(name_, target));
}

int HiddenFile::exchange(const fs::path& target) {
  if (const int error = reportLateErrors(file_.get()); error != 0) return error;
  return onRenamed(exchangeNames(name_, target));
}

int HiddenFile::onRenamed(int error) {
  if (error == 0) name_.clear();
  return error;
}

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

void forEachHiddenFile(const fs::path& target, const std::function<void(const fs::path&)>& action) {
  const std::string prefix = prefixOf(target);
  std::error_code failure;
  for (fs::directory_iterator entry(folderOf(target), failure), end; !failure && entry != end;
       entry.increment(failure)) {
    if (isHiddenName(entry->path().filename().native(), prefix)) action(entry->path());
  }
}

Descriptor openPlainFile(const fs::path& name) {
  return Descriptor(::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
}

bool isLeftBehind(int file) { return lockFile(file, LOCK_EX | LOCK_NB); }

void removeLeftovers(const fs::path& target) {
  forEachHiddenFile(target, [](const fs::path& name) {
    const Descriptor file = openPlainFile(name);
    if (file && isLeftBehind(file.get())) ::unlink(name.c_str());
  });
}

}  // namespace playerx
