#include "persistence/QueueFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "kvpm/File.h"
#include "kvpm/PathTools.h"
#include "persistence/LegacyQueueDocument.h"
#include "persistence/QueueDocument.h"

namespace persistence {
namespace {

static_assert(kQueueHeadSize == kLegacyHeader.size());

/// The XML library counts bytes in an int; a file of more is not worth reading into memory.
constexpr std::int64_t kLargestFile = std::numeric_limits<int>::max();

constexpr std::wstring_view kSetAsideSuffix = L".unreadable";
constexpr int kMostSetAside = 10'000;

/// Up to `size` bytes from the beginning of an open file; nothing on an error.
std::optional<std::string> readBeginning(kvpm::File& file, std::size_t size) {
  std::string bytes(size, '\0');
  const std::int64_t got = file.read(bytes.data(), bytes.size());
  if (got < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(got));
  return bytes;
}

/// Every byte of a file; nothing when it is missing, empty, too large or cut short by an error.
std::optional<std::string> readWhole(const std::wstring& path) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0) return std::nullopt;
  const std::int64_t size = file.getTotalSize();
  if (size <= 0 || size > kLargestFile) return std::nullopt;
  std::optional<std::string> bytes = readBeginning(file, static_cast<std::size_t>(size));
  if (!bytes || bytes->size() != static_cast<std::size_t>(size)) return std::nullopt;
  return bytes;
}

std::optional<ItemList> readWith(const std::wstring& path,
                                 std::optional<ItemList> (*readDocument)(std::string)) {
  std::optional<std::string> bytes = readWhole(path);
  if (!bytes) return std::nullopt;
  return readDocument(*std::move(bytes));
}

bool isMissing(int error) { return error == ENOENT || error == ENOTDIR; }

std::wstring setAsideName(const std::wstring& path, int number) {
  std::wstring name = path;
  name += kSetAsideSuffix;
  if (number > 1) name += L"." + std::to_wstring(number);
  return name;
}

}  // namespace

QueueFormat formatOf(std::string_view head) {
  if (head.empty() || head == kEmptyQueueDocument) return QueueFormat::kEmpty;
  if (head.size() < kQueueHeadSize) return QueueFormat::kUnknown;
  if (head.starts_with(kLegacyHeader)) return QueueFormat::kLegacy;
  return head.starts_with(kQueueDeclaration) ? QueueFormat::kCurrent : QueueFormat::kUnknown;
}

QueueFormat formatOfFile(const std::wstring& path) {
  kvpm::File file;
  if (const int error = file.open(path, kvpm::FileOpenRead); error != 0) {
    return isMissing(error) ? QueueFormat::kEmpty : QueueFormat::kUnknown;
  }
  const std::int64_t size = file.getTotalSize();
  if (size <= 0) return size == 0 ? QueueFormat::kEmpty : QueueFormat::kUnknown;
  const std::optional<std::string> head = readBeginning(file, kQueueHeadSize);
  return head ? formatOf(*head) : QueueFormat::kUnknown;
}

std::optional<ItemList> readCurrentQueue(const std::wstring& path) {
  return readWith(path, readQueueDocument);
}

std::optional<ItemList> readLegacyQueue(const std::wstring& path) {
  return readWith(path, readLegacyQueueDocument);
}

bool holdsExactly(const std::wstring& path, std::string_view content) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0) return false;
  if (file.getTotalSize() != static_cast<std::int64_t>(content.size())) return false;
  const std::optional<std::string> present = readBeginning(file, content.size());
  return present && *present == content;
}

void replaceFile(const std::wstring& path, std::string_view content) {
  // Many announcements concern what the file does not hold; reading is far cheaper than replacing.
  if (holdsExactly(path, content)) return;
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenWrite) != 0) return;
  const std::int64_t written = file.write(content.data(), content.size());
  if (written == static_cast<std::int64_t>(content.size())) file.close();
}

bool setAside(const std::wstring& path) {
  for (int number = 1; number <= kMostSetAside; ++number) {
    const std::wstring name = setAsideName(path, number);
    if (kvpm::PathTools::fileExists(name)) continue;
    // A move never overwrites, so a name that somebody else has taken just now is not lost either.
    if (kvpm::PathTools::moveFile(path, name)) return true;
    if (!kvpm::PathTools::fileExists(name)) return false;
  }
  return false;
}

}  // namespace persistence
