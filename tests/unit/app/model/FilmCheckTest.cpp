#include <gtest/gtest.h>

#include "download/Placement.h"
#include "playerx/app/model/FilmCheck.h"
#include "tests/support/TempDir.h"

namespace playerx::model {
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

TEST(SpaceNeeded, IsTwiceTheFilmAndALittle) {
  EXPECT_EQ(spaceNeededFor(0), 0U);
  EXPECT_EQ(spaceNeededFor(7168), 14'337U);
  EXPECT_EQ(spaceNeededFor(std::uint64_t{1} << 63U), ~std::uint64_t{0}) << "more than there can be";
}

TEST(SpaceNeeded, IsWhatTheManagerAsksFor) {
  for (unsigned int bits = 0; bits < 64; ++bits) {
    const std::uint64_t power = std::uint64_t{1} << bits;
    for (const std::uint64_t size :
         {power - 1, power, power / 7168 * 7168, std::uint64_t{7168} * bits}) {
      EXPECT_EQ(spaceNeededFor(size), download::spaceForFreshDownload(size)) << size;
    }
  }
}

TEST_F(FilmCheckTest, AWholeFilmInItsPlaceIsNotWorthAWord) {
  EXPECT_EQ(findOddity(filmAt(folder_.write("film.avi", "1234"), 4), "/elsewhere"), "");
  EXPECT_EQ(findOddity(filmAt(folder_.write("film.avi", "1234"), 0), "/elsewhere"), "");
}

TEST_F(FilmCheckTest, AFilmShorterThanAnnouncedIsNamed) {
  EXPECT_EQ(
      findOddity(filmAt(folder_.write("film.avi", "1234"), 3000), "/elsewhere"),
      "film.avi has 4 B although its server had announced 3.0 kB; should it end early, remove "
      "it and get it again.");
}

TEST_F(FilmCheckTest, AFilmLongerThanAnnouncedIsNamed) {
  const std::filesystem::path film = folder_.write("film.avi", std::string(5000, 'x'));
  EXPECT_EQ(findOddity(filmAt(film, 4), "/elsewhere"),
            "film.avi has 5.0 kB although its server had announced 4 B; it is kept as it came.");
}

TEST_F(FilmCheckTest, SizesThatLookTheSameAreNamedInBytes) {
  const std::filesystem::path film = folder_.write("film.avi", std::string(5001, 'x'));
  EXPECT_EQ(findOddity(filmAt(film, 5000), "/elsewhere"),
            "film.avi has 5001 bytes although its server had announced 5000; it is kept as it "
            "came.");
}

TEST_F(FilmCheckTest, AFilmInThePresentMediaFolderIsNamed) {
  folder_.write("film.avi", "1234");
  const std::filesystem::path here = folder_ / "film.avi";
  EXPECT_EQ(findOddity(filmAt("/former/film.avi", 4), here.parent_path()),
            "film.avi lies at " + here.string() + ", in the present media folder.");
}

TEST_F(FilmCheckTest, AFilmThatIsNowhereIsNamed) {
  EXPECT_EQ(findOddity(filmAt("/former/film.avi", 4), "/elsewhere"),
            "film.avi is not there any more.");
}

/// Films that are looked for together, more than a few.
class ManyFilmsTest : public FilmCheckTest {
 protected:
  /// The oddity of the film of this name, once the folder has been asked for many others.
  std::string oddityOf(const std::string& name, const std::filesystem::path& mediaFolder) const {
    FolderNames folders;
    for (int i = 0; i < 100; ++i) {
      const ItemState other = filmAt(folder_ / ("gone-" + std::to_string(i)), 4);
      EXPECT_EQ(findOddity(other, mediaFolder, folders), "film.avi is not there any more.");
    }
    return findOddity(filmAt(folder_ / name, 4), mediaFolder, folders);
  }
};

TEST_F(ManyFilmsTest, ThoseThatAreThereAreFound) {
  folder_.write("film.avi", "1234");
  folder_.write("Z\u00fcrich.avi", "1234");
  EXPECT_EQ(oddityOf("film.avi", "/elsewhere"), "");
  EXPECT_EQ(oddityOf("Z\u00fcrich.avi", "/elsewhere"), "");
  EXPECT_EQ(oddityOf("other.avi", "/elsewhere"), "film.avi is not there any more.");
}

TEST_F(ManyFilmsTest, OneInThePresentMediaFolderIsNamed) {
  const support::TempDir media;
  const std::filesystem::path here = media.write("film.avi", "1234");
  EXPECT_EQ(oddityOf("film.avi", here.parent_path()),
            "film.avi lies at " + here.string() + ", in the present media folder.");
}

TEST(FolderNamesTest, AFolderThatCannotBeReadIsNotTakenForAnEmptyOne) {
  const support::TempDir folder;
  const std::filesystem::path loop = folder / "loop";
  std::filesystem::create_symlink(loop, loop);
  FolderNames folders;
  for (int i = 0; i < 100; ++i) EXPECT_FALSE(folders.lacks(loop.native(), "film.avi"));
}

TEST(FolderNamesTest, ANameOfOtherCapitalLettersMayBeThere) {
  const support::TempDir folder;
  const std::string place = folder.write("Film.avi", "1234").parent_path();
  FolderNames folders;
  for (int i = 0; i < 100; ++i) folders.lacks(place, "gone.avi");
  EXPECT_TRUE(folders.lacks(place, "gone.avi"));
  EXPECT_FALSE(folders.lacks(place, "film.AVI"));
  EXPECT_FALSE(folders.lacks(place, "GONE~1.AVI"));
}

TEST(FilmNameTest, IsOnePlainName) {
  for (const char* name : {"a.avi", "grüße.mkv", ".a.avi", "a b.avi"}) {
    EXPECT_TRUE(isFilmName(name)) << name;
  }
  EXPECT_TRUE(isFilmName(std::string(255, 'a')));
  EXPECT_FALSE(isFilmName(std::string(256, 'a')));
  for (const char* name : {"", " ", ".", "..", "a/b.avi", "/a.avi", "a\nb.avi", "\x1b[31m.avi"}) {
    EXPECT_FALSE(isFilmName(name)) << name;
  }
}

}  // namespace
}  // namespace playerx::model
