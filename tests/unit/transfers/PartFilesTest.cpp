#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>

#include "playerx/transfers/FileNames.h"
#include "playerx/transfers/PartFile.h"
#include "playerx/transfers/PartFinder.h"
#include "playerx/transfers/Placement.h"
#include "tests/support/TempDir.h"
#include "tests/unit/transfers/FilmServer.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

std::uint64_t bytesOnDisk(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return static_cast<std::uint64_t>(status.st_blocks) * 512;
}

class PartFileTest : public ::testing::Test {
 protected:
  PartFileTest() : file_(Descriptor(::open(path_.c_str(), O_RDWR | O_CREAT, 0600)), 0) {}

  support::TempDir folder_;
  const fs::path path_ = folder_ / "bytes";
  PartFile file_;
};

TEST_F(PartFileTest, WhatIsAppendedInAnyPiecesIsThere) {
  const std::string content = filmBytes(1'000'000);
  for (std::size_t at = 0, piece = 1; at < content.size(); at += piece, piece = piece * 3 + 1) {
    piece = std::min(piece, content.size() - at);
    EXPECT_EQ(file_.append(content.data() + at, piece), 0);
    EXPECT_EQ(file_.size(), at + piece);
  }
  EXPECT_EQ(file_.flush(), 0);
  EXPECT_EQ(support::readFile(path_), content);
}

TEST_F(PartFileTest, ReadsBackWhatStillWaitsInMemory) {
  file_.append("0123456789", 10);
  char bytes[4];
  EXPECT_TRUE(file_.read(3, bytes, 4));
  EXPECT_EQ(std::string(bytes, 4), "3456");
  EXPECT_FALSE(file_.read(7, bytes, 4));
  EXPECT_FALSE(file_.read(11, bytes, 0));
}

