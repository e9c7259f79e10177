// The place that a run finds for its film, and the space that it asks for.

#include <QSettings>

#include "KPX/KPXPreferences.h"
#include "tests/unit/download/HostPlaces.h"
#include "tests/unit/download/WorkerFixture.h"

namespace {

using support::hostPlaces;
using testing::ElementsAre;
using testing::IsEmpty;

class RunPlacement : public support::WorkerTest {
 protected:
  std::string pathReport(const std::string& name) { return "manager.updatePath 7 " + media(name); }

  /// A fresh film whose path leads elsewhere than to the media folder.
  std::unique_ptr<DownloadItem> filmNamedElse() {
    auto item = film();
    item->setPath(L"/nowhere/else.vesk");
    return item;
  }
};

TEST_F(RunPlacement, TakesANegativeSizeForMoreThanThereIsSpace) {
  announceLength("-5");
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "media").string()));
}

TEST_F(RunPlacement, KeepsThePathThatTheItemHas) {
  auto item = film();
  item->setPercentDownloaded(10);
  item->setPath(L"/nowhere/else.vesk");
  startAndFetch(std::move(item));
  EXPECT_THAT(log_.lines("manager.updatePath"), IsEmpty());
  EXPECT_EQ(library_.session()->info.getOutputFilename(), "else.vesk");
}

TEST_F(RunPlacement, OfAFreshFilmMovesThePathIntoTheMediaFolder) {
  startAndFetch(filmNamedElse());
  EXPECT_THAT(log_.lines("manager.updatePath"), ElementsAre(pathReport("else.vesk")));
}

TEST_F(RunPlacement, NamesAChosenPathToTheItemFirstThenTheMediaFolderToTheManagerFirst) {
  std::vector<std::wstring> known;
  manager_.onEvent([&](const std::string& line) {
    if (line.starts_with("manager.updatePath")) known.push_back(worker_->getItem()->getPath());
  });
  startAndFetch(film());
  library_.complete(kUid);
  ended();
  log_.clear();
  startAndFetch(filmNamedElse());
  const std::wstring chosen = (dir_ / "media/movie.vesk").wstring();
  EXPECT_THAT(known, ElementsAre(chosen, chosen, L"/nowhere/else.vesk"));
  EXPECT_EQ(worker_->getItem()->getPath(), (dir_ / "media/else.vesk").wstring());
}

TEST_F(RunPlacement, ChoosesAFreeNameFromOneOnForAnItemWithoutPath) {
  putFile("movie.vesk", 1);
  putFile("movie[1].vesk", 1);
  startAndFetch(film());
  EXPECT_EQ(library_.session()->info.getOutputFilename(), "movie[2].vesk");
}

TEST_F(RunPlacement, ChoosesAFreeNameFromTwoOnForAnItemWithAPath) {
  putFile("movie.vesk", 1);
  auto item = film();
  item->setPath((dir_ / "media/movie.vesk").wstring());
  item->setPercentDownloaded(10);
  startAndFetch(std::move(item));
  EXPECT_THAT(log_.lines("manager.updatePath"), ElementsAre(pathReport("movie[2].vesk")));
  EXPECT_EQ(worker_->getItem()->getPath(), (dir_ / "media/movie[2].vesk").wstring());
}

TEST_F(RunPlacement, GoesOnToThreeWhenTwoIsTaken) {
  putFile("movie.vesk", 1);
  putFile("movie[2].vesk", 1);
  auto item = film();
  item->setPath((dir_ / "media/movie.vesk").wstring());
  startAndFetch(std::move(item));
  EXPECT_EQ(library_.session()->info.getOutputFilename(), "movie[3].vesk");
}

TEST_F(RunPlacement, NeedsTwiceTheSizeAndALittleInTheMediaFolder) {
  hostPlaces().freeForMedia = 14336;
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "media").string()));
  EXPECT_THAT(reports(), ElementsAre(pathReport("movie.vesk"), pathReport("movie.vesk")));
  EXPECT_EQ(library_.sessionCount(), 0u);
}

TEST_F(RunPlacement, NeedsTwiceTheSizeAndALittleInTheTemporaryFolder) {
  hostPlaces().freeForTemporary = 14336;
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "partial").string()));
  EXPECT_THAT(reports(), ElementsAre(pathReport("movie.vesk"), pathReport("movie.vesk")));
}

