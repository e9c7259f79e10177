#include "VeskPlayerX/InterfaceIds.h"
#include "tests/unit/download/HostPlaces.h"
#include "tests/unit/download/WorkerFixture.h"

namespace {

using support::bareResponse;
using support::Gate;
using support::hostPlaces;
using support::Script;
using testing::ElementsAre;
using testing::IsEmpty;

class DownloadRun : public support::WorkerTest {
 protected:
  void announceLength(const std::string& length) {
    server_.always(Script::answer(bareResponse("200 OK", "Content-Length: " + length + "\r\n")));
  }

  std::string url(const std::string& name) { return server_.url("/dir/" + name); }
  std::unique_ptr<DownloadItem> filmToPlay() {
    auto item = film();
    item->setAutoProgressivePlayback(true);
    return item;
  }

  std::string pathReport(const std::string& name) { return "manager.updatePath 7 " + media(name); }
};

TEST_F(DownloadRun, OfAFreshFilmReportsEveryStepInOrder) {
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  const std::string path = media("movie.vesk");
  EXPECT_THAT(log_.lines(),
              ElementsAre("library.callback set", "manager.updatePath 7 " + path,
                          "manager.updatePath 7 " + path, "manager.updateSize 7 7168",
                          "manager.setDownloadInfo 7", "library.start " + url("movie.vesk"),
                          "manager.updateStatus 7 3", "manager.setPlayable 7 true",
                          "manager.updateDownloadProgress 7 100", "player.currentMediaId",
                          "library.stop 1001", "manager.updateStatus 7 4"));
}

TEST_F(DownloadRun, GivesTheLibraryEverythingItNeeds) {
  startAndFetch(film("a%20b.vesk?token=1"));
  const auto session = library_.session();
  ASSERT_TRUE(session);
  EXPECT_EQ(session->url, url("a%20b.vesk?token=1"));
  EXPECT_EQ(session->info.getDownloadDirectory(), (dir_ / "partial").string());
  EXPECT_EQ(session->info.getOutputFilename(), "a b.vesk");
  EXPECT_EQ(session->info.getMoviesDirectory(), (dir_ / "media").string());
  EXPECT_EQ(session->info.getDownloadId(), 7u);
  EXPECT_EQ(session->info.getTitle(), "Film \u00e4");
  EXPECT_EQ(session->info.getTempUsername(), "");
  EXPECT_THAT(session->info.getSTRDChunk(), IsEmpty());
  EXPECT_EQ(manager_.downloadInfo(7), session->info);
  EXPECT_EQ(worker_->getItem()->getDownloadInfo(), session->info);
}

TEST_F(DownloadRun, KeepsTheItemUntilTheNextRun) {
  EXPECT_EQ(worker_->getItem(), nullptr);
  auto item = film();
  const DownloadItem* const given = item.get();
  startAndFetch(std::move(item));
  EXPECT_EQ(worker_->getItem(), given);
  library_.complete(kUid);
  ended();
  EXPECT_EQ(worker_->getItem(), given);
  EXPECT_EQ(worker_->getItem()->getUID(), kUid);
  EXPECT_EQ(worker_->getItem()->getSize(), kLength);
  EXPECT_EQ(worker_->getItem()->getStatus(), DownloadStatusDownloading);
}

TEST_F(DownloadRun, OfNothingFails) {
  EXPECT_EQ(worker_->downloadVideo(nullptr), 6);
  EXPECT_EQ(worker_->getItem(), nullptr);
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_TRUE(library_.hasCallback());
}

TEST_F(DownloadRun, ThatThrowsLeavesNoSessionBehind) {
  manager_.onEvent([](const std::string& line) {
    if (line == "manager.updateStatus 7 3") throw std::runtime_error("no");
  });
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(DownloadRun, DestroysTheItemOfTheLastRunWhenTheNextBegins) {
  struct Watched : DownloadItem {
    explicit Watched(bool& gone) : gone_(gone) {}
    ~Watched() override { gone_ = true; }
    bool& gone_;
  };
  bool gone = false;
  context_.answer(KPB::DIN_Download, KPIM::kLoadFailed);
  EXPECT_EQ(run(std::make_unique<Watched>(gone)), 6);
  EXPECT_FALSE(gone);
  EXPECT_EQ(worker_->downloadVideo(nullptr), 6);
  EXPECT_TRUE(gone);
}

TEST_F(DownloadRun, FailsSilentlyWithoutTheLibrary) {
  context_.answer(KPB::DIN_Download, KPIM::kLoadFailed);
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(log_.lines(), IsEmpty());
  EXPECT_NE(worker_->getItem(), nullptr);
}

TEST_F(DownloadRun, LooksForTheLibraryAgainAfterAFailure) {
  context_.answer(KPB::DIN_Download, KPIM::kNoSuchPlugin);
  EXPECT_EQ(run(film()), 6);
  context_.answer(KPB::DIN_Download, KPIM::kSuccess);
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
}

TEST_F(DownloadRun, KeepsTheLibraryOnceItIsLoaded) {
  for (unsigned long long uid = kUid; uid < kUid + 3; ++uid) {
    log_.clear();
    startAndFetch(film());
    EXPECT_EQ(log_.lines().front(), "library.callback set");
    library_.complete(uid);
    ended();
  }
  EXPECT_EQ(context_.lookups(KPB::DIN_Download), 1);
  EXPECT_EQ(context_.holds(KPB::DIN_Download), 1);
  EXPECT_FALSE(context_.wasAskedNotToLoad());
  EXPECT_FALSE(context_.wasAskedToChooseOtherwise());
}

TEST_F(DownloadRun, WithASizeOfZeroFailsBeforeAnyFileIsTouched) {
  announceLength("0");
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(reports(), ElementsAre("manager.updateStatus 7 6"));
  EXPECT_THAT(views(), IsEmpty());
  EXPECT_EQ(library_.sessionCount(), 0u);
  EXPECT_EQ(worker_->getItem()->getStatus(), DownloadStatusDownloading);
}

TEST_F(DownloadRun, TakesANegativeSizeForMoreThanThereIsSpace) {
  announceLength("-5");
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "media").string()));
}

