#include <gmock/gmock.h>

#include "VeskPlayerX/InterfaceIds.h"
#include "playerx/platform/ThreadGate.h"
#include "playerx/settings/PreferenceOverrides.h"
#include "tests/support/TempDir.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::session {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using enum PlayerSession::Access;

class PlayerSessionTest : public testing::Test {
 protected:
  void SetUp() override {
    needApplication();
    std::filesystem::create_directories(plugins_);
  }

  void TearDown() override {
    session_.reset();
    clearPreferenceOverrides();
  }

  void start() {
    SessionOptions options;
    options.dataFolder = folder_ / "data";
    options.mediaFolder = folder_ / "films";
    options.pluginFolder = plugins_;
    session_.emplace(options,
                     SessionListener{[this] { ++wakes_; }, [](const std::string&) { return -1; },
                                     [this] { return isToEnd_; }});
  }

  void startWithModule() {
    start();
    module_.offerTo(*session_);
  }

  std::filesystem::path queueFile() const { return folder_ / "data/downloadmanager.xml"; }

  support::TempDir folder_;
  const std::filesystem::path plugins_ = folder_ / "plugins";
  support::EventLog log_;
  FakeModule module_{log_};
  int wakes_ = 0;
  bool isToEnd_ = false;
  std::optional<PlayerSession> session_;
};

TEST_F(PlayerSessionTest, ItsPlacesAreThoseOfTheOptions) {
  start();
  EXPECT_EQ(session_->places().data, folder_ / "data");
  EXPECT_EQ(session_->places().media, folder_ / "films");
}

TEST_F(PlayerSessionTest, ThePluginsAreToldThatTheUserWantsTheEnd) {
  start();
  const auto end = KPIM::load<PlayerEnd>(&session_->plugins(), kPlayerEndId);
  ASSERT_NE(end, nullptr);
  EXPECT_FALSE(end->get()->isWanted());
  isToEnd_ = true;
  EXPECT_TRUE(end->get()->isWanted());
  EXPECT_FALSE(end->get()->isUnderWay());
}

TEST_F(PlayerSessionTest, ChangesNeedTheFolderAndTheView) {
  startWithModule();
  EXPECT_EQ(session_->open(kChange), "");
  EXPECT_EQ(&session_->manager(), &module_);
  EXPECT_NE(module_.view(), nullptr);
  EXPECT_NE(DataFolderLock(folder_ / "data").problem(), "");
}

TEST_F(PlayerSessionTest, ALookLocksAndWritesNothing) {
  startWithModule();
  EXPECT_EQ(session_->open(kLook), "");
  EXPECT_EQ(module_.view(), nullptr);
  EXPECT_EQ(DataFolderLock(folder_ / "data").problem(), "");
  EXPECT_FALSE(std::filesystem::exists(queueFile()));
}

TEST_F(PlayerSessionTest, TheEndDetachesTheViewAndFreesTheFolder) {
  startWithModule();
  ASSERT_EQ(session_->open(kChange), "");
  session_.reset();
  EXPECT_EQ(module_.view(), nullptr);
  EXPECT_EQ(DataFolderLock(folder_ / "data").problem(), "");
  EXPECT_TRUE(ThreadGate::isOpen());
}

// An item sinks after it is called complete, and `cancel` returns once it has.
TEST_F(PlayerSessionTest, TheEndAwaitsWhatIsRecordedWhileTheViewIsThere) {
  startWithModule();
  module_.add(L"http://a/1.avi", L"", L"");
  ASSERT_EQ(session_->open(kChange), "");
  session_->start();
  module_.all()[0]->setStatus(DownloadStatusCompleted);
  session_.reset();
  EXPECT_TRUE(module_.hadViewAtCancel);
}

TEST_F(PlayerSessionTest, TheEndCancelsNothing) {
  startWithModule();
  module_.add(L"http://a/1.avi", L"", L"");
  ASSERT_EQ(session_->open(kChange), "");
  session_->start();
  session_.reset();
  EXPECT_THAT(log_.lines(), testing::Not(testing::Contains("manager.cancel")));
}

TEST_F(PlayerSessionTest, TheSchedulerIsHeldBackUntilTheStart) {
  startWithModule();
  ASSERT_EQ(session_->open(kChange), "");
  EXPECT_FALSE(ThreadGate::isOpen());
  session_->start();
  EXPECT_TRUE(ThreadGate::isOpen());
}