TEST_F(RunPlacement, AcceptsExactlyTheSpaceItNeeds) {
  hostPlaces().freeForMedia = 14337;
  hostPlaces().freeForTemporary = 14337;
  startAndFetch(film());
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(RunPlacement, TakesSpaceThatCannotBeLearntForEnough) {
  hostPlaces().freeForMedia.reset();
  hostPlaces().freeForTemporary.reset();
  startAndFetch(film());
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(RunPlacement, ChecksTheTemporaryFolderEvenWhenTheMediaFoldersSpaceIsUnknown) {
  hostPlaces().freeForMedia.reset();
  hostPlaces().freeForTemporary = 14336;
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "partial").string()));
}

TEST_F(RunPlacement, ThatContinuesDoesNotAskForTwiceTheSize) {
  hostPlaces().freeForMedia = 0;
  hostPlaces().freeForTemporary = 0;
  auto item = film();
  item->setPercentDownloaded(1);
  startAndFetch(std::move(item));
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(RunPlacement, AsksForSpaceInTheMediaFolderFirst) {
  hostPlaces().freeForMedia = 14336;
  hostPlaces().freeForTemporary = 14336;
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "media").string()));
}

TEST_F(RunPlacement, ThatContinuesReportsTheSizeToo) {
  auto item = film();
  item->setPercentDownloaded(1);
  startAndFetch(std::move(item));
  EXPECT_THAT(log_.lines("manager.updateSize"), ElementsAre("manager.updateSize 7 7168"));
  EXPECT_EQ(worker_->getItem()->getSize(), kLength);
}

TEST_F(RunPlacement, ThatContinuesNeedsRoomForTheRest) {
  announceLength("4611686018427387904");
  auto item = film();
  item->setPath((dir_ / "media/movie.vesk").wstring());
  item->setPercentDownloaded(1);
  EXPECT_EQ(run(std::move(item)), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + media("movie.vesk")));
  EXPECT_THAT(log_.lines("manager.updateStatus"), IsEmpty());
}

TEST_F(RunPlacement, InAFolderThatEndsLikeASchemeKeepsTheName) {
  std::filesystem::create_directory(dir_ / "c:");
  const std::string folder = (dir_ / "c:").string() + "/";
  KPXPreferences::userSettings->setValue(KPXPreferences::MediaFolder,
                                         QString::fromStdString(folder));
  startAndFetch(film());
  EXPECT_EQ(library_.session()->info.getOutputFilename(), "movie.vesk");
  EXPECT_EQ(worker_->getItem()->getPath(), std::filesystem::path(folder + "/movie.vesk").wstring());
}

TEST_F(RunPlacement, NeedsRoomForTheRestWhereTheFileWillBe) {
  announceLength("4611686018427387904");
  hostPlaces().freeForMedia.reset();
  hostPlaces().freeForTemporary.reset();
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + media("movie.vesk")));
  EXPECT_TRUE(log_.has("manager.updateSize 7 4611686018427387904"));
  EXPECT_THAT(log_.lines("manager.updateStatus"), IsEmpty());
}

TEST_F(RunPlacement, NeedsRoomOnlyForTheRest) {
  const auto total = std::filesystem::space(dir_ / "media").available + (std::uint64_t{1} << 40);
  putFile("else.vesk", 0);
  std::filesystem::resize_file(dir_ / "media/else.vesk", total - kLength);  // takes no room
  announceLength(std::to_string(total));
  hostPlaces().freeForMedia.reset();
  hostPlaces().freeForTemporary.reset();
  startAndFetch(filmNamedElse());
  EXPECT_THAT(views(), IsEmpty());
  EXPECT_EQ(library_.sessionCount(), 1u);
}

TEST_F(RunPlacement, CompletesAtOnceWithAFileOfTheWholeSize) {
  putFile("else.vesk", kLength);
  EXPECT_EQ(run(filmNamedElse()), 4);
  EXPECT_THAT(reports(),
              ElementsAre(pathReport("else.vesk"), "manager.updateSize 7 7168",
                          "manager.updateDownloadProgress 7 100", "manager.updateStatus 7 4"));
  EXPECT_EQ(worker_->getItem()->getPercentDownloaded(), 100);
  EXPECT_EQ(library_.sessionCount(), 0u);
}

TEST_F(RunPlacement, CompletesAtOnceWithALargerFile) {
  putFile("else.vesk", kLength + 1);
  EXPECT_EQ(run(filmNamedElse()), 4);
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(RunPlacement, FetchesWhenThePresentFileIsOneByteShort) {
  putFile("else.vesk", kLength - 1);
  startAndFetch(filmNamedElse());
  EXPECT_EQ(library_.sessionCount(), 1u);
}

TEST_F(RunPlacement, DoesNotTakeAFolderForACompleteFile) {
  std::filesystem::create_directory(dir_ / "media/else.vesk");
  startAndFetch(filmNamedElse());
  EXPECT_EQ(library_.sessionCount(), 1u);
}

}  // namespace
