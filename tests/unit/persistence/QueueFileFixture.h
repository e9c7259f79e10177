#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "persistence/DownloadManagerPersistence.h"
#include "tests/support/TempDir.h"
#include "tests/unit/persistence/Items.h"

namespace persistence {

inline const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

/// A queue file in a folder of its own.
class QueueFileFixture : public testing::Test {
 protected:
  std::wstring path() const { return file().wstring(); }
  std::filesystem::path file() const { return folder_ / "downloadmanager.xml"; }
  const support::TempDir& folder() const { return folder_; }

  void put(const std::string& content) const { support::writeFile(file(), content); }
  std::string content() const { return support::readFile(file()); }
  bool exists(const std::string& name) const {
    return std::filesystem::exists(std::filesystem::symlink_status(folder_ / name));
  }

  std::vector<Fields> read() const {
    return takeFields(DownloadManagerPersistence::readDownloadQueue(path()));
  }
  std::vector<Fields> readOf(const std::string& content) const {
    put(content);
    return read();
  }

  /// Saves the queue and returns the content of the file.
  std::string written(const std::vector<Fields>& queue) const {
    DownloadManagerPersistence::writeDownloadQueue(path(), Queue(queue).items());
    return content();
  }
  /// Whether saving a queue leaves the file as it is. The file holds the same afterwards.
  bool isProtected() const {
    const std::string before = content();
    const bool isSame = written({titled(L"another queue")}) == before;
    put(before);
    return isSame;
  }
  std::vector<Fields> writtenAndReadBack(const std::vector<Fields>& queue) const {
    written(queue);
    return read();
  }

 private:
  support::TempDir folder_;
};

/// A document with `inside` between the tags of its root.
inline std::string queueHolding(const std::string& inside) {
  return kDeclaration + "<DownloadQueue>" + inside + "</DownloadQueue>\n";
}

}  // namespace persistence
