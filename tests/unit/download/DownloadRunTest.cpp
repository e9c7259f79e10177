#include <QSettings>
#include <filesystem>

#include "KPX/KPXPreferences.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "tests/unit/download/HostPlaces.h"
#include "tests/unit/download/WorkerFixture.h"

namespace {

using support::hostPlaces;
using testing::ElementsAre;
using testing::IsEmpty;

using DownloadRun = support::WorkerTest;

TEST_F(DownloadRun, OfAFreshFilmReportsEveryStepInOrder) {
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  const std::string path = media("movie.vesk");
  EXPECT_THAT(log_.lines(),
              ElementsAre("library.callback set", "manager.updatePath 7 " + path,
                          "manager.updatePath 7 " + path, "manager.updateSize 7 7168",
                          "manager.setDownloadInfo 7", "library.start " + urlOf("movie.vesk"),
                          "manager.updateStatus 7 3", "manager.setPlayable 7 true",
                          "manager.updateDownloadProgress 7 100", "player.currentMediaId",
                          "library.stop 1001", "manager.updateStatus 7 4"));
}

TEST_F(DownloadRun, GivesTheLibraryEverythingItNeeds) {
  startAndFetch(film("a%20b.vesk?token=1"));
  const auto session = library_.session();
  ASSERT_TRUE(session);
  EXPECT_EQ(session->url, urlOf("a%20b.vesk?token=1"));
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

TEST_F(DownloadRun, NamesPlacesToTheLibraryInUtf8) {
  std::filesystem::create_directory(dir_ / "Spielfilme \xC3\xA4");
  const auto inUtf8 = [this](const char* name) {
    return QString::fromStdString((dir_ / name).string());
  };
  hostPlaces().temporary = inUtf8("Teile \xC3\xB6");
  hostPlaces().mediaFolder = inUtf8("Spielfilme \xC3\xA4");
  KPXPreferences::userSettings->setValue(KPXPreferences::MediaFolder, hostPlaces().mediaFolder);
  auto item = film();
  item->setPath(L"/nowhere/\u00fc.vesk");
  startAndFetch(std::move(item));
  const KPB::DownloadInfo info = library_.session()->info;
  EXPECT_EQ(info.getDownloadDirectory(), (dir_ / "Teile \xC3\xB6").string());
  EXPECT_EQ(info.getMoviesDirectory(), (dir_ / "Spielfilme \xC3\xA4").string());
  EXPECT_EQ(info.getOutputFilename(), "\xC3\xBC.vesk");
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

TEST_F(DownloadRun, ThatThrowsEndsAlsoWhenTheLibraryThrows) {
  manager_.onEvent([](const std::string& line) {
    if (line == "manager.updateStatus 7 3") throw std::runtime_error("no");
  });
  library_.whileStopping([] { throw std::runtime_error("no"); });
  EXPECT_EQ(run(film()), 6);
  library_.whileStopping({});
  worker_->stop();
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

TEST_F(DownloadRun, GivesTheAddressAsUtf8) {
  auto item = film();
  item->setUrl(item->getUrl() + L"?\u00e4");
  startAndFetch(std::move(item));
  EXPECT_EQ(library_.session()->url, urlOf("movie.vesk?\u00e4"));
}

TEST_F(DownloadRun, WithARefusedStartReportsFailedDownloadingFailed) {
  library_.answerStartWith(0);
  EXPECT_EQ(run(film()), 6);
  EXPECT_THAT(log_.lines("manager.updateStatus"),
              ElementsAre("manager.updateStatus 7 6", "manager.updateStatus 7 3",
                          "manager.updateStatus 7 6"));
  EXPECT_THAT(views(), ElementsAre("view.urlFailed " + urlOf("movie.vesk")));
}

TEST_F(DownloadRun, TellsTheViewOfARefusedStartBeforeTheManager) {
  library_.answerStartWith(-1);
  run(film());
  const auto lines = log_.lines();
  const auto told = std::find(lines.begin(), lines.end(), "view.urlFailed " + urlOf("movie.vesk"));
  ASSERT_NE(told, lines.end());
  EXPECT_EQ(*std::next(told), "manager.updateStatus 7 6");
}

TEST_F(DownloadRun, TakesNoOtherAnswerThanOneForAStart) {
  library_.answerStartWith(2);
  EXPECT_EQ(run(film()), 6);
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
