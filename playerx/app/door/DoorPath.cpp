#include "playerx/app/door/DoorPath.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>
#include <QCryptographicHash>
#include <QDir>
#include <cstdlib>
#include <filesystem>

namespace playerx::door {

namespace {

/// What a folder may have so that a socket with a name of ours fits: the server binds it below a
/// hidden folder first, and a socket's path has at most 107 bytes.
constexpr std::size_t kLongestFolder = 60;

/// Whether the folder is there, the user's own, and closed to everybody else.
bool isPrivate(const std::string& folder) {
  struct stat status {};
  if (::lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
  return status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

bool isUsable(const std::string& folder) {
  return folder.size() <= kLongestFolder && isPrivate(folder);
}

/// A folder of the user's own among the temporary files; made when it is not there.
std::string temporaryFolder() {
  const std::string folder =
      QDir::tempPath().toStdString() + "/playerx-" + std::to_string(::geteuid());
  ::mkdir(folder.c_str(), S_IRWXU);
  return folder;
}

std::string nameFor(const std::string& dataFolder) {
  std::error_code error;
  const std::filesystem::path canonical = std::filesystem::canonical(dataFolder, error);
  const std::string& path = error ? dataFolder : canonical.native();
  const QByteArray hash =
      QCryptographicHash::hash(QByteArray::fromStdString(path), QCryptographicHash::Sha256);
  return "playerx-" + hash.toHex().first(16).toStdString();
}

}  // namespace

std::string doorPath(const std::string& dataFolder) {
  const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && isUsable(runtime)) {
    return std::string(runtime) + "/" + nameFor(dataFolder);
  }
  if (dataFolder.size() <= kLongestFolder) return dataFolder + "/queue.socket";
  const std::string folder = temporaryFolder();
  return isUsable(folder) ? folder + "/" + nameFor(dataFolder) : std::string();
}

}  // namespace playerx::door