TEST_F(PartFileTest, SpaceIsReservedWithoutChangingTheSizeAndGivenBack) {
  file_.append("film", 4);
  ASSERT_EQ(file_.reserve(10'000'000), 0);
  EXPECT_EQ(fs::file_size(path_), 4u);
  EXPECT_GE(bytesOnDisk(path_), 10'000'000u);
  file_.giveBack();
  EXPECT_EQ(fs::file_size(path_), 4u);
  EXPECT_LT(bytesOnDisk(path_), 100'000u);
  EXPECT_EQ(support::readFile(path_), "film");
}

TEST_F(PartFileTest, ASmallerTotalReservesNothing) {
  file_.append("film", 4);
  EXPECT_EQ(file_.reserve(4), 0);
  EXPECT_EQ(file_.reserve(0), 0);
}

TEST_F(PartFileTest, MoreThanADiskHoldsIsNoSpace) {
  EXPECT_NE(file_.reserve(std::uint64_t{1} << 62U), 0);
  EXPECT_EQ(file_.reserve(UINT64_MAX), EFBIG);
  EXPECT_LT(bytesOnDisk(path_), 100'000u);
}

TEST_F(PartFileTest, ACutDropsWhatWaitsAndWhatIsReserved) {
  file_.append("film", 4);
  file_.reserve(10'000'000);
  EXPECT_EQ(file_.cut(2), 0);
  EXPECT_EQ(file_.size(), 2u);
  file_.append("nd", 2);
  file_.flush();
  EXPECT_EQ(support::readFile(path_), "find");
  EXPECT_LT(bytesOnDisk(path_), 100'000u);
}

class FindTest : public ::testing::Test {
 protected:
  Wish wish(const std::string& url = "http://h/film.avi", const std::string& name = "film.avi") {
    Wish wish;
    wish.address = *parseAddress(url);
    wish.name = name;
    wish.movies = folder_ / "movies";
    wish.downloads = folder_ / "parts";
    return wish;
  }
  /// A partial with so many bytes of a film of 1000.
  std::unique_ptr<Part> partOf(const Wish& wish, std::size_t bytes) {
    std::unique_ptr<Part> part = openPart(wish).part;
    EXPECT_EQ(part->beginVersion({"\"a\"", "", false}, 1000), 0);
    const std::string content = filmBytes(1000).substr(0, bytes);
    EXPECT_EQ(part->file().append(content.data(), content.size()), 0);
    EXPECT_EQ(part->file().flush(), 0);
    return part;
  }
  fs::path stateFile() {
    for (const auto& entry : fs::directory_iterator(folder_ / "parts")) {
      if (entry.path().extension() == ".json") return entry.path();
    }
    return {};
  }
  void changeState(const std::function<void(PartState&)>& change) {
    PartState state = *readState(support::readFile(stateFile()));
    change(state);
    support::writeFile(stateFile(), writeState(state));
  }

  support::TempDir folder_;
  std::atomic<bool> goOn_{false};
};

TEST_F(FindTest, APartialIsFoundAgainAsItWasLeft) {
  partOf(wish(), 400);
  const Opened opened = openPart(wish());
  ASSERT_TRUE(opened.part);
  EXPECT_EQ(opened.kind, Opened::Kind::kArriving);
  EXPECT_EQ(opened.part->facts().size, 400u);
  EXPECT_EQ(opened.part->facts().total, 1000u);
  EXPECT_EQ(opened.part->facts().validator.etag, "\"a\"");
}

TEST_F(FindTest, APartialInUseIsLeftAlone) {
  const auto first = partOf(wish(), 400);
  const Opened second = openPart(wish());
  ASSERT_TRUE(second.part);
  EXPECT_NE(second.part->paths().key, first->paths().key);
  EXPECT_EQ(second.part->facts().size, 0u);
  const Opened third = openPart(wish());
  EXPECT_NE(third.part->paths().key, second.part->paths().key);
}

TEST_F(FindTest, TheExactAddressGoesBeforeTheSamePlace) {
  partOf(wish("http://h/f?token=1"), 100);
  const auto other = openPart(wish("http://h/f?token=2"));
  EXPECT_EQ(other.part->facts().size, 0u) << "not rights-managed";
  Wish managed = wish("http://h/f?token=1");
  managed.rightsManaged = true;
  EXPECT_EQ(openPart(managed).part->facts().size, 100u);
  managed = wish("http://h/f?token=3");
  managed.rightsManaged = true;
  EXPECT_EQ(openPart(managed).part->facts().size, 100u);
}

TEST_F(FindTest, APartialThatWasContinuedBelongsToTheNewAddress) {
  partOf(wish("http://h/f?token=1"), 100);
  Wish managed = wish("http://h/f?token=2");
  managed.rightsManaged = true;
  openPart(managed);
  EXPECT_EQ(openPart(wish("http://h/f?token=2")).part->facts().size, 100u);
}

TEST_F(FindTest, APartialWithoutBytesLeavesNothingBehind) {
  openPart(wish());
  EXPECT_TRUE(fs::is_empty(folder_ / "parts"));
  Wish managed = wish();
  managed.rights = {1};
  openPart(managed);
  EXPECT_TRUE(fs::is_empty(folder_ / "parts"));
}

TEST_F(FindTest, AfterAPowerCutOnlyWhatWasOnTheDiskIsBelieved) {
  auto part = partOf(wish(), 400);
  EXPECT_EQ(part->makeDurable(part->mark()), 0);
  part->file().append(filmBytes(200).data(), 200);
  part->file().flush();
  const std::string kept = support::readFile(stateFile());
  part.reset();
  support::writeFile(stateFile(), kept);
  changeState([](PartState& state) { state.boot = "an earlier one"; });
  EXPECT_EQ(openPart(wish()).part->facts().size, 400u);
}

TEST_F(FindTest, AMarkOfAnEarlierVersionMakesNothingDurable) {
  auto part = partOf(wish(), 400);
  const Part::Mark mark = part->mark();
  part->beginVersion({"\"b\"", "", false}, 1000);
  EXPECT_EQ(part->makeDurable(mark), 0);
  EXPECT_EQ(part->state().durable, 0u);
}

TEST_F(FindTest, APartialLargerThanItsTotalIsNotBelieved) {
  partOf(wish(), 400);
  changeState([](PartState& state) { state.total = 300; });
  EXPECT_EQ(openPart(wish()).part->facts().size, 0u);
}

TEST_F(FindTest, BytesWithoutAnAcceptedAnswerAreNotBelieved) {
  partOf(wish(), 400);
  changeState([](PartState& state) { state.answered = false; });
  EXPECT_EQ(openPart(wish()).part->facts().size, 0u);
}

TEST_F(FindTest, AFolderOrALinkInThePlaceOfThePartialIsPassedOver) {
  const std::string key = partKey("http://h/film.avi");
  fs::create_directories(folder_ / "parts" / (key + ".part"));
  EXPECT_TRUE(openPart(wish()).part);
  fs::remove(folder_ / "parts" / (key + ".part"));
  folder_.write("victim", "precious");
  fs::create_symlink(folder_ / "victim", folder_ / "parts" / (key + ".part"));
  EXPECT_TRUE(openPart(wish()).part);
  EXPECT_EQ(support::readFile(folder_ / "victim"), "precious");
}

TEST_F(FindTest, TheStateIsForItsOwnerAlone) {
  partOf(wish(), 400);
  EXPECT_EQ(fs::status(stateFile()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(FindTest, ACompletePartialIsPlacedWithoutFurtherQuestions) {
  auto part = partOf(wish(), 1000);
  part->announceMove(folder_ / "movies/film.avi", "", "film.avi", 1000, part->inode());
  part.reset();
  const Opened opened = openPart(wish());
  EXPECT_EQ(opened.kind, Opened::Kind::kArrived);
}

TEST_F(FindTest, AStrangerInThePlaceOfACompletePartialIsNotTakenForTheFilm) {
  auto part = partOf(wish(), 1000);
  part->announceMove(folder_ / "movies/film.avi", "", "film.avi", 1000, part->inode());
  part.reset();
  folder_.write("movies/film.avi", std::string(1000, 'x'));
  Opened opened = openPart(wish("http://h/film.avi", "film[2].avi"));
  EXPECT_EQ(opened.kind, Opened::Kind::kArrived);
  EXPECT_EQ(
      placeFilm(*opened.part, opened.film, wish("http://h/film.avi", "film[2].avi"), goOn_).film,
      folder_ / "movies/film[2].avi");
  EXPECT_EQ(support::readFile(folder_ / "movies/film.avi"), std::string(1000, 'x'));
  EXPECT_EQ(support::readFile(folder_ / "movies/film[2].avi"), filmBytes(1000));
}

TEST_F(FindTest, ACopyThatAppearedBeforeThePartialWentIsTheFilm) {
  auto part = partOf(wish(), 1000);
  const fs::path copy = folder_.write("movies/film.avi", filmBytes(1000));
  struct stat status {};
  ASSERT_EQ(::stat(copy.c_str(), &status), 0);
  part->announceMove(copy, "", "film.avi", 1000, status.st_ino);
  part.reset();
  Opened opened = openPart(wish("http://h/film.avi", "film[2].avi"));
  EXPECT_EQ(opened.kind, Opened::Kind::kFinished);
  EXPECT_EQ(opened.film, copy);
  EXPECT_EQ(
      placeFilm(*opened.part, opened.film, wish("http://h/film.avi", "film[2].avi"), goOn_).film,
      folder_ / "movies/film[2].avi");
  opened.part.reset();
  EXPECT_FALSE(fs::exists(copy));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "parts"), {}), 1) << "the record alone";
}

TEST_F(FindTest, AMoveThatDiedHalfWayIsFoundAtEitherEnd) {
  for (const char* end : {"movies/film.avi", "movies/film[2].avi"}) {
    auto part = partOf(wish(), 1000);
    part->announceMove(folder_ / "movies/film[2].avi", folder_ / "movies/film.avi", "film.avi",
                       1000, 0);
    part->placed();
    part.reset();
    folder_.write(end, filmBytes(1000));
    Opened opened = openPart(wish("http://h/film.avi", "film[3].avi"));
    EXPECT_EQ(opened.kind, Opened::Kind::kFinished);
    EXPECT_EQ(opened.film, folder_ / end);
    opened.part->forgetCompletion();
    fs::remove(folder_ / end);
  }
}

class PlaceTest : public FindTest {
 protected:
  Placed place(const Wish& wish, std::size_t bytes = 1000) {
    auto part = partOf(wish, bytes);
    return placeFilm(*part, {}, wish, goOn_);
  }
  Wish across() {
    Wish other = wish();
    other.movies = shared_ / "movies";
    return other;
  }
  PlaceTest() : shared_(fs::path("/dev/shm") / folder_.path().filename()) {
    fs::create_directories(shared_);
  }
  ~PlaceTest() override { fs::remove_all(shared_); }
  bool isAcross() const {
    struct stat here {
    }, there{};
    ::stat(folder_.path().c_str(), &here);
    ::stat(shared_.c_str(), &there);
    return here.st_dev != there.st_dev;
  }

  const fs::path shared_;
};

TEST_F(PlaceTest, AFilmCrossesFileSystems) {
  ASSERT_TRUE(isAcross());
  const Placed placed = place(across());
  EXPECT_EQ(placed.kind, Placed::Kind::kDone) << placed.detail;
  EXPECT_EQ(support::readFile(shared_ / "movies/film.avi"), filmBytes(1000));
  EXPECT_EQ(std::distance(fs::directory_iterator(shared_ / "movies"), {}), 1);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "parts"), {}), 1) << "the record alone";
}

