#pragma once

#include <filesystem>
#include <memory>

#include "playerx/platform/HiddenFile.h"

namespace playerx {

/// New content for a file, written beside it under a hidden name until it is complete.
///
/// Used by one thread at a time. Destroyed without `replace` or `claim`, it deletes the new file.
/// Error numbers are `errno` values.
class ReplacementFile {
 public:
  /// Creates the new file in the folder of `target`. A target that exists must be a regular file
  /// that may be written; the new file gets its permissions, and its owner where that is allowed.
  /// Returns null and stores the error number when it cannot be created.
  static std::unique_ptr<ReplacementFile> create(const std::filesystem::path& target, int& error);

  /// Where to write; owned by this object.
  int descriptor() const { return file_.descriptor(); }

  /// Ends writing and puts the new file in the place of the target. Returns 0 or an error number;
  /// then the target is as it was.
  int replace() { return file_.replace(target_); }

  /// As `replace`, but fails with EEXIST when something of that name exists.
  int claim() { return file_.claim(target_); }

 private:
  ReplacementFile(HiddenFile file, std::filesystem::path target)
      : file_(std::move(file)), target_(std::move(target)) {}

  HiddenFile file_;
  const std::filesystem::path target_;
};

}  // namespace playerx
