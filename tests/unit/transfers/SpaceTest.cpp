#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <fstream>

#include "playerx/transfers/PartFile.h"
#include "tests/support/Process.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

using support::Process;

constexpr std::size_t kSmall = 1'000'000;
constexpr std::size_t kSpaceSize = 3'000'000;
constexpr int kNoSpace = static_cast<int>(TransferFailure::kNoSpace);

/// A small disk of its own, where the system lets us have one.
class SmallDisk {
 public:
  explicit SmallDisk(std::filesystem::path place, std::size_t bytes = kSmall)
      : place_(std::move(place)) {
    std::filesystem::create_directories(place_);
    isThere_ = resize(bytes, 0);
  }
  ~SmallDisk() {
    if (isThere_) ::umount2(place_.c_str(), MNT_DETACH);
  }
  bool isThere() const { return isThere_; }
  bool grow() { return resize(10 * kSpaceSize, MS_REMOUNT); }
  /// Bytes left, in hundredths of the disk.
  std::uintmax_t percentFree() const {
    const auto space = std::filesystem::space(place_);
    return space.available * 100 / space.capacity;
  }

 private:
  bool resize(std::size_t bytes, unsigned long flags) {
    const std::string options = "size=" + std::to_string(bytes);
    return ::mount("tmpfs", place_.c_str(), "tmpfs", flags, options.c_str()) == 0;
  }

  const std::filesystem::path place_;
  bool isThere_ = false;
};

class SpaceTest : public DownloadsFixture {
 protected:
  SpaceTest() : server_(filmOf(kSpaceSize)) {}

  static Film endless() {
    Film film = filmOf(kSpaceSize);
    film.length = false;
    return film;
  }
  /// The same by a limit on the size of files, which needs nobody's leave.
  std::string fetchUnderLimit() {
    const std::string command =
        "ulimit -f " + std::to_string(kSmall / 1024) + "; exec \"$0\" \"$@\"";
    Process process(
        {"bash", "-c", command, VESK_FETCH_PROGRAM, parts(), movies(), server_.url(), "film.avi"});
    EXPECT_EQ(process.wait(), 1) << process.errors();
    return process.output();
  }

  FilmServer server_;
};

TEST_F(SpaceTest, AFilmThatDoesNotFitBreaks) {
  const std::string output = fetchUnderLimit();
  EXPECT_TRUE(output.ends_with("broke " + std::to_string(kNoSpace) + "\n")) << output;
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{});
}

TEST_F(SpaceTest, AFilmThatDoesNotFitBreaksBeforeItsFirstByteIsKept) {
  Film huge = filmOf(10);
  huge.extraHeaders = "Content-Length: " + std::to_string(1'000'000'000'000'000) + "\r\n";
  huge.length = false;
  server_.setFilm(huge);
  EXPECT_EQ(fetch(server_.url()).broke, kNoSpace);
  EXPECT_TRUE(partsBecome({}));
  const SmallDisk disk(parts());
  if (!disk.isThere()) return;
  server_.setFilm(filmOf(kSpaceSize));
  EXPECT_EQ(fetch(server_.url()).broke, kNoSpace);
  EXPECT_TRUE(partsBecome({}));
}

TEST_F(SpaceTest, ADiskThatFillsUpBreaksAndWhatCameIsContinued) {
  server_.setFilm(endless());
  fetchUnderLimit();
  server_.setFilm(filmOf(kSpaceSize));
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_NE(server_.header(1, "Range"), "");
  EXPECT_EQ(film(), filmBytes(kSpaceSize));
}

TEST_F(SpaceTest, ASmallDiskThatGrowsLaterIsContinuedOn) {
  SmallDisk disk(parts());
  server_.setFilm(endless());
  if (!disk.isThere()) {
    fetchUnderLimit();
  } else {
    EXPECT_EQ(fetch(server_.url()).broke, kNoSpace);
    ASSERT_TRUE(disk.grow());
  }
  server_.setFilm(filmOf(kSpaceSize));
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_NE(server_.header(1, "Range"), "");
  EXPECT_EQ(film(), filmBytes(kSpaceSize));
}

TEST_F(SpaceTest, AFilmThatDoesNotFitAmongTheMoviesIsPlacedLaterWithoutFetching) {
  SmallDisk disk(movies());
  if (!disk.isThere()) {
    folder_.write("movies/film.avi", "");  // another way to have to place it elsewhere
  } else {
    EXPECT_EQ(fetch(server_.url()).broke, static_cast<int>(TransferFailure::kNoSpaceForFilm));
    EXPECT_EQ(filesIn(movies()), std::vector<std::string>{});
    ASSERT_TRUE(disk.grow());
  }
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_EQ(server_.requestCount(), 1u);
  EXPECT_EQ(film(disk.isThere() ? "film.avi" : "film[2].avi"), filmBytes(kSpaceSize));
}

TEST_F(SpaceTest, AFilmWithoutLengthLeavesAHundredthOfTheDisk) {
  const SmallDisk disk(parts(), 10 * kSpaceSize);
  if (!disk.isThere()) return;
  Film film = filmOf(12 * kSpaceSize);
  film.length = false;
  server_.setFilm(film);
  EXPECT_EQ(fetch(server_.url()).broke, kNoSpace);
  EXPECT_EQ(disk.percentFree(), 1u);
}

TEST_F(SpaceTest, AFilmThatWouldTakeTheLastHundredthIsNotBegun) {
  const SmallDisk disk(parts(), 10 * kSpaceSize);
  if (!disk.isThere()) return;
  server_.setFilm(filmOf(10 * kSpaceSize - kSpaceSize / 100));
  EXPECT_EQ(fetch(server_.url()).broke, kNoSpace);
  EXPECT_TRUE(partsBecome({}));
}

TEST_F(SpaceTest, AFilmOfWhichNothingIsMissingNeedsNoSpace) {
  const SmallDisk disk(parts());
  if (!disk.isThere()) return;
  folder_.write("parts/film", "film");
  std::ofstream(folder_ / "parts/other") << std::string(kSmall, 'x');  // as far as it fits
  ASSERT_EQ(disk.percentFree(), 0u);
  PartFile film(Descriptor(::open((folder_ / "parts/film").c_str(), O_RDWR | O_CLOEXEC)), 4);
  EXPECT_EQ(film.reserve(4), 0);
  EXPECT_EQ(film.reserve(5), ENOSPC);
}

TEST_F(SpaceTest, TheReservedSpaceIsGivenBackWhenASessionStops) {
  constexpr std::size_t kSize = kLargeFilm + 1;
  server_.setFilm(filmOf(kSize));
  server_.stallNext(kSize / 8);
  const auto uid = start(server_.url());
  ASSERT_TRUE(receiver_.waitForPercent(uid, 12));
  std::filesystem::path bytes;
  for (const std::string& name : filesIn(parts())) {
    if (name.ends_with(".part")) bytes = parts() / name;
  }
  struct stat status {};
  ASSERT_EQ(::stat(bytes.c_str(), &status), 0);
  EXPECT_GE(status.st_blocks * 512, static_cast<off_t>(kSize)) << "reserved";
  EXPECT_LE(status.st_size, static_cast<off_t>(kSize / 2)) << "but not counted";
  downloads_->stopSession(uid);
  EXPECT_TRUE(support::waitFor([&] {
    return ::stat(bytes.c_str(), &status) == 0 &&
           status.st_blocks * 512 < static_cast<off_t>(kSize / 2);
  }));
}

}  // namespace
}  // namespace playerx::transfers
