#include "playerx/app/session/DataFolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "playerx/platform/NativePath.h"

namespace playerx::session {

namespace {

constexpr char kFile[] = "player.lock";

}  // namespace

DataFolderLock::DataFolderLock(const std::string& folder) {
  makePrivateFolders(folder);
  const std::string file = folder + "/" + kFile;
  descriptor_ = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (descriptor_ < 0) {
    problem_ = "The data folder " + folder + " cannot be written (" + kFile + ": " +
               std::strerror(errno) + "); choose another with --data.";
  } else if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    isTaken_ = errno == EWOULDBLOCK;
    problem_ = "Another player is using the data folder " + folder +
               "; close it, or choose another folder with --data.";
  }
}

DataFolderLock::~DataFolderLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

}  // namespace playerx::session
