#include "playerx/platform/FileSave.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "playerx/platform/FileSync.h"
#include "playerx/platform/QuietThread.h"

namespace playerx {
namespace {

// The outcome of an attempt that is dropped.
constexpr int kUnfinished = ECANCELED;

// Content of fewer bytes is hashed before a thread has started.
constexpr std::size_t kLong = std::size_t{1} << 20U;

}  // namespace

std::unique_ptr<FileSave> FileSave::begin(const std::filesystem::path& target, int& error) {
  std::shared_ptr<FileVersions> versions = versionsOf(target);
  std::shared_ptr<FileVersion> version = versions->begin(error);
  versions->noteOutcome(version ? kUnfinished : error);
  if (!version) return nullptr;
  return std::unique_ptr<FileSave>(new FileSave(std::move(versions), std::move(version)));
}

FileSave::FileSave(std::shared_ptr<FileVersions> versions, std::shared_ptr<FileVersion> version)
    : versions_(std::move(versions)), version_(std::move(version)) {}

FileSave::~FileSave() = default;

void FileSave::expectChange(std::size_t begin, std::size_t end) {
  present_ = versions_->present();
  changeBegin_ = begin;
  changeEnd_ = end;
}

/// Notes the bytes at `begin`, which fill a block at most. Those of an unchanged block are not
/// read.
void FileSave::addPiece(const char* bytes, std::size_t begin, std::size_t length, bool isWhole) {
  const std::size_t end = begin + length;
  const bool isChanged = begin < changeEnd_ && end > changeBegin_;
  if (isWhole && length == BlockHashes::kBlock && !isChanged) {
    blocks_.addBlockOf(present_->blocks);
  } else {
    blocks_.add(bytes + begin, length);
  }
}

/// Where the change lies within a full block, replaces that in the present version.
bool FileSave::replaceBlock(const char* bytes, std::size_t length) {
  const std::size_t block = changeBegin_ / BlockHashes::kBlock;
  const std::size_t begin = block * BlockHashes::kBlock;
  const std::size_t end = begin + BlockHashes::kBlock;
  if (changeEnd_ > end || end > length) return false;
  if (!versions_->replaceBlock(block, bytes + begin)) return false;
  versions_->giveBack(std::exchange(version_, nullptr));
  position_ = static_cast<std::int64_t>(length);
  return true;
}

IoResult FileSave::write(const char* bytes, std::size_t length) {
  if (!version_) return {0, EINVAL};  // the content was not as long as it was said to be
  const bool isWhole =
      present_ && position_ == 0 && present_->size == static_cast<std::int64_t>(length);
  if (isWhole && replaceBlock(bytes, length)) return {length, 0};
  const bool isAllNew = !isWhole && length >= kLong && !version_->blocks.hasSomeOf(bytes, length);
  const IoResult result = isAllNew ? writeAll(bytes, length) : writeChanged(bytes, length, isWhole);
  if (result.error != 0) versions_->noteOutcome(result.error);
  position_ += static_cast<std::int64_t>(result.bytes);
  return result;
}

/// Writes content that has nothing in common with the spare's, and hashes it meanwhile.
IoResult FileSave::writeAll(const char* bytes, std::size_t length) {
  blocks_.reserve(length);
  const auto hashed = runQuietly([this, bytes, length] { blocks_.add(bytes, length); });
  const IoResult result = put(bytes, 0, length);
  hashed.wait();
  return result;
}

/// Writes the blocks that the spare does not hold at the same place.
IoResult FileSave::writeChanged(const char* bytes, std::size_t length, bool isWhole) {
  std::size_t begin = 0;  // of the bytes that differ and are not written yet
  IoResult result;
  for (std::size_t end = 0; end < length && result.error == 0;) {
    const std::size_t piece = std::min(length - end, BlockHashes::kBlock - blocks_.filled());
    addPiece(bytes, end, piece, isWhole);
    const bool isThere =
        piece == BlockHashes::kBlock && blocks_.hasSameBlock(blocks_.count() - 1, version_->blocks);
    if (isThere) result = put(bytes, begin, end);
    end += piece;
    if (isThere && result.error == 0) begin = end;
  }
  if (result.error == 0) result = put(bytes, begin, length);
  result.bytes += begin;
  return result;
}

IoResult FileSave::put(const char* bytes, std::size_t begin, std::size_t end) const {
  if (begin == end) return {};
  return writeFullyAt(version_->file.descriptor(), bytes + begin, end - begin,
                      position_ + static_cast<std::int64_t>(begin));
}

int FileSave::sync() {
  isSyncing_ = true;
  if (!version_) return versions_->sync();
  return ::fsync(version_->file.descriptor()) == 0 ? 0 : errno;
}

int FileSave::finish() {
  const int error = publish();
  versions_->noteOutcome(error);
  if (error != 0) return error;
  if (isSyncing_) return versions_->sync();
  syncSoon(versions_->target());
  return 0;
}

int FileSave::publish() {
  if (!version_) return 0;
  const int file = version_->file.descriptor();
  if (version_->size > position_ && ::ftruncate(file, position_) != 0) return errno;
  version_->blocks = std::move(blocks_);
  return versions_->publish(version_);
}

}  // namespace playerx
