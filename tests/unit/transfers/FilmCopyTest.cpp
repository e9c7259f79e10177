#include <gtest/gtest.h>

#include <cerrno>

#include "playerx/transfers/FilmCopy.h"
#include "tests/support/TempDir.h"
#include "tests/unit/transfers/FilmServer.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

class FilmCopyTest : public ::testing::Test {
 protected:
  int copy(const fs::path& to) const { return copyFilm(film_, to, mark_, isCancelled_); }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_.path()), {}));
  }

  support::TempDir folder_;
  const std::string content_ = filmBytes(9'000'000);
  const fs::path film_ = folder_.write("film.part", content_);
  const FilmMark mark_{digestOf("place"), digestOf("address"), 9'000'000, ""};
  std::atomic<bool> isCancelled_{false};
};

TEST_F(FilmCopyTest, TheCopyHasTheBytesAndTheMark) {
  EXPECT_EQ(copy(folder_ / "film.avi"), 0);
  EXPECT_EQ(support::readFile(folder_ / "film.avi"), content_);
  EXPECT_EQ(readMark(folder_ / "film.avi"), mark_);
  EXPECT_TRUE(fs::exists(film_)) << "the caller's to delete";
}

TEST_F(FilmCopyTest, TheCopyIsOpenToWhomTheFilmIs) {
  fs::permissions(film_, fs::perms(0644));
  EXPECT_EQ(copy(folder_ / "film.avi"), 0);
  EXPECT_EQ(fs::status(folder_ / "film.avi").permissions(), fs::perms(0644));
}

TEST_F(FilmCopyTest, ATakenNameStaysAsItIs) {
  folder_.write("film.avi", "mine");
  EXPECT_EQ(copy(folder_ / "film.avi"), EEXIST);
  EXPECT_EQ(support::readFile(folder_ / "film.avi"), "mine");
  fs::create_symlink("nowhere", folder_ / "link.avi");
  EXPECT_EQ(copy(folder_ / "link.avi"), EEXIST);
}

TEST_F(FilmCopyTest, ACancelledCopyLeavesNothing) {
  isCancelled_ = true;
  EXPECT_EQ(copy(folder_ / "film.avi"), ECANCELED);
  EXPECT_EQ(fileCount(), 1u);
}

TEST_F(FilmCopyTest, AFailureIsAnErrorNumber) {
  EXPECT_EQ(copy(folder_ / "missing/film.avi"), ENOENT);
  EXPECT_EQ(copyFilm(folder_ / "none", folder_ / "film.avi", mark_, isCancelled_), ENOENT);
  fs::create_symlink(film_, folder_ / "link.part");
  EXPECT_EQ(copyFilm(folder_ / "link.part", folder_ / "film.avi", mark_, isCancelled_), ELOOP);
  EXPECT_FALSE(fs::exists(folder_ / "film.avi"));
}

}  // namespace
}  // namespace playerx::transfers
