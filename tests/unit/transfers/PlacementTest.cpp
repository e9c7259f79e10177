#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "playerx/platform/Descriptor.h"
#include "tests/unit/transfers/PartialFixture.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

class PlacementTest : public PartialFixture {
 protected:
  PlacementTest() : shared_(fs::path("/dev/shm") / folder_.path().filename()) {
    fs::create_directories(shared_);
  }
  ~PlacementTest() override { fs::remove_all(shared_); }

  Placed placeWhole(const DownloadRequest& request) {
    return place(*partOf(request, kFilmSize), request);
  }
  DownloadRequest across() const {
    DownloadRequest other = request();
    other.movies = shared_ / "movies";
    return other;
  }
  DownloadRequest withRights(const std::string& rights, const std::string& name = "film.avi") {
    DownloadRequest managed = request(name);
    managed.rightsManaged = true;
    managed.rights.assign(rights.begin(), rights.end());
    return managed;
  }
  bool isAcross() const {
    struct stat here {
    }, there{};
    ::stat(folder_.path().c_str(), &here);
    ::stat(shared_.c_str(), &there);
    return here.st_dev != there.st_dev;
  }

  const fs::path shared_;
};

TEST_F(PlacementTest, NothingStaysWhereTheFilmArrived) {
  EXPECT_EQ(placeWhole(request()).film, movie("film.avi"));
  EXPECT_EQ(support::readFile(movie("film.avi")), filmBytes(kFilmSize));
  EXPECT_TRUE(hasNoPartials());
}

TEST_F(PlacementTest, AFilmIsReadableLikeOtherFiles) {
  placeWhole(request());
  EXPECT_EQ(fs::status(movie("film.avi")).permissions(),
            fs::status(folder_.write("other", "")).permissions());
}

TEST_F(PlacementTest, AFilmCrossesFileSystems) {
  ASSERT_TRUE(isAcross());
  const Placed placed = placeWhole(across());
  EXPECT_EQ(placed.kind, Placed::Kind::kDone) << placed.detail;
  EXPECT_EQ(support::readFile(shared_ / "movies/film.avi"), filmBytes(kFilmSize));
  EXPECT_EQ(std::distance(fs::directory_iterator(shared_ / "movies"), {}), 1);
  EXPECT_TRUE(hasNoPartials());
  EXPECT_EQ(openPart(across()).film, shared_ / "movies/film.avi") << "with its mark";
}

TEST_F(PlacementTest, ACopyIsMadeOnlyWhereItIsAllowed) {
  ASSERT_TRUE(isAcross());
  const auto part = partOf(across(), kFilmSize);
  EXPECT_EQ(placePart(*part, across(), "", isCancelled_, Waiting::kForbidden).kind,
            Placed::Kind::kMustWait);
  EXPECT_TRUE(fs::is_empty(shared_ / "movies"));
  EXPECT_EQ(place(*part, across()).kind, Placed::Kind::kDone);
}

TEST_F(PlacementTest, AFilmThatCrossesOverwritesNothing) {
  fs::create_directories(shared_ / "movies");
  support::writeFile(shared_ / "movies/film.avi", "mine");
  EXPECT_EQ(placeWhole(across()).film, shared_ / "movies/film[2].avi");
  EXPECT_EQ(support::readFile(shared_ / "movies/film.avi"), "mine");
}

TEST_F(PlacementTest, APlacingThatIsCancelledLeavesThePartial) {
  isCancelled_ = true;
  for (const DownloadRequest& one : {request(), across()}) {
    EXPECT_EQ(placeWhole(one).kind, Placed::Kind::kCancelled);
    EXPECT_TRUE(fs::is_empty(one.movies));
    EXPECT_TRUE(openPart(one).part->isWhole());
  }
}

TEST_F(PlacementTest, ALinkThatLeadsNowhereIsATakenName) {
  fs::create_directories(folder_ / "movies");
  fs::create_symlink(folder_ / "nowhere", movie("film.avi"));
  EXPECT_EQ(placeWhole(request()).film, movie("film[2].avi"));
  EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
}

TEST_F(PlacementTest, AFilmThatWasPlacedBeforeMovesToItsNewName) {
  placeWhole(request());
  const DownloadRequest again = request("film[2].avi");
  EXPECT_EQ(placeAgain(movie("film.avi"), again).film, movie("film[2].avi"));
  EXPECT_FALSE(fs::exists(movie("film.avi")));
  EXPECT_EQ(openPart(again).film, movie("film[2].avi")) << "with its mark";
}

TEST_F(PlacementTest, AFilmThatHasItsNameStaysWhereItIs) {
  placeWhole(request());
  EXPECT_EQ(placeAgain(movie("film.avi"), request()).film, movie("film.avi"));
  EXPECT_EQ(support::readFile(movie("film.avi")), filmBytes(kFilmSize));
}

