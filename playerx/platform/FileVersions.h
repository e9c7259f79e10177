#pragma once

// How a file that is replaced again and again reaches the disk; an indented unit serves the one
// above it.
//
//   kvpm::File          what plug-ins open, read, write and close
//     FileSave          writes one version: only the blocks that differ from a spare's
//       FileVersions    which version has the file's name, which are spare, which must be kept
//         HiddenFile    a version that waits beside the file, locked while its process lives
//         VersionRecord its place in the order and its hash, in an extended attribute
//         BlockHashes   of a version's content
//     WholeVersion      opens the newest complete version after a power cut
//   FileSync            the versions of all files of the process; syncs each soon after a change
//     SyncBatcher       the thread that does so
//     UnsyncedFiles     films, which reach the disk before a version that may mention them

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "playerx/platform/BlockHashes.h"
#include "playerx/platform/GuardMutex.h"
#include "playerx/platform/HiddenFile.h"

namespace playerx {

/// One version of a file that is replaced again and again.
struct FileVersion {
  HiddenFile file;
  BlockHashes blocks;  ///< of the content
  dev_t device = 0;    ///< this and what follows describe the file once it is published
  ino_t inode = 0;
  std::int64_t size = 0;       ///< bytes
  std::int64_t modified = 0;   ///< when this process wrote the content, in nanoseconds
  std::uint64_t sequence = 0;  ///< a later version has a higher one
  bool isKept = false;         ///< the newest version on the disk, or about to become it
  bool isReusable = false;     ///< last written by this process
  bool hasFailed = false;      ///< could not be synced
};

/// What a file holds under its name.
struct PresentContent {
  std::int64_t size = 0;  ///< bytes
  BlockHashes blocks;     ///< the full ones
};

/// The versions of one file: the present one under the file's name, and hidden ones beside it.
///
/// A new version overwrites a spare one, block by block where they differ, and exchanges names with
/// the present one, so a reader finds a complete version at any instant, even after the writer was
/// killed. After a power cut the present one may be torn. Therefore the last version that is fully
/// on the disk is kept, under whatever name it has then, until `sync` has brought a newer one
/// there; records say which are complete (`openWhole` reads them).
///
/// Between two syncs, one block of the present version may also be changed where it stands
/// (`replaceBlock`): whoever reads it, or is left with it by a killed writer, finds the old block
/// or the new one.
///
/// A file that another program has open, or that has a second name, is never overwritten. Where
/// the file system cannot exchange names or keep a record, and for a file of another owner, a new
/// version replaces the present one by a plain rename.
///
/// All operations may be called from any thread. Error numbers are `errno` values.
class FileVersions {
 public:
  /// `target` is absolute.
  explicit FileVersions(std::filesystem::path target);

  const std::filesystem::path& target() const { return target_; }

  /// A spare to overwrite, or a new file; null, and the error number, when nothing may be written.
  std::shared_ptr<FileVersion> begin(int& error);

  /// Size and full blocks of the present version; nullopt unless this process wrote it.
  std::optional<PresentContent> present();

  /// Makes a written version the present one; its content is described by `blocks` and `size`.
  /// Returns 0 or an error number; then the present one stays.
  int publish(const std::shared_ptr<FileVersion>& version);

  /// Puts another block of `BlockHashes::kBlock` bytes in the place of a full one of the present
  /// version. Returns false, with the old block still there, where a new version has to be made:
  /// this process did not write the present one, somebody reads it, or it is kept itself.
  bool replaceBlock(std::size_t index, const char* bytes);

  /// Makes a version that `begin` gave and that was not written a spare again.
  void giveBack(const std::shared_ptr<FileVersion>& version);

  /// Remembers how an attempt to replace the file ended: 0 or an error number.
  void noteOutcome(int error);

  /// That of the last attempt; 0 when there was none.
  int lastOutcome();

  /// Gives a file that is saved often a second spare: while one version is synced another is kept,
  /// and a save that finds no spare creates one, which takes far longer. To be called before
  /// `sync`.
  void addSpare();

  /// Syncs the present version before it returns, after the unsynced files (`UnsyncedFiles.h`) that
  /// it may mention. Returns 0 or an error number.
  int sync();

  /// Removes the hidden versions; returns false, and keeps them, when one may still be needed.
  bool release();

  /// Removes the hidden versions; called when the file itself has been deleted or moved away.
  void forget();

 private:
  using Version = std::shared_ptr<FileVersion>;

  Version takeSpare(const struct stat& old) KVPM_REQUIRES(mutex_);
  std::ptrdiff_t countSpares() const KVPM_REQUIRES(mutex_);
  void removeDeleted() KVPM_REQUIRES(mutex_);
  bool replaceLeasedBlock(std::size_t index, const char* bytes) KVPM_REQUIRES(mutex_);
  bool exchange(FileVersion& version, const struct stat& old) KVPM_REQUIRES(mutex_);
  void hidePresent(const std::filesystem::path& name) KVPM_REQUIRES(mutex_);
  void learnSequence() KVPM_REQUIRES(mutex_);
  bool record(FileVersion& version) KVPM_REQUIRES(mutex_);
  void recordForeign() KVPM_REQUIRES(mutex_);
  int noteSync(FileVersion& version, int error) KVPM_REQUIRES(mutex_);

  const std::filesystem::path target_;

  GuardMutex syncing_;  // taken before `mutex_`
  bool isTidy_ KVPM_GUARDED_BY(syncing_) = false;

  GuardMutex mutex_;
  Version present_ KVPM_GUARDED_BY(mutex_);     // null unless this process wrote it
  bool isNew_ KVPM_GUARDED_BY(mutex_) = false;  // no version is on the disk
  bool isPresentOnDisk_ KVPM_GUARDED_BY(mutex_) = false;
  int lastOutcome_ KVPM_GUARDED_BY(mutex_) = 0;
  std::vector<Version> hidden_ KVPM_GUARDED_BY(mutex_);
  std::optional<std::uint64_t> sequence_ KVPM_GUARDED_BY(mutex_);  // the latest given to a version
};

}  // namespace playerx
