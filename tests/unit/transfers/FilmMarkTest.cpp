#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>

#include "playerx/platform/Descriptor.h"
#include "playerx/transfers/FilmMark.h"
#include "tests/support/TempDir.h"

namespace playerx::transfers {
namespace {

class FilmMarkTest : public ::testing::Test {
 protected:
  int write(const FilmMark& mark) const {
    const Descriptor file(::open(film_.c_str(), O_RDWR));
    return writeMark(file.get(), mark);
  }
  void writeText(const std::string& text) const {
    ASSERT_EQ(::setxattr(film_.c_str(), "user.vesk.film", text.data(), text.size(), 0), 0);
  }

  support::TempDir folder_;
  const std::filesystem::path film_ = folder_.write("film.avi", "12345");
  const FilmMark mark_{digestOf("place"), digestOf("address"), 5, ""};
};

TEST_F(FilmMarkTest, ComesBackAsItWasWritten) {
  FilmMark unsynced = mark_;
  unsynced.boot = currentBoot();
  for (const FilmMark& mark : {mark_, unsynced}) {
    ASSERT_EQ(write(mark), 0);
    EXPECT_EQ(readMark(film_), mark);
  }
}

TEST_F(FilmMarkTest, MovesWithTheFile) {
  ASSERT_EQ(write(mark_), 0);
  std::filesystem::rename(film_, folder_ / "other.avi");
  EXPECT_EQ(readMark(folder_ / "other.avi"), mark_);
}

TEST_F(FilmMarkTest, CanBeTakenOff) {
  ASSERT_EQ(write(mark_), 0);
  removeMark(film_);
  EXPECT_EQ(readMark(film_), std::nullopt);
  removeMark(film_);
  removeMark(folder_ / "missing");
}

TEST_F(FilmMarkTest, IsNeitherOnAMissingFileNorBehindALink) {
  ASSERT_EQ(write(mark_), 0);
  EXPECT_EQ(readMark(folder_ / "missing"), std::nullopt);
  std::filesystem::create_symlink(film_, folder_ / "link");
  EXPECT_EQ(readMark(folder_ / "link"), std::nullopt);
  EXPECT_FALSE(isWhole(mark_, folder_ / "link"));
}

TEST_F(FilmMarkTest, TextOfAnotherFormIsNone) {
  for (const std::string text : {"", "1", "2 a b 5 -", "1 a b x -", "1 a b 5", "1 a b -5000 -x"}) {
    writeText(text);
    const auto mark = readMark(film_);
    EXPECT_TRUE(!mark || !isWhole(*mark, film_)) << text;
  }
  writeText(std::string(1000, '1'));
  EXPECT_EQ(readMark(film_), std::nullopt);
}

TEST_F(FilmMarkTest, AFilmIsWholeWithItsSizeAndItsBytesOnTheDisk) {
  EXPECT_TRUE(isWhole(mark_, film_));
  EXPECT_FALSE(isWhole({"", "", 6, ""}, film_));
  EXPECT_TRUE(isWhole({"", "", 5, currentBoot()}, film_)) << "the machine has not gone down since";
  EXPECT_FALSE(isWhole({"", "", 5, digestOf("an earlier boot")}, film_));
  EXPECT_FALSE(isWhole(mark_, folder_.path()));
}

TEST(DigestTest, DependsOnTheTextAlone) {
  EXPECT_EQ(digestOf("http://h/f"), digestOf("http://h/f"));
  EXPECT_NE(digestOf("http://h/f"), digestOf("http://h/g"));
  EXPECT_EQ(digestOf("http://h/f").find_first_not_of("0123456789abcdef"), std::string::npos);
  EXPECT_EQ(digestOf("http://h/f").size(), 16u);
}

}  // namespace
}  // namespace playerx::transfers