TEST_F(PlaceTest, AFilmThatCrossesOverwritesNothing) {
  fs::create_directories(shared_ / "movies");
  support::writeFile(shared_ / "movies/film.avi", "mine");
  EXPECT_EQ(place(across()).film, shared_ / "movies/film[2].avi");
  EXPECT_EQ(support::readFile(shared_ / "movies/film.avi"), "mine");
}

TEST_F(PlaceTest, APlacingThatIsGivenUpLeavesThePartial) {
  goOn_ = true;
  for (const Wish& one : {wish(), across()}) {
    EXPECT_EQ(place(one).kind, Placed::Kind::kGivenUp);
    EXPECT_TRUE(fs::is_empty(one.movies));
    EXPECT_EQ(openPart(one).part->facts().size, 1000u);
  }
}

TEST_F(PlaceTest, ALinkThatLeadsNowhereIsATakenName) {
  fs::create_directories(folder_ / "movies");
  fs::create_symlink(folder_ / "nowhere", folder_ / "movies/film.avi");
  EXPECT_EQ(place(wish()).film, folder_ / "movies/film[2].avi");
  EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
}

TEST_F(PlaceTest, RightsLieBesideTheFilm) {
  Wish managed = wish();
  managed.rights = {'r'};
  EXPECT_EQ(place(managed).kind, Placed::Kind::kDone);
  EXPECT_EQ(support::readFile(folder_ / "movies/film.avi.rights"), "r");
}