TEST_F(DownloadRun, KeepsThePathThatTheItemHas) {
  auto item = film();
  item->setPercentDownloaded(10);
  item->setPath(L"/nowhere/else.vesk");
  startAndFetch(std::move(item));
  EXPECT_THAT(log_.lines("manager.updatePath"), IsEmpty());
  EXPECT_EQ(library_.session()->info.getOutputFilename(), "else.vesk");
}

TEST_F(DownloadRun, OfAFreshFilmMovesThePathIntoTheMediaFolder) {
  auto item = film();
  item->setPath(L"/nowhere/else.vesk");
  startAndFetch(std::move(item));
  EXPECT_THAT(log_.lines("manager.updatePath"),
              ElementsAre("manager.updatePath 7 " + media("else.vesk")));
}

TEST_F(DownloadRun, NamesAChosenPathToTheItemFirstThenTheMediaFolderToTheManagerFirst) {
  std::vector<std::wstring> known;
  manager_.onEvent([&](const std::string& line) {
    if (line.starts_with("manager.updatePath")) known.push_back(worker_->getItem()->getPath());
  });
  startAndFetch(film());
  library_.complete(kUid);
  ended();
  log_.clear();
  auto item = film();
  item->setPath(L"/nowhere/else.vesk");
  startAndFetch(std::move(item));
  const std::wstring chosen = (dir_ / "media/movie.vesk").wstring();
  EXPECT_THAT(known, ElementsAre(chosen, chosen, L"/nowhere/else.vesk"));
  EXPECT_EQ(worker_->getItem()->getPath(), (dir_ / "media/else.vesk").wstring());
}

TEST_F(DownloadRun, GivesTheAddressAsUtf8) {
  auto item = film();
  item->setUrl(item->getUrl() + L"?\u00e4");
  startAndFetch(std::move(item));
  EXPECT_EQ(library_.session()->url, url("movie.vesk?\u00e4"));
}

