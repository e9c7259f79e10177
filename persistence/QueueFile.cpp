#include "persistence/QueueFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "kvpm/File.h"
#include "kvpm/PathTools.h"

namespace persistence {
namespace {

/// The XML library counts bytes in an int; a file of more is not worth reading into memory.
constexpr std::int64_t kLargestFile = std::numeric_limits<int>::max();

constexpr std::size_t kComparedAtOnce = 1 << 18;

constexpr std::wstring_view kSetAsideSuffix = L".unreadable";
constexpr int kMostSetAside = 10'000;

/// Whether opening failed because the file is missing; a folder of that name holds no queue either.
bool isMissing(int error) { return error == ENOENT || error == ENOTDIR || error == EISDIR; }

/// Up to `size` bytes from the present position; nullopt on an error.
std::optional<std::string> readSome(kvpm::File& file, std::size_t size) {
  std::string bytes(size, '\0');
  const std::int64_t got = file.read(bytes.data(), bytes.size());
  if (got < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(got));
  return bytes;
}

std::wstring setAsideName(const std::wstring& path, int number) {
  std::wstring name = path;
  name += kSetAsideSuffix;
  if (number > 1) name += L"." + std::to_wstring(number);
  return name;
}

}  // namespace

QueueReading readQueueFile(const std::wstring& path) {
  kvpm::File file;
  if (const int error = file.open(path, kvpm::FileOpenRead); error != 0) {
    return {isMissing(error) ? QueueOutcome::kRead : QueueOutcome::kUnavailable, {}};
  }
  if (file.getTotalSize() < 0) return {QueueOutcome::kUnavailable, {}};
  const std::optional<std::string> head = readSome(file, kQueueHeadSize);
  if (!head) return {QueueOutcome::kUnavailable, {}};
  const QueueFormat format = formatOf(*head);
  if (format == QueueFormat::kEmpty) return {QueueOutcome::kRead, {}};
  if (format == QueueFormat::kUnknown) return {QueueOutcome::kRefused, {}};
  file.close();
  return readQueueFile(path, format);
}

QueueReading readQueueFile(const std::wstring& path, QueueFormat format) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0) return {QueueOutcome::kUnavailable, {}};
  const std::int64_t size = file.getTotalSize();
  if (size > kLargestFile) return {QueueOutcome::kRefused, {}};
  if (size < 0) return {QueueOutcome::kUnavailable, {}};
  auto left = static_cast<std::size_t>(size);
  const auto readNext = [&file, &left](char* buffer, std::size_t most) -> std::int64_t {
    if (left == 0) return 0;
    const std::int64_t got = file.read(buffer, std::min(most, left));
    if (got > 0) left -= static_cast<std::size_t>(got);
    return got > 0 ? got : -1;  // the end must not come early
  };
  return readQueueDocument(readNext, format);
}

bool isThere(const std::wstring& path) {
  kvpm::File file;
  return !isMissing(file.open(path, kvpm::FileOpenRead));
}

bool holdsExactly(const std::wstring& path, std::string_view content) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0) return false;
  if (file.getTotalSize() != static_cast<std::int64_t>(content.size())) return false;
  std::string buffer(std::min(content.size(), kComparedAtOnce), '\0');
  while (!content.empty()) {
    const std::int64_t got = file.read(buffer.data(), std::min(content.size(), buffer.size()));
    if (got <= 0) return false;
    const auto length = static_cast<std::size_t>(got);
    if (content.substr(0, length) != std::string_view(buffer).substr(0, length)) return false;
    content.remove_prefix(length);
  }
  return true;
}

bool replaceFile(const std::wstring& path, std::string_view content, Durability durability,
                 const std::optional<ByteRange>& changed) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenWrite) != 0) return false;
  if (changed) file.expectChange(changed->begin, changed->end);
  const std::int64_t written = file.write(content.data(), content.size());
  if (written != static_cast<std::int64_t>(content.size())) return false;
  if (durability == Durability::kOnDisk && file.sync() != 0) return false;
  return file.close() == 0;
}

bool setAside(const std::wstring& path) {
  for (int number = 1; number <= kMostSetAside; ++number) {
    const std::wstring name = setAsideName(path, number);
    if (kvpm::PathTools::fileExists(name)) continue;
    // A move never overwrites, so a name that another program has taken just now is not lost.
    if (kvpm::PathTools::moveFile(path, name)) return true;
    if (!kvpm::PathTools::fileExists(name)) return false;
  }
  return false;
}

}  // namespace persistence