TEST_F(PlaceTest, RightsOfAnotherFilmAreNeverOverwritten) {
  folder_.write("movies/film.avi.rights", "another's");
  Wish managed = wish();
  managed.rights = {'r'};
  EXPECT_EQ(place(managed).film, folder_ / "movies/film[2].avi");
  EXPECT_EQ(support::readFile(folder_ / "movies/film.avi.rights"), "another's");
  EXPECT_EQ(support::readFile(folder_ / "movies/film[2].avi.rights"), "r");
}

TEST_F(PlaceTest, NewRightsTakeThePlaceOfTheFilmsOldOnes) {
  Wish managed = wish();
  managed.rightsManaged = true;
  managed.rights = {'o'};
  place(managed);
  managed.rights = {'n'};
  managed.name = "film[2].avi";
  Opened opened = openPart(managed);
  ASSERT_EQ(opened.kind, Opened::Kind::kFinished);
  EXPECT_EQ(placeFilm(*opened.part, opened.film, managed, goOn_).kind, Placed::Kind::kDone);
  EXPECT_EQ(support::readFile(folder_ / "movies/film[2].avi.rights"), "n");
  EXPECT_FALSE(fs::exists(folder_ / "movies/film.avi.rights"));
}

TEST_F(PlaceTest, RightsStayWithAFilmThatMoves) {
  Wish managed = wish();
  managed.rightsManaged = true;
  managed.rights = {'o'};
  place(managed);
  managed.rights = {};
  managed.name = "film[2].avi";
  Opened opened = openPart(managed);
  ASSERT_EQ(opened.kind, Opened::Kind::kFinished);
  EXPECT_EQ(placeFilm(*opened.part, opened.film, managed, goOn_).kind, Placed::Kind::kDone);
  EXPECT_EQ(support::readFile(folder_ / "movies/film[2].avi.rights"), "o");
  EXPECT_FALSE(fs::exists(folder_ / "movies/film.avi.rights"));
}

TEST_F(PlaceTest, RightsThatWereNotPlacedBeforeTheProcessDiedFollow) {
  Wish managed = wish();
  managed.rights = {'r'};
  auto part = partOf(managed, 1000);
  part->announceMove(folder_ / "movies/film.avi", "", "film.avi", 1000, part->inode());
  fs::rename(part->paths().bytes(), folder_ / "movies/film.avi");
  part->placed();
  part.reset();
  Opened opened = openPart(wish());
  ASSERT_EQ(opened.kind, Opened::Kind::kFinished);
  EXPECT_EQ(placeFilm(*opened.part, opened.film, wish(), goOn_).kind, Placed::Kind::kDone);
  EXPECT_EQ(support::readFile(folder_ / "movies/film.avi.rights"), "r");
}

TEST_F(PlaceTest, AMoviesFolderThatVanishedBreaks) {
  auto part = partOf(wish(), 1000);
  fs::remove_all(folder_ / "movies");
  const Placed placed = placeFilm(*part, {}, wish(), goOn_);
  EXPECT_EQ(placed.kind, Placed::Kind::kFailed);
  EXPECT_EQ(placed.failure, TransferFailure::kMediaFolder);
  part.reset();
  EXPECT_EQ(openPart(wish()).kind, Opened::Kind::kArrived) << "nothing is lost";
}

}  // namespace
}  // namespace playerx::transfers