TEST_F(PlacementTest, RightsLieBesideTheFilmForItsOwnerAlone) {
  EXPECT_EQ(placeWhole(withRights("r")).kind, Placed::Kind::kDone);
  EXPECT_EQ(support::readFile(movie("film.avi.rights")), "r");
  EXPECT_EQ(fs::status(movie("film.avi.rights")).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(PlacementTest, RightsOfAnotherFilmAreNeverOverwritten) {
  folder_.write("movies/film.avi.rights", "another's");
  EXPECT_EQ(placeWhole(withRights("r")).film, movie("film[2].avi"));
  EXPECT_EQ(support::readFile(movie("film.avi.rights")), "another's");
  EXPECT_EQ(support::readFile(movie("film[2].avi.rights")), "r");
}

TEST_F(PlacementTest, NewRightsReplaceTheFilmsOldOnes) {
  placeWhole(withRights("old"));
  const Placed placed = placeAgain(movie("film.avi"), withRights("new", "film[2].avi"));
  EXPECT_EQ(placed.kind, Placed::Kind::kDone) << placed.detail;
  EXPECT_EQ(support::readFile(movie("film[2].avi.rights")), "new");
  EXPECT_FALSE(fs::exists(movie("film.avi.rights")));
}

TEST_F(PlacementTest, NewRightsOfAFilmThatStaysReplaceTheOldOnes) {
  placeWhole(withRights("old"));
  EXPECT_EQ(placeAgain(movie("film.avi"), withRights("new")).film, movie("film.avi"));
  EXPECT_EQ(support::readFile(movie("film.avi.rights")), "new");
}

TEST_F(PlacementTest, RightsStayWithAFilmThatMoves) {
  placeWhole(withRights("old"));
  EXPECT_EQ(placeAgain(movie("film.avi"), request("film[2].avi")).kind, Placed::Kind::kDone);
  EXPECT_EQ(support::readFile(movie("film[2].avi.rights")), "old");
  EXPECT_FALSE(fs::exists(movie("film.avi.rights")));
}

TEST_F(PlacementTest, AMoviesFolderThatVanishedBreaks) {
  auto part = partOf(request(), kFilmSize);
  fs::remove_all(folder_ / "movies");
  const Placed placed = place(*part, request());
  EXPECT_EQ(placed.kind, Placed::Kind::kFailed);
  EXPECT_EQ(placed.failure, TransferFailure::kMediaFolder);
  part.reset();
  EXPECT_TRUE(openPart(request()).part->isWhole()) << "nothing is lost";
}

TEST_F(PlacementTest, AFilmThatIsTakenBackGetsItsOldName) {
  placeWhole(withRights("old"));
  ASSERT_TRUE(takeBack(movie("film.avi"), folder_ / "parts"));
  EXPECT_TRUE(fs::is_empty(folder_ / "movies"));
  const Opened opened = openPart(withRights("new"));
  ASSERT_TRUE(opened.part && opened.part->isWhole());
  EXPECT_EQ(place(*opened.part, withRights("new")).film, movie("film.avi"));
  EXPECT_EQ(support::readFile(movie("film.avi.rights")), "new");
}

TEST_F(PlacementTest, AFilmThatIsTakenBackOnAnotherFileSystemGetsItsOldName) {
  ASSERT_TRUE(isAcross());
  placeWhole(across());
  const fs::path film = shared_ / "movies/film.avi";
  support::writeFile(shared_ / "movies/film[2].avi", "mine");
  ASSERT_TRUE(takeBack(film, folder_ / "parts"));
  EXPECT_FALSE(fs::exists(film));
  const Opened opened = openPart(across());
  ASSERT_EQ(opened.film, shared_ / "movies/film[3].avi");
  EXPECT_EQ(placeAgain(opened.film, across()).film, film);
  EXPECT_EQ(support::readFile(film), filmBytes(kFilmSize));
  EXPECT_EQ(support::readFile(shared_ / "movies/film[2].avi"), "mine");
}

TEST_F(PlacementTest, AFilmIsTakenBackByItsAddressAlone) {
  placeWhole(request());
  const Address other = *parseAddress("http://other/film.avi");
  EXPECT_FALSE(takeBackFilmOf(other, folder_ / "movies", folder_ / "parts"));
  EXPECT_TRUE(takeBackFilmOf(request().address, folder_ / "movies", folder_ / "parts"));
  EXPECT_TRUE(fs::is_empty(folder_ / "movies"));
}

TEST_F(PlacementTest, AFilmThatThePowerCutMayHaveTornIsFetchedAgainUnderItsName) {
  placeWhole(request());
  FilmMark mark = *readMark(movie("film.avi"));
  mark.boot = digestOf("an earlier boot");
  const Descriptor film(::open(movie("film.avi").c_str(), O_RDWR));
  ASSERT_EQ(writeMark(film.get(), mark), 0);
  ASSERT_TRUE(takeBack(movie("film.avi"), folder_ / "parts"));
  const Opened opened = openPart(request());
  EXPECT_FALSE(opened.part->isWhole());
  EXPECT_EQ(opened.part->facts().size, 0u);
}

TEST_F(PlacementTest, OnlyAMarkedFilmIsTakenBack) {
  folder_.write("movies/film.avi", filmBytes(kFilmSize));
  fs::create_directories(folder_ / "parts");
  EXPECT_FALSE(takeBack(movie("film.avi"), folder_ / "parts"));
  EXPECT_FALSE(takeBack(movie("missing.avi"), folder_ / "parts"));
  EXPECT_TRUE(fs::exists(movie("film.avi")));
}

TEST_F(PlacementTest, AFilmIsTakenBackBesideAnotherPartialOfItsPlace) {
  const DownloadRequest other = request("other.avi", "http://h/film.avi?token=1");
  placeWhole(request());
  const auto part = partOf(other, 10);
  EXPECT_TRUE(takeBack(movie("film.avi"), folder_ / "parts"));
  EXPECT_TRUE(openPart(request()).part->isWhole());
}

}  // namespace
}  // namespace playerx::transfers
