#include "playerx/platform/VersionRecord.h"

#include <sys/xattr.h>

#include "playerx/platform/BlockHashes.h"
#include "playerx/platform/BootId.h"

namespace playerx {
namespace {

// Short enough to be stored in the inode, without a block of its own.
constexpr char kAttribute[] = "user.vesk";

static_assert(sizeof(VersionRecord) == 48, "a record of another size is taken for no record");

}  // namespace

std::int64_t modificationTime(const struct stat& status) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  return status.st_mtim.tv_sec * kSecond + status.st_mtim.tv_nsec;
}

std::uint64_t presentBoot() {
  static const std::uint64_t boot = [] {
    // Without an id no boot equals another, so contents are checked rather than trusted.
    if (bootId().empty()) return BlockHashes::processSeed() | 1U;
    BlockHashes hashes(0);
    hashes.add(bootId().data(), bootId().size());
    return hashes.whole() | 1U;
  }();
  return boot;
}

std::optional<VersionRecord> readRecord(int file) {
  VersionRecord record;
  const ssize_t size = ::fgetxattr(file, kAttribute, &record, sizeof record);
  if (size != static_cast<ssize_t>(sizeof record)) return std::nullopt;
  if (record.modified == VersionRecord::kBeingChanged) return record;
  struct stat status {};
  if (::fstat(file, &status) != 0) return std::nullopt;
  if (record.modified != modificationTime(status)) return std::nullopt;
  return record;
}

bool hasRecord(const std::filesystem::path& file) {
  return ::lgetxattr(file.c_str(), kAttribute, nullptr, 0) >= 0;
}

bool writeRecord(int file, const VersionRecord& record) {
  return ::fsetxattr(file, kAttribute, &record, sizeof record, 0) == 0;
}

bool removeRecord(int file) { return ::fremovexattr(file, kAttribute) == 0; }

Integrity integrityOf(int file, int& error) {
  error = 0;
  const std::optional<VersionRecord> record = readRecord(file);
  if (!record || record->boot == VersionRecord::kOnDisk || record->boot == presentBoot()) {
    return Integrity::kWhole;
  }
  const std::optional<std::uint64_t> hash = hashOfFile(file, record->seed, error);
  if (!hash || *hash != record->hash) return Integrity::kTorn;
  if ((record->flags & VersionRecord::kReliesOnOthers) == 0) return Integrity::kWhole;
  // A file that was new at the power cut may be lost; one that may have older versions may not.
  return (record->flags & VersionRecord::kIsNew) != 0 ? Integrity::kTorn : Integrity::kUncertain;
}

}  // namespace playerx
