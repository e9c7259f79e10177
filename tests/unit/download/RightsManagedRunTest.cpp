#include <atomic>

#include "VeskPlayerX/InterfaceIds.h"
#include "tests/unit/download/WorkerFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using VeskPlayerX::DIN_ZPSServices;

constexpr int kServicesShow = 5000;
constexpr int kSlotNeeded = 32054;

class RightsManagedRun : public support::WorkerTest {
 protected:
  /// Everything from the first call to the services on.
  std::vector<std::string> authorisation() const {
    auto lines = log_.lines();
    lines.erase(lines.begin());  // the registration with the library
    return lines;
  }

  int heldServices() const { return context_.holds(DIN_ZPSServices); }

  /// Has the services grant nothing before the silence ends.
  void stopWhileTheServicesAreSilent(std::unique_ptr<DownloadItem> item) {
    services_.setAnswers({grant()});
    services_.whileAuthorizing([this] {
      asked_.open();
      silence_.wait();
    });
    start(std::move(item));
    stopWhenAsked();
  }

  /// Has the view stay in its first call, which is `line`, until the silence ends.
  void stopWhileTheViewIsBusy(const std::string& line) {
    view_.onEvent([this, line](const std::string& event) {
      if (event != line || log_.count(line) > 1) return;
      asked_.open();
      silence_.wait();
    });
    start(protectedFilm());
    stopWhenAsked();
  }

  support::Gate& asked_ = gate();
  support::Gate& silence_ = gate();

 private:
  void stopWhenAsked() {
    ASSERT_TRUE(asked_.wait());
    worker_->stop();
    EXPECT_EQ(ended(), 5);
  }
};

TEST_F(RightsManagedRun, ReportsEveryStepOfTheAuthorisationInOrder) {
  services_.setAnswers({grant()});
  startAndFetch(protectedFilm());
  const std::string path = media("movie.vesk");
  EXPECT_THAT(
      authorisation(),
      ElementsAre("manager.updateStatus 7 2", "services.isReady 0 0 0", "services.authorize 7 -1",
                  "manager.setTicketAlreadyTorn 7", "manager.setTicketId 7 42",
                  "manager.setDownloadUrl 7 https://content.example/a%20b/movie.vesk",
                  "manager.updatePath 7 " + path, "manager.updatePath 7 " + path,
                  "manager.updateSize 7 7168", "manager.setDownloadInfo 7",
                  "library.start https://content.example/a%20b/movie.vesk",
                  "manager.updateStatus 7 3"));
}

TEST_F(RightsManagedRun, IsStartingUntilItIsAuthorisedThenDownloading) {
  services_.setAnswers({grant()});
  std::vector<DownloadStatusEnumType> known;
  manager_.onEvent([&](const std::string& line) {
    if (line.starts_with("manager.updateStatus")) known.push_back(worker_->getItem()->getStatus());
  });
  library_.whileStarting(
      [&](unsigned long long) { known.push_back(worker_->getItem()->getStatus()); });
  startAndFetch(protectedFilm());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_THAT(known, ElementsAre(DownloadStatusStarting, DownloadStatusDownloading,
                                 DownloadStatusDownloading, DownloadStatusDownloading));
}

TEST_F(RightsManagedRun, GivesTheLibraryCredentialsAndRights) {
  services_.setAnswers({grant()});
  startAndFetch(protectedFilm());
  const auto session = library_.session();
  ASSERT_TRUE(session);
  EXPECT_EQ(session->info.getTempUsername(), "guest");
  EXPECT_EQ(session->info.getTempPassword(), "secret");
  EXPECT_THAT(session->info.getSTRDChunk(), ElementsAre(0xFB, 0xFF));
  EXPECT_TRUE(worker_->getItem()->getTicketAlreadyTorn());
  EXPECT_EQ(worker_->getItem()->getSize(), kLength);
}

