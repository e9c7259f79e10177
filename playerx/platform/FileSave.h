#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

#include "playerx/platform/BlockHashes.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/FileVersions.h"

namespace playerx {

/// Writes new content for a file. Destroyed without `finish`, it leaves the old content.
///
/// Used by one thread at a time. Error numbers are `errno` values.
class FileSave {
 public:
  /// Null, and the error number, when the file may not be replaced.
  static std::unique_ptr<FileSave> begin(const std::filesystem::path& target, int& error);

  ~FileSave();

  /// See `kvpm::File::expectChange`.
  void expectChange(std::size_t begin, std::size_t end);

  /// Appends bytes; a block that the spare file already holds at the same place is not written.
  IoResult write(const char* bytes, std::size_t length);

  /// Syncs the content written so far, and makes `finish` sync the name.
  int sync();

  /// Puts the content under the file's name. Returns 0 or an error number.
  int finish();

 private:
  FileSave(std::shared_ptr<FileVersions> versions, std::shared_ptr<FileVersion> version);
  bool replaceBlock(const char* bytes, std::size_t length);
  IoResult writeAll(const char* bytes, std::size_t length);
  IoResult writeChanged(const char* bytes, std::size_t length, bool isWhole);
  void addPiece(const char* bytes, std::size_t begin, std::size_t length, bool isWhole);
  IoResult put(const char* bytes, std::size_t begin, std::size_t end) const;
  int publish();

  const std::shared_ptr<FileVersions> versions_;
  std::shared_ptr<FileVersion> version_;  // null once a block of the present one was replaced
  BlockHashes blocks_;
  std::int64_t position_ = 0;

  std::optional<PresentContent> present_;  // null unless what differs from it is known
  std::size_t changeBegin_ = 0;
  std::size_t changeEnd_ = 0;

  bool isSyncing_ = false;
};

}  // namespace playerx
