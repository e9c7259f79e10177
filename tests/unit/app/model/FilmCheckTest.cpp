#include <gtest/gtest.h>

#include "playerx/app/model/FilmCheck.h"
#include "tests/support/TempDir.h"

namespace playerx {
namespace {

class FilmCheckTest : public testing::Test {
 protected:
  ItemState filmAt(const std::filesystem::path& path, std::uint64_t size) const {
    ItemState film;
    film.title = "film.avi";
    film.path = path;
    film.size = size;
    return film;
  }

  support::TempDir folder_;
};

TEST_F(FilmCheckTest, AWholeFilmInItsPlaceIsNotWorthAWord) {
  EXPECT_EQ(oddityOf(filmAt(folder_.write("film.avi", "1234"), 4), "/elsewhere"), "");
  EXPECT_EQ(oddityOf(filmAt(folder_.write("film.avi", "12345"), 4), "/elsewhere"), "");
}

TEST_F(FilmCheckTest, AFilmShorterThanAnnouncedIsNamed) {
  EXPECT_EQ(
      oddityOf(filmAt(folder_.write("film.avi", "1234"), 3000), "/elsewhere"),
      "film.avi has 4 B although its server had announced 3.0 kB; should it end early, remove "
      "it and get it again.");
}

TEST_F(FilmCheckTest, AFilmInThePresentMediaFolderIsNamed) {
  folder_.write("film.avi", "1234");
  const std::filesystem::path here = folder_ / "film.avi";
  EXPECT_EQ(oddityOf(filmAt("/former/film.avi", 4), here.parent_path()),
            "film.avi lies at " + here.string() + ", in the present media folder.");
}

TEST_F(FilmCheckTest, OfAFilmThatIsNowhereNothingIsKnown) {
  EXPECT_EQ(oddityOf(filmAt("/former/film.avi", 4), "/elsewhere"), "");
}

}  // namespace
}  // namespace playerx