TEST_F(RightsManagedRun, LeavesNothingToTheNextRun) {
  services_.setAnswers({grant()});
  startAndFetch(protectedFilm());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  log_.clear();
  startAndFetch(film("other.vesk"));
  const auto session = library_.session(1);
  ASSERT_TRUE(session);
  EXPECT_EQ(session->url, urlOf("other.vesk"));
  EXPECT_EQ(session->info.getTempUsername(), "");
  EXPECT_EQ(session->info.getTempPassword(), "");
  EXPECT_THAT(session->info.getSTRDChunk(), IsEmpty());
}

TEST_F(RightsManagedRun, NamesTheFileAfterTheUnescapedAddress) {
  auto answer = grant();
  answer.url = "https://content.example/a b.vesk";
  services_.setAnswers({answer});
  startAndFetch(protectedFilm());
  EXPECT_EQ(library_.session()->url, "https://content.example/a%20b.vesk");
  EXPECT_EQ(library_.session()->info.getOutputFilename(), "a b.vesk");
}

TEST_F(RightsManagedRun, DoesNotAskTheContentServerForTheSize) {
  services_.setAnswers({grant()});
  startAndFetch(protectedFilm());
  EXPECT_EQ(server_.connectionCount(), 0u);
}

TEST_F(RightsManagedRun, ReleasesTheServicesBeforeTheTransfer) {
  services_.setAnswers({grant()});
  startAndFetch(protectedFilm());
  EXPECT_EQ(context_.lookups(DIN_ZPSServices), 1);
  EXPECT_EQ(heldServices(), 0);
  EXPECT_FALSE(context_.wasAskedNotToLoad());
  EXPECT_FALSE(context_.wasAskedToChooseOtherwise());
}

TEST_F(RightsManagedRun, TakesRightsThatAreNotBase64ForNone) {
  auto answer = grant();
  answer.strdChunkBase64 = "abc";
  services_.setAnswers({answer});
  startAndFetch(protectedFilm());
  EXPECT_THAT(library_.session()->info.getSTRDChunk(), IsEmpty());
}

TEST_F(RightsManagedRun, WithoutServicesFailsSilently) {
  context_.answer(DIN_ZPSServices, KPIM::kNoSuchPlugin);
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_THAT(authorisation(), IsEmpty());
}

TEST_F(RightsManagedRun, WithServicesThatAreNotReadyFailsSilently) {
  services_.setReady(false);
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_THAT(authorisation(), ElementsAre("manager.updateStatus 7 2", "services.isReady 0 0 0"));
  EXPECT_EQ(worker_->getItem()->getStatus(), DownloadStatusStarting);
  EXPECT_EQ(heldServices(), 0);
}

TEST_F(RightsManagedRun, LetsTheServicesShowTheirOwnError) {
  services_.setAnswers({refusal(kServicesShow)});
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_THAT(authorisation(),
              ElementsAre("manager.updateStatus 7 2", "services.isReady 0 0 0",
                          "services.authorize 7 -1", "services.showError details true"));
  EXPECT_EQ(heldServices(), 0);
}

TEST_F(RightsManagedRun, LetsTheViewShowAnyOtherError) {
  services_.setAnswers({refusal(1)});
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_THAT(views(), ElementsAre("view.authorizationError 1"));
  EXPECT_THAT(reports(), ElementsAre("manager.updateStatus 7 2"));
  EXPECT_FALSE(worker_->getItem()->getTicketAlreadyTorn());
}

TEST_F(RightsManagedRun, ShowsNoErrorWithoutAView) {
  worker_->setInterfaces(&manager_, nullptr);
  services_.setAnswers({refusal(1)});
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_THAT(reports(), ElementsAre("manager.updateStatus 7 2"));
}

TEST_F(RightsManagedRun, AsksForASlotThenForTheAuthorisationOnceMore) {
  services_.setAnswers({refusal(kSlotNeeded), grant()});
  view_.answerSlot(3);
  startAndFetch(protectedFilm());
  EXPECT_THAT(views(), ElementsAre("view.chooseSlot Film 32054"));
  EXPECT_THAT(log_.lines("services.authorize"),
              ElementsAre("services.authorize 7 -1", "services.authorize 7 3"));
  EXPECT_EQ(worker_->getItem()->getSlotNumber(), 3);
}

