#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/UniqueFd.h"

namespace power_test {

/// Why this process cannot mount disks on this machine; empty when it can. Gives the process a view
/// of its own on what is mounted, so that everything is unmounted with its end.
std::string obstacleToMounting();

/// An empty ext4 file system of a few megabytes, as the bytes of its disk.
std::string emptyDisk();

/// A file that holds a file system, mounted on a folder. std::runtime_error when that fails.
class MountedDisk {
 public:
  MountedDisk(const support::UniqueFd& disk, std::filesystem::path folder);
  MountedDisk(const MountedDisk&) = delete;
  MountedDisk& operator=(const MountedDisk&) = delete;
  ~MountedDisk();

  const std::filesystem::path& folder() const { return folder_; }

 private:
  const std::filesystem::path folder_;
};

/// A mounted disk all writes to which are recorded.
class RecordedDisk {
 public:
  RecordedDisk(const std::string& content, const std::filesystem::path& folder);
  RecordedDisk(const RecordedDisk&) = delete;
  RecordedDisk& operator=(const RecordedDisk&) = delete;
  ~RecordedDisk();

  std::filesystem::path record() const { return own_ / "record"; }

  /// Ends the recording with an orderly end of the file system.
  void unmount();

 private:
  const support::TempDir own_;
  std::unique_ptr<support::Process> server_;
  std::unique_ptr<MountedDisk> disk_;
};

}  // namespace power_test