TEST_F(DownloadRun, ChoosesAFreeNameFromOneOnForAnItemWithoutPath) {
  putFile("movie.vesk", 1);
  putFile("movie[1].vesk", 1);
  startAndFetch(film());
  EXPECT_EQ(library_.session()->info.getOutputFilename(), "movie[2].vesk");
}

TEST_F(DownloadRun, ChoosesAFreeNameFromTwoOnForAnItemWithAPath) {
  putFile("movie.vesk", 1);
  auto item = film();
  item->setPath((dir_ / "media/movie.vesk").wstring());
  item->setPercentDownloaded(10);
  startAndFetch(std::move(item));
  EXPECT_THAT(log_.lines("manager.updatePath"),
              ElementsAre("manager.updatePath 7 " + media("movie[2].vesk")));
  EXPECT_EQ(worker_->getItem()->getPath(), (dir_ / "media/movie[2].vesk").wstring());
}

TEST_F(DownloadRun, GoesOnToThreeWhenTwoIsTaken) {
  putFile("movie.vesk", 1);
  putFile("movie[2].vesk", 1);
  auto item = film();
  item->setPath((dir_ / "media/movie.vesk").wstring());
  startAndFetch(std::move(item));
  EXPECT_EQ(library_.session()->info.getOutputFilename(), "movie[3].vesk");
}

TEST_F(DownloadRun, NeedsTwiceTheSizeAndALittleInTheMediaFolder) {
  hostPlaces().freeForMedia = 14336;
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "media").string()));
  EXPECT_THAT(reports(), ElementsAre(pathReport("movie.vesk"), pathReport("movie.vesk")));
  EXPECT_EQ(library_.sessionCount(), 0u);
}

TEST_F(DownloadRun, NeedsTwiceTheSizeAndALittleInTheTemporaryFolder) {
  hostPlaces().freeForTemporary = 14336;
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "partial").string()));
  EXPECT_THAT(reports(), ElementsAre(pathReport("movie.vesk"), pathReport("movie.vesk")));
}

TEST_F(DownloadRun, IsContentWithExactlyTheSpaceItNeeds) {
  hostPlaces().freeForMedia = 14337;
  hostPlaces().freeForTemporary = 14337;
  startAndFetch(film());
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(DownloadRun, TakesSpaceThatCannotBeLearntForEnough) {
  hostPlaces().freeForMedia.reset();
  hostPlaces().freeForTemporary.reset();
  startAndFetch(film());
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(DownloadRun, AsksForTemporarySpaceEvenWhenTheMediaFolderIsSilent) {
  hostPlaces().freeForMedia.reset();
  hostPlaces().freeForTemporary = 14336;
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "partial").string()));
}

TEST_F(DownloadRun, ThatContinuesDoesNotAskForTwiceTheSize) {
  hostPlaces().freeForMedia = 0;
  hostPlaces().freeForTemporary = 0;
  auto item = film();
  item->setPercentDownloaded(1);
  startAndFetch(std::move(item));
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(DownloadRun, NeedsRoomForTheRestWhereTheFileWillBe) {
  announceLength("4611686018427387904");
  hostPlaces().freeForMedia.reset();
  hostPlaces().freeForTemporary.reset();
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + media("movie.vesk")));
  EXPECT_TRUE(log_.has("manager.updateSize 7 4611686018427387904"));
  EXPECT_THAT(log_.lines("manager.updateStatus"), IsEmpty());
}

TEST_F(DownloadRun, NeedsRoomOnlyForTheRest) {
  const auto total = std::filesystem::space(dir_ / "media").available + (std::uint64_t{1} << 40);
  putFile("else.vesk", 0);
  std::filesystem::resize_file(dir_ / "media/else.vesk", total - kLength);  // takes no room
  announceLength(std::to_string(total));
  hostPlaces().freeForMedia.reset();
  hostPlaces().freeForTemporary.reset();
  auto item = film();
  item->setPath(L"/nowhere/else.vesk");
  startAndFetch(std::move(item));
  EXPECT_THAT(views(), IsEmpty());
  EXPECT_EQ(library_.sessionCount(), 1u);
}

