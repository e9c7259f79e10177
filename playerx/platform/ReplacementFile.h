#pragma once

#include <filesystem>
#include <memory>

#include "playerx/platform/Descriptor.h"

namespace playerx {

/// New content for a name, written beside it under a name of its own until it is whole.
///
/// Used by one thread at a time. Destroyed without `replace` or `claim`, it takes the new file
/// away. A writer that dies leaves its file behind; `removeLeftovers` tells such a file by the lock
/// that a living writer holds on it. Error numbers are `errno` values.
class ReplacementFile {
 public:
  /// Creates the new file in the folder of `target`. A target that exists must be a regular file
  /// that may be written; its permissions are taken over, and its owner where that is allowed.
  /// Returns null and stores the error number when it cannot be created.
  static std::unique_ptr<ReplacementFile> create(const std::filesystem::path& target, int& error);

  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ~ReplacementFile();

  /// Where to write; owned by this object.
  int descriptor() const { return file_.get(); }

  const std::filesystem::path& target() const { return target_; }

  /// Ends writing and puts the new file in the place of the target. Returns 0 or an error number;
  /// then the target is as it was.
  int replace();

  /// As `replace`, but fails with EEXIST when something of that name exists.
  int claim();

 private:
  ReplacementFile(Descriptor file, std::filesystem::path name, std::filesystem::path target);
  int endWriting();

  Descriptor file_;
  std::filesystem::path name_;  // empty once the file has its final name
  const std::filesystem::path target_;
};

/// Deletes what dead writers have left beside `target`.
void removeLeftovers(const std::filesystem::path& target);

}  // namespace playerx