TEST_F(PlayerSessionTest, TheReportsOfTheDownloadLibraryAreThereAfterTheStart) {
  startWithModule();
  FakeReports reports;
  reports.isThere = true;
  reports.last.arrived = 5;
  offer<TransferReports>(session_->plugins(), DIN_TransferReports, &reports);
  ASSERT_EQ(session_->open(kChange), "");
  EXPECT_EQ(session_->findTransfer("http://h/a.avi"), std::nullopt);
  session_->start();
  ASSERT_TRUE(session_->findTransfer("http://h/a.avi"));
  EXPECT_EQ(session_->findTransfer("http://h/a.avi")->arrived, 5u);
  session_.reset();
}

TEST_F(PlayerSessionTest, AModuleThatIsMissingIsSaid) {
  start();
  EXPECT_EQ(session_->open(kChange),
            "The download manager cannot be loaded from " + plugins_.string() + ".");
  EXPECT_EQ(DataFolderLock(folder_ / "data").problem(), "");
}

TEST_F(PlayerSessionTest, AQueueFileThatCannotBeOpenedIsLeftAlone) {
  std::filesystem::create_directories(folder_ / "data");
  std::filesystem::create_symlink(queueFile(), queueFile());
  for (const auto access : {kLook, kChange}) {
    startWithModule();
    EXPECT_THAT(session_->open(access), HasSubstr("cannot be read (Too many levels"));
    EXPECT_EQ(module_.view(), nullptr);
  }
  EXPECT_TRUE(std::filesystem::is_symlink(queueFile()));
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(PlayerSessionTest, AQueueFileThatTheModuleDidNotReadIsSaid) {
  std::filesystem::create_directories(folder_ / "data");
  support::writeFile(queueFile(), "<DownloadQueue><DownloadItem url=\"u\"/></DownloadQueue>");
  startWithModule();
  EXPECT_THAT(session_->open(kChange), HasSubstr("could not be read a moment ago"));
  EXPECT_EQ(module_.view(), nullptr);
}

TEST_F(PlayerSessionTest, AFileSetAsideIsAMessage) {
  startWithModule();
  const std::filesystem::path aside = folder_ / "data/downloadmanager.xml.unreadable";
  std::filesystem::create_directories(folder_ / "data");
  session_->plugins().add({"test.aside", "2.0", {VeskPlayerX::DIN_DownloadManager}},
                          [&](KPIM::Context* owner, void** out) {
                            support::writeFile(aside, "x");
                            *out = static_cast<KPIM::Plugin*>(new support::FakePlugin(
                                owner, VeskPlayerX::DIN_DownloadManager,
                                static_cast<VeskPlayerX::DownloadManagerInterface*>(&module_)));
                            return KPIM::kSuccess;
                          });
  ASSERT_EQ(session_->open(kChange), "");
  EXPECT_THAT(
      session_->takeMessages(),
      ElementsAre("The queue could not be read; it was set aside as " + aside.string() + "."));
}

TEST_F(PlayerSessionTest, AnnouncementsWakeTheFace) {
  startWithModule();
  ASSERT_EQ(session_->open(kChange), "");
  module_.view()->downloadItemChanged(4);
  module_.view()->notEnoughSpace(L"/m");
  EXPECT_EQ(wakes_, 1);
  EXPECT_EQ(session_->view().takeNotices(4).size(), 1u);
}

TEST_F(PlayerSessionTest, AFilmThatCameJustWhenItWasPausedIsTakenBack) {
  FakeRecovery recovery;
  startWithModule();
  offer<FilmRecovery>(session_->plugins(), DIN_FilmRecovery, &recovery);
  ASSERT_EQ(session_->open(kChange), "");
  module_.put("http://h/done.avi", DownloadStatusCompleted).setPath(L"/films/done.avi");
  module_.put("http://h/waits.avi").setPath(L"/films/waits.avi");
  session_->start();
  recovery.takenBack.clear();
  module_.put("http://h/a.avi", DownloadStatusPaused).setPath(L"/films/a.avi");
  session_->pause();
  EXPECT_THAT(recovery.takenBack, ElementsAre("/films/a.avi"));
  EXPECT_EQ(log_.count("manager.pause"), 1u);
  session_.reset();
}

}  // namespace
}  // namespace playerx::session