TEST_F(RightsManagedRun, TakesSlotZeroForAChoice) {
  services_.setAnswers({refusal(kSlotNeeded), grant()});
  view_.answerSlot(0);
  startAndFetch(protectedFilm());
  EXPECT_TRUE(log_.has("services.authorize 7 0"));
}

TEST_F(RightsManagedRun, FailsSilentlyWhenTheUserDeclinesASlot) {
  services_.setAnswers({refusal(kSlotNeeded), grant()});
  view_.answerSlot(-1);
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_EQ(log_.lines("services.authorize").size(), 1u);
  EXPECT_EQ(worker_->getItem()->getSlotNumber(), -1);
}

TEST_F(RightsManagedRun, TakesAMissingViewForADeclinedSlot) {
  worker_->setInterfaces(&manager_, nullptr);
  services_.setAnswers({refusal(kSlotNeeded), grant()});
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_EQ(log_.lines("services.authorize").size(), 1u);
}

TEST_F(RightsManagedRun, DoesNotAskForASlotASecondTime) {
  services_.setAnswers({refusal(kSlotNeeded), refusal(kSlotNeeded), grant()});
  view_.answerSlot(3);
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_THAT(views(), ElementsAre("view.chooseSlot Film 32054", "view.authorizationError 32054"));
  EXPECT_EQ(log_.lines("services.authorize").size(), 2u);
  EXPECT_EQ(worker_->getItem()->getSlotNumber(), 3);
}

TEST_F(RightsManagedRun, HandlesTheSecondRefusalLikeTheFirst) {
  services_.setAnswers({refusal(kSlotNeeded), refusal(kServicesShow)});
  view_.answerSlot(3);
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_TRUE(log_.has("services.showError details true"));
  EXPECT_EQ(heldServices(), 0);
}

TEST_F(RightsManagedRun, WithASizeOfZeroFails) {
  auto answer = grant();
  answer.totalSize = 0;
  services_.setAnswers({answer});
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_THAT(log_.lines("manager.updateStatus"),
              ElementsAre("manager.updateStatus 7 2", "manager.updateStatus 7 6"));
}

TEST_F(RightsManagedRun, DoesNotTrustASizeThatServicesInvent) {
  auto answer = grant();
  answer.totalSize = ~std::uint64_t{0};
  services_.setAnswers({answer});
  EXPECT_EQ(run(protectedFilm()), 6);
  EXPECT_THAT(views(), ElementsAre("view.notEnoughSpace " + (dir_ / "media").string()));
}

TEST_F(RightsManagedRun, CallsNoServicesWhenStoppedBeforehand) {
  services_.setAnswers({grant()});
  manager_.onEvent([this](const std::string& line) {
    if (line == "manager.updateStatus 7 2") worker_->stop();
  });
  EXPECT_EQ(run(protectedFilm()), 5);
  worker_->close();
  EXPECT_THAT(log_.lines("services."), IsEmpty());
  EXPECT_EQ(heldServices(), 0);
}

TEST_F(RightsManagedRun, EndsAtOnceWhenStoppedWhileTheServicesAreSilent) {
  stopWhileTheServicesAreSilent(protectedFilm());
  EXPECT_THAT(reports(), ElementsAre("manager.updateStatus 7 2"));
  silence_.open();
  worker_->close();
  EXPECT_EQ(heldServices(), 0);
}

TEST_F(RightsManagedRun, ReportsAGrantThatComesAfterAStop) {
  stopWhileTheServicesAreSilent(protectedFilm());
  log_.clear();
  silence_.open();
  worker_->close();
  EXPECT_THAT(reports(),
              ElementsAre("manager.setTicketAlreadyTorn 7", "manager.setTicketId 7 42",
                          "manager.setDownloadUrl 7 https://content.example/a%20b/movie.vesk"));
}

TEST_F(RightsManagedRun, TellsTheServicesThatAStoppedRunHasTornTheTicket) {
  stopWhileTheServicesAreSilent(protectedFilm());
  std::atomic<bool> known{false};
  services_.whileAuthorizing([&] { known = worker_->getItem()->getTicketAlreadyTorn(); });
  start(protectedFilm());  // a copy from before the grant
  ASSERT_TRUE(log_.waitFor("manager.updateStatus 7 2", 2));
  silence_.open();
  ASSERT_TRUE(waitFor("manager.updateStatus 7 3"));
  EXPECT_TRUE(known);
}

