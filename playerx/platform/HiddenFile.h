#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

#include "playerx/platform/Descriptor.h"

namespace playerx {

/// A file beside another, its target, under a hidden name derived from the target's.
///
/// The file is locked as long as its owner lives, and deleted with the owner; a process that dies
/// leaves it behind, unlocked, for `removeLeftovers`. Used by one thread at a time. Error
/// numbers are `errno` values.
class HiddenFile {
 public:
  HiddenFile() = default;

  /// Creates and locks an empty file, open for reading and writing. It gets the owner, group and
  /// permissions of `old` as far as that is allowed; without one it is the user's alone. Without a
  /// descriptor when it cannot be created; then the error number is stored.
  static HiddenFile create(const std::filesystem::path& target,
                           const std::optional<struct stat>& old, int& error);

  /// The same for a target that may be replaced or does not exist yet; otherwise the error number
  /// of `replaceableState`.
  static HiddenFile create(const std::filesystem::path& target, int& error);

  /// An existing file; locks it if it is not locked yet. `file` may be empty.
  HiddenFile(Descriptor file, std::filesystem::path name);

  HiddenFile(HiddenFile&& other) noexcept
      : file_(std::move(other.file_)), name_(std::exchange(other.name_, {})) {}
  HiddenFile& operator=(HiddenFile&& other) noexcept {
    std::swap(file_, other.file_);
    std::swap(name_, other.name_);
    return *this;
  }
  ~HiddenFile();

  /// Owned by this object; -1 without one.
  int descriptor() const { return file_.get(); }

  /// Empty while the file has another name than a hidden one.
  const std::filesystem::path& name() const { return name_; }
  void setName(std::filesystem::path name) { name_ = std::move(name); }

  /// Gives the file the target's name. Each returns 0 or an error number; then nothing has changed.
  int replace(const std::filesystem::path& target);   ///< deletes what had the name
  int claim(const std::filesystem::path& target);     ///< EEXIST when something has the name
  int exchange(const std::filesystem::path& target);  ///< gives what had the name the hidden one

 private:
  int onRenamed(int error);

  Descriptor file_;
  std::filesystem::path name_;
};

/// The state of a file that may be replaced; nullopt when there is no file yet. Stores an error
/// number other than 0 for anything but a regular file that may be written.
std::optional<struct stat> replaceableState(const std::filesystem::path& target, int& error);

/// Calls `action` with the name of each hidden file beside `target`, in no order.
void forEachHiddenFile(const std::filesystem::path& target,
                       const std::function<void(const std::filesystem::path&)>& action);

/// Opens a file for reading unless it is a link; empty when it cannot be opened.
Descriptor openPlainFile(const std::filesystem::path& name);

/// Whether the process that created the file has ended; false on a file system without locks, where
/// this is unknown.
bool isLeftBehind(int file);

/// Deletes the hidden files that dead processes have left beside `target`.
void removeLeftovers(const std::filesystem::path& target);

}  // namespace playerx
