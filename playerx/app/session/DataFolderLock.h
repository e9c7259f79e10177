#pragma once

#include <string>

namespace playerx::session {

/// Holds the data folder for this process, so that two players never write one queue. Given back by
/// the system when the process dies.
class DataFolderLock {
 public:
  /// Makes the folder when it is missing and takes the lock without waiting.
  explicit DataFolderLock(const std::string& folder);
  DataFolderLock(const DataFolderLock&) = delete;
  DataFolderLock& operator=(const DataFolderLock&) = delete;
  ~DataFolderLock();

  /// Why the folder cannot be used, as one sentence; empty when the lock is held.
  const std::string& problem() const { return problem_; }

  /// Whether that is because another process has the folder.
  bool isTaken() const { return isTaken_; }

 private:
  int descriptor_ = -1;
  std::string problem_;
  bool isTaken_ = false;
};

}  // namespace playerx::session
