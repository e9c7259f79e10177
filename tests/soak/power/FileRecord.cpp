#include "tests/soak/power/FileRecord.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <stdexcept>
#include <utility>

#include "tests/soak/power/DiskRecord.h"
#include "tests/support/TempDir.h"

namespace power_test {

namespace fs = std::filesystem;

namespace {

std::pair<std::string, std::string> split(const std::string& payload) {
  const std::size_t end = payload.find('\0');
  return {payload.substr(0, end), end == std::string::npos ? "" : payload.substr(end + 1)};
}

}  // namespace

/// The state of a folder after some entries.
class FileRecord::Replay {
 public:
  explicit Replay(std::mt19937& random)
      : random_(random), isThere_(std::uniform_int_distribution<>(0, 10)(random) / 10.0) {}

  void noteSync(const OperationHead& head) {
    files_[head.file].synced = std::max(files_[head.file].synced, head.number);
  }

  void addBytes(std::uint64_t index, const Entry& entry) {
    File& file = files_[entry.head.file];
    const std::uint64_t end = entry.head.number + entry.payload.size();
    if (file.bytes.size() < end) file.bytes.resize(end);
    for (std::uint64_t at = 0; at < entry.payload.size();) {
      const std::uint64_t length =
          std::min(kBlock - (entry.head.number + at) % kBlock, entry.payload.size() - at);
      const bool isSynced = index < file.synced;
      if (isSynced || isThere_(random_)) {
        file.bytes.replace(entry.head.number + at, length, entry.payload, at, length);
      }
      at += length;
    }
  }

  void apply(const Entry& entry) {
    const auto [first, second] = split(entry.payload);
    File& file = files_[entry.head.file];
    switch (entry.head.kind) {
      case FileOperation::kCreate:
        names_[first] = entry.head.file;
        break;
      case FileOperation::kRename:
        rename(first, second);
        break;
      case FileOperation::kExchange:
        std::swap(names_[first], names_[second]);
        break;
      case FileOperation::kUnlink:
        names_.erase(first);
        break;
      case FileOperation::kSetAttribute:
        file.attributes[first] = second;
        break;
      case FileOperation::kRemoveAttribute:
        file.attributes.erase(first);
        break;
      case FileOperation::kTruncate:
        file.bytes.resize(entry.head.size);
        break;
      case FileOperation::kWrite:
      case FileOperation::kSync:
        break;
    }
    file.head = entry.head;
  }

  void writeTo(const fs::path& folder) const {
    for (const auto& [name, file] : names_) write(folder / name, files_.at(file));
  }

 private:
  struct File {
    std::string bytes;  // whichever came through
    OperationHead head;
    std::map<std::string, std::string> attributes;
    std::uint64_t synced = 0;  // the entries before this one are on the disk
  };

  static void write(const fs::path& path, File file) {
    fs::create_directories(path.parent_path());
    file.bytes.resize(file.head.size);
    support::writeFile(path, file.bytes);
    for (const auto& [name, value] : file.attributes) {
      if (::setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) != 0) {
        throw std::runtime_error("no extended attributes");
      }
    }
    const timespec time = {file.head.modifiedSeconds, file.head.modifiedNanoseconds};
    const timespec times[] = {time, time};
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
  }

  void rename(const std::string& from, const std::string& to) {
    names_[to] = names_[from];
    names_.erase(from);
  }

  std::mt19937& random_;
  std::bernoulli_distribution isThere_;
  std::map<std::string, std::uint64_t> names_;
  std::map<std::uint64_t, File> files_;
};

FileRecord::FileRecord(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  Entry entry;
  while (stream.read(reinterpret_cast<char*>(&entry.head), sizeof entry.head)) {
    entry.payload.resize(entry.head.payload);
    stream.read(entry.payload.data(), static_cast<std::streamsize>(entry.payload.size()));
    if (!stream) throw std::runtime_error("the record of the files is cut short");
    entries_.push_back(entry);
  }
}

void FileRecord::cutAfter(std::size_t entry, const fs::path& folder, std::mt19937& random) const {
  Replay replay(random);
  std::uint64_t durable = 0;  // a sync of any file brings all earlier changes but bytes to the disk
  for (std::size_t index = 0; index <= entry; ++index) {
    if (entries_[index].head.kind != FileOperation::kSync) continue;
    replay.noteSync(entries_[index].head);
    durable = std::max(durable, entries_[index].head.number);
  }
  const std::uint64_t applied =
      std::uniform_int_distribution<std::uint64_t>(durable, entry + 1)(random);
  for (std::size_t index = 0; index <= entry; ++index) {
    if (entries_[index].head.kind == FileOperation::kWrite) replay.addBytes(index, entries_[index]);
    if (index < applied) replay.apply(entries_[index]);
  }
  replay.writeTo(folder);
}

}  // namespace power_test
