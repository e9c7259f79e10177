#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

#include "playerx/window/playback/GrowingFile.h"
#include "tests/support/TempDir.h"

namespace playerx::window {
namespace {

class GrowingFileTest : public testing::Test {
 protected:
  void append(const std::string& bytes) {
    std::ofstream(path_, std::ios::binary | std::ios::app) << bytes;
  }

  std::shared_ptr<GrowingFile> open(std::uint64_t total, bool isComplete = false) {
    int error = 0;
    return GrowingFile::open(path_, total, isComplete, &error);
  }

  static std::string read(GrowingFile& file, std::uint64_t offset) {
    std::array<char, 64> buffer{};
    const std::int64_t count = file.read(offset, buffer.data(), buffer.size());
    return count < 0 ? "failed" : std::string(buffer.data(), static_cast<std::size_t>(count));
  }

  /// A read on a thread of its own.
  static std::future<std::string> readLater(GrowingFile& file, std::uint64_t offset) {
    return std::async(std::launch::async, [&file, offset] { return read(file, offset); });
  }

  support::TempDir folder_;
  const std::filesystem::path path_ = folder_.write("film.part", "0123456789");
};

TEST_F(GrowingFileTest, GivesWhatHasArrivedWithoutWaiting) {
  const auto file = open(100);
  EXPECT_EQ(read(*file, 0), "0123456789");
  EXPECT_EQ(read(*file, 7), "789");
  EXPECT_EQ(file->arrived(), 10u);
  EXPECT_EQ(file->total(), 100u);
}

TEST_F(GrowingFileTest, WaitsAtTheEdgeAndGoesOn) {
  const auto file = open(100);
  auto pending = readLater(*file, 10);
  append("abc");
  file->wake();
  EXPECT_EQ(pending.get(), "abc");
}

TEST_F(GrowingFileTest, SeesBytesThatNobodyAnnounced) {
  const auto file = open(100);
  auto pending = readLater(*file, 10);
  append("abc");
  EXPECT_EQ(pending.get(), "abc");
}

TEST_F(GrowingFileTest, EndsAtTheEndOfTheWholeFilm) {
  const auto file = open(10);
  EXPECT_EQ(read(*file, 10), "");
}

TEST_F(GrowingFileTest, EndsWhenNothingMoreWillArrive) {
  const auto file = open(100);
  auto pending = readLater(*file, 10);
  file->finish();
  EXPECT_EQ(pending.get(), "");
  EXPECT_EQ(file->total(), 10u);
}

TEST_F(GrowingFileTest, CancellingEndsAWaitingReadAndAllLaterOnes) {
  const auto file = open(100);
  auto pending = readLater(*file, 10);
  file->cancel();
  EXPECT_EQ(pending.get(), "failed");
  EXPECT_EQ(read(*file, 0), "failed");
}

TEST_F(GrowingFileTest, StaysReadableWhenTheFilmIsMovedOrDeleted) {
  const auto file = open(13);
  append("abc");
  std::filesystem::rename(path_, folder_ / "film.avi");
  EXPECT_EQ(read(*file, 10), "abc");
  std::filesystem::remove(folder_ / "film.avi");
  EXPECT_EQ(read(*file, 0), "0123456789abc");
}

TEST_F(GrowingFileTest, FailsWhenTheFilmIsFetchedAnewFromItsBeginning) {
  const auto file = open(100);
  std::filesystem::resize_file(path_, 4);
  EXPECT_EQ(read(*file, 10), "failed");
}

TEST_F(GrowingFileTest, OpensNothingButFiles) {
  int error = 0;
  EXPECT_EQ(GrowingFile::open(folder_ / "missing", 0, true, &error), nullptr);
  EXPECT_EQ(error, ENOENT);
  EXPECT_EQ(GrowingFile::open(folder_.path(), 0, true, &error), nullptr);
  EXPECT_EQ(error, EISDIR);
}

}  // namespace
}  // namespace playerx::window
