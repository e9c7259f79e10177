#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

#include "kvpm/File.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/FileVersions.h"
#include "playerx/platform/VersionRecord.h"
#include "tests/support/TempDir.h"
#include "tests/unit/platform/FileFixture.h"

namespace platform_test {

/// Saves versions of a file, which are synced only on demand. What a power cut leaves is made by
/// hand: contents torn without a change of their time, records of another boot of the machine.
class VersionsTest : public testing::Test {
 protected:
  using Version = std::shared_ptr<playerx::FileVersion>;

  /// Returns the version that was saved; null when that failed.
  Version save(const std::string& text) {
    int error = 0;
    const Version version = versions_.begin(error);
    EXPECT_EQ(error, 0);
    if (!version) return nullptr;
    const int file = version->file.descriptor();
    EXPECT_EQ(::ftruncate(file, 0), 0);
    EXPECT_EQ(playerx::writeFullyAt(file, text.data(), text.size(), 0).error, 0);
    version->blocks = playerx::BlockHashes();
    version->blocks.add(text.data(), text.size());
    error = versions_.publish(version);
    EXPECT_EQ(error, 0);
    return error == 0 ? version : nullptr;
  }

  void saveAndSync(const std::string& text) {
    save(text);
    ASSERT_EQ(versions_.sync(), 0);
  }

  void tear() const {
    const auto time = std::filesystem::last_write_time(path_);
    support::writeFile(path_, std::string(std::filesystem::file_size(path_), '\0'));
    std::filesystem::last_write_time(path_, time);
  }

  void startMachineAnew() const {
    const auto change = [](playerx::VersionRecord& record) { record.boot += 2; };
    for (const auto& hidden : hiddenBeside(path_)) changeRecord(hidden, change);
    changeRecord(path_, change);
  }

  /// Changes the record of a version that is not on the disk.
  static void changeRecord(const std::filesystem::path& path,
                           void (*change)(playerx::VersionRecord& record)) {
    const playerx::Descriptor file = playerx::openPlainFile(path);
    auto record = playerx::readRecord(file.get());
    if (!record || record->boot == playerx::VersionRecord::kOnDisk) return;
    change(*record);
    ASSERT_TRUE(playerx::writeRecord(file.get(), *record));
  }

  int open(kvpm::File& file) const { return file.open(wide(path_), kvpm::FileOpenRead); }

  /// What a host reads.
  std::string content() const {
    kvpm::File file;
    EXPECT_EQ(open(file), 0);
    return read(file, 20'000);
  }

  support::TempDir folder_;
  const std::filesystem::path path_ = folder_ / "queue.xml";
  playerx::FileVersions versions_{path_};
};

}  // namespace platform_test