TEST_F(RightsManagedRun, DoesNotTakeTheTicketOfAnotherItemForTorn) {
  stopWhileTheServicesAreSilent(protectedFilm());
  std::atomic<bool> known{false};
  services_.whileAuthorizing([&] { known = worker_->getItem()->getTicketAlreadyTorn(); });
  auto item = protectedFilm();
  item->setId(8);
  start(std::move(item));
  silence_.open();
  ASSERT_TRUE(waitFor("manager.updateStatus 8 3"));
  EXPECT_FALSE(known);
}

TEST_F(RightsManagedRun, KeepsTheItemUntilTheServicesHaveAnswered) {
  struct Watched : DownloadItem {
    explicit Watched(std::atomic<bool>& gone) : gone_(gone) {}
    ~Watched() override { gone_ = true; }
    std::atomic<bool>& gone_;
  };
  std::atomic<bool> gone{false};
  auto item = std::make_unique<Watched>(gone);
  item->setEncrypted(true);
  stopWhileTheServicesAreSilent(std::move(item));
  EXPECT_EQ(worker_->downloadVideo(nullptr), 6);
  EXPECT_FALSE(gone);
  silence_.open();
  worker_->close();
  EXPECT_TRUE(gone);
}

TEST_F(RightsManagedRun, AsksAnewWhileAQuestionOfAStoppedRunIsStillOpen) {
  services_.setAnswers({refusal(kSlotNeeded), refusal(kSlotNeeded), grant()});
  view_.answerSlot(3);
  stopWhileTheViewIsBusy("view.chooseSlot Film 32054");
  start(protectedFilm());
  EXPECT_TRUE(waitFor("manager.updateStatus 7 3"));
  EXPECT_EQ(log_.count("view.chooseSlot Film 32054"), 2u);
  silence_.open();
}

TEST_F(RightsManagedRun, GoesOnWhileAnErrorOfAStoppedRunIsStillShown) {
  services_.setAnswers({refusal(1), grant()});
  stopWhileTheViewIsBusy("view.authorizationError 1");
  start(protectedFilm());
  EXPECT_TRUE(waitFor("manager.updateStatus 7 3"));
  silence_.open();
}

TEST_F(RightsManagedRun, EndsAtOnceWhenStoppedWhileTheUserChooses) {
  services_.setAnswers({refusal(kSlotNeeded), grant()});
  view_.answerSlot(3);
  stopWhileTheViewIsBusy("view.chooseSlot Film 32054");
  silence_.open();
  worker_->close();
  EXPECT_EQ(log_.lines("services.authorize").size(), 1u);
}

TEST_F(RightsManagedRun, ShowsNoRefusalThatComesAfterAStop) {
  stopWhileTheServicesAreSilent(protectedFilm());
  services_.setAnswers({refusal(1)});
  silence_.open();
  worker_->close();
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(RightsManagedRun, AsksTheServicesAgainWhenTheyHaveAnsweredAStoppedRun) {
  stopWhileTheServicesAreSilent(protectedFilm());
  start(protectedFilm());
  ASSERT_TRUE(log_.waitFor("manager.updateStatus 7 2", 2));
  EXPECT_EQ(log_.lines("services.authorize").size(), 1u);
  silence_.open();
  ASSERT_TRUE(waitFor("manager.updateStatus 7 3"));
  EXPECT_EQ(log_.lines("services.authorize").size(), 2u);
}

TEST_F(RightsManagedRun, LetsAnAttachedViewGoWhileItIsBeingAsked) {
  services_.setAnswers({refusal(kSlotNeeded)});
  view_.onEvent([&](const std::string&) {
    asked_.open();
    silence_.wait();
  });
  start(protectedFilm());
  ASSERT_TRUE(asked_.wait());
  worker_->setInterfaces(&manager_, nullptr);  // does not wait for the user
  silence_.open();
  EXPECT_EQ(ended(), 6);
}

}  // namespace