TEST_F(DownloadRun, CompletesAtOnceWithAFileOfTheWholeSize) {
  putFile("else.vesk", kLength);
  auto item = film();
  item->setPath(L"/nowhere/else.vesk");
  EXPECT_EQ(run(std::move(item)), 4);
  EXPECT_THAT(reports(),
              ElementsAre("manager.updatePath 7 " + media("else.vesk"), "manager.updateSize 7 7168",
                          "manager.updateDownloadProgress 7 100", "manager.updateStatus 7 4"));
  EXPECT_EQ(worker_->getItem()->getPercentDownloaded(), 100);
  EXPECT_EQ(library_.sessionCount(), 0u);
}

TEST_F(DownloadRun, CompletesAtOnceWithALargerFile) {
  putFile("else.vesk", kLength + 1);
  auto item = film();
  item->setPath(L"/nowhere/else.vesk");
  EXPECT_EQ(run(std::move(item)), 4);
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(DownloadRun, FetchesWhenThePresentFileIsOneByteShort) {
  putFile("else.vesk", kLength - 1);
  auto item = film();
  item->setPath(L"/nowhere/else.vesk");
  startAndFetch(std::move(item));
  EXPECT_EQ(library_.sessionCount(), 1u);
}

TEST_F(DownloadRun, DoesNotTakeAFolderForACompleteFile) {
  std::filesystem::create_directory(dir_ / "media/else.vesk");
  auto item = film();
  item->setPath(L"/nowhere/else.vesk");
  startAndFetch(std::move(item));
  EXPECT_EQ(library_.sessionCount(), 1u);
}

TEST_F(DownloadRun, WithARefusedStartReportsFailedDownloadingFailed) {
  library_.answerStartWith(0);
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(log_.lines("manager.updateStatus"),
              ElementsAre("manager.updateStatus 7 6", "manager.updateStatus 7 3",
                          "manager.updateStatus 7 6"));
  EXPECT_THAT(views(), ElementsAre("view.urlFailed " + url("movie.vesk")));
}

TEST_F(DownloadRun, TellsTheViewOfARefusedStartBeforeTheManager) {
  library_.answerStartWith(-1);
  run(film());
  const auto lines = log_.lines();
  const auto told = std::find(lines.begin(), lines.end(), "view.urlFailed " + url("movie.vesk"));
  ASSERT_NE(told, lines.end());
  EXPECT_EQ(*std::next(told), "manager.updateStatus 7 6");
}

TEST_F(DownloadRun, TakesNoOtherAnswerThanOneForAStart) {
  library_.answerStartWith(2);
  EXPECT_EQ(run(film()), 6);
}

TEST_F(DownloadRun, PlaysACompletedFilmOnRequest) {
  manager_.answerPlay(true);
  auto item = film();
  item->setAutoProgressivePlayback(true);
  startAndFetch(std::move(item));
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_FALSE(worker_->getItem()->getAutoProgressivePlayback());
  EXPECT_THAT(log_.lines("player."), IsEmpty());
  EXPECT_THAT(library_.stopped(), IsEmpty());
  const auto lines = reports();
  EXPECT_THAT(std::vector(lines.end() - 4, lines.end()),
              ElementsAre("manager.setPlayable 7 true", "manager.updateDownloadProgress 7 100",
                          "manager.play 7", "manager.updateStatus 7 4"));
}

TEST_F(DownloadRun, KeepsTheRequestAndReleasesTheSessionWhenPlayingFails) {
  auto item = film();
  item->setAutoProgressivePlayback(true);
  startAndFetch(std::move(item));
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_TRUE(worker_->getItem()->getAutoProgressivePlayback());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(DownloadRun, LeavesTheSessionThatThePlayerHolds) {
  player_.setCurrentMediaId(kUid);
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_TRUE(log_.has("player.currentMediaId"));
  EXPECT_THAT(library_.stopped(), IsEmpty());
}

TEST_F(DownloadRun, LeavesTheSessionOfAFilmThatPlaysAlready) {
  manager_.answerPlay(true);
  player_.setCurrentMediaId(kUid);
  auto item = film();
  item->setAutoProgressivePlayback(true);
  startAndReport(std::move(item));
  library_.progress(kUid, 50);
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_EQ(log_.count("manager.play 7"), 1u);
  EXPECT_TRUE(log_.has("player.currentMediaId"));
  EXPECT_THAT(library_.stopped(), IsEmpty());
}

TEST_F(DownloadRun, LeavesTheSessionWithoutAPlayer) {
  context_.answer(VeskPlayerX::DIN_Player, KPIM::kNoSuchPlugin);
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_THAT(library_.stopped(), IsEmpty());
}

TEST_F(DownloadRun, GivesASessionThatCompletedWithoutAPlayerBackInTheNextRun) {
  context_.answer(VeskPlayerX::DIN_Player, KPIM::kNoSuchPlugin);
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  log_.clear();
  startAndFetch(film());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(DownloadRun, GivesABrokenSessionBackInTheNextRun) {
  startAndFetch(film());
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  EXPECT_THAT(library_.stopped(), IsEmpty());
  log_.clear();
  startAndFetch(film());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(DownloadRun, LeavesABrokenSessionThatThePlayerHolds) {
  startAndFetch(film());
  player_.setCurrentMediaId(kUid);
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  log_.clear();
  startAndFetch(film());
  EXPECT_THAT(library_.stopped(), IsEmpty());
}

TEST_F(DownloadRun, GivesABrokenSessionBackOnce) {
  startAndFetch(film());
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  worker_->stop();
  log_.clear();
  startAndFetch(film());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(DownloadRun, PlaysACompletedFilmWhenTheCallForAnEarlierOneHasEnded) {
  Gate& asked = gate();
  Gate& leave = gate();
  manager_.answerPlay(true);
  manager_.onEvent([&](const std::string& line) {
    if (line != "manager.play 7") return;
    asked.open();
    leave.wait();
  });
  startAndReport(filmToPlay());
  library_.onOwnThread([this] { library_.progress(kUid, 50); });
  ASSERT_TRUE(asked.wait());
  worker_->stop();
  EXPECT_EQ(ended(), 5);
  log_.clear();
  startAndFetch(filmToPlay());
  library_.complete(kUid + 1);
  ASSERT_TRUE(waitFor("manager.updateDownloadProgress 7 100"));
  leave.open();
  EXPECT_EQ(ended(), 4);
  EXPECT_EQ(log_.count("manager.play 7"), 1u);
  EXPECT_FALSE(worker_->getItem()->getAutoProgressivePlayback());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(DownloadRun, ReleasesThePlayer) {
  startAndFetch(film());
  library_.complete(kUid);
  ended();
  EXPECT_EQ(context_.lookups(VeskPlayerX::DIN_Player), 1);
  EXPECT_EQ(context_.holds(VeskPlayerX::DIN_Player), 0);
}

TEST_F(DownloadRun, OfABrokenTransferReportsFailed) {
  startAndFetch(film());
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  EXPECT_THAT(log_.lines("manager.updateStatus"),
              ElementsAre("manager.updateStatus 7 3", "manager.updateStatus 7 6"));
}

TEST_F(DownloadRun, WorksWithoutAView) {
  worker_->setInterfaces(&manager_, nullptr);
  hostPlaces().freeForMedia = 0;
  EXPECT_EQ(run(film()), 6);
  hostPlaces().freeForMedia.reset();
  library_.answerStartWith(0);
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(DownloadRun, WorksWithoutAManager) {
  worker_->setInterfaces(nullptr, nullptr);
  announceLength("0");
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(reports(), IsEmpty());
}

}  // namespace
