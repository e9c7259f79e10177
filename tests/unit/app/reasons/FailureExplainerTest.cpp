#include <gtest/gtest.h>

#include <atomic>

#include "playerx/app/reasons/FailureExplainer.h"
#include "playerx/app/reasons/TransferReason.h"
#include "playerx/settings/PreferenceOverrides.h"
#include "tests/support/TempDir.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::reasons {
namespace {

using model::ItemState;
using model::Notice;

ItemState film(const std::string& url = "http://films.test/a.avi", const std::string& ticket = "") {
  ItemState item;
  item.url = url;
  item.ticket = ticket;
  return item;
}

Explanation noSpaceAt(const std::string& place) {
  return explain(Reason::kTooLittleSpace, {.place = place, .words = "5 B free"});
}

Explanation status(int number) { return explain(reasonOfStatus(number), {.host = "films.test"}); }

TEST(NoticesTest, ANoticeGoesBeforeALookAtTheServer) {
  EXPECT_EQ(explainNotices(film(), {{Notice::kBroken, "/m/a.avi"}}, ""), std::nullopt);
  EXPECT_EQ(explainNotices(film(), {{Notice::kBroken, "/"}, {Notice::kNoSpace, "/"}}, "")->reason,
            Reason::kTooLittleSpace);
  EXPECT_EQ(explainNotices(film("", "t"), {{Notice::kSlotDeclined, ""}}, "")->sentence(),
            "All slots are taken and none was given up; run `get` in a terminal and choose one.");
}

TEST(NoticesTest, ALackOfSpaceIsToldInNumbers) {
  const support::TempDir folder;
  const std::string happened = explainSpace(folder / "below", 1'000'000'000).happened;
  EXPECT_NE(happened.find(" (2.0 GB needed, "), std::string::npos) << happened;
  EXPECT_TRUE(happened.ends_with(" free)")) << happened;
}

TEST(NoticesTest, AFolderThatCannotHoldFilesHasNoLackOfSpace) {
  const support::TempDir folder;
  const std::filesystem::path file = folder.write("file", "x");
  for (const std::filesystem::path& place : {file, file / "below", {"/proc/films"}}) {
    EXPECT_EQ(explainNotices(film(), {{Notice::kNoSpace, place}}, "")->reason,
              Reason::kFolderUnusable)
        << place;
  }
  EXPECT_EQ(explainNotices(film(), {{Notice::kNoSpace, folder / "a/b"}}, "")->reason,
            Reason::kTooLittleSpace);
}

TEST(NoticesTest, ErrorsOfThePlayerItselfAreNotRefusals) {
  EXPECT_EQ(explainNotices(film(), {{Notice::kNotAuthorized, "No.", 7}}, "")->sentence(),
            "The online services do not allow this download (error 7: No.).");
  EXPECT_EQ(explainNotices(film(), {{Notice::kNotAuthorized, "", 7}}, "")->sentence(),
            "The online services do not allow this download (error 7).");
  EXPECT_EQ(
      explainNotices(film(), {{Notice::kNotAuthorized, "No proper answer.", -2}}, "")->sentence(),
      "No proper answer. This protected film cannot be downloaded without them; retry it "
      "later.");
}

TEST(NoticesTest, TheServicesWordsExplainAnItemWithATicketOnly) {
  EXPECT_EQ(explainNotices(film(), {}, "No."), std::nullopt);
  EXPECT_EQ(explainNotices(film("http://h/a.avi", "t"), {}, "No.")->code(), "services");
}

TEST(NoticesTest, AnItemWithoutAddressLacksItsTicketOrTheServices) {
  EXPECT_EQ(explainNotices(film("", "t"), {}, ""), std::nullopt);
  EXPECT_EQ(explainNotices(film(""), {}, "")->code(), "no_address");
}

TEST(ChooseExplanationTest, OnlyNonsenseOverrulesALackOfSpace) {
  const Explanation space = noSpaceAt("/m");
  const Explanation nonsense = explain(reasonOf(TransferFailure::kBadAnswer), {.host = "h"});
  EXPECT_EQ(chooseExplanation(space, nonsense), nonsense);
  EXPECT_EQ(chooseExplanation(space, status(500)), space);
  EXPECT_EQ(chooseExplanation(space, std::nullopt), space);
  EXPECT_EQ(chooseExplanation(std::nullopt, status(500)), status(500));
  EXPECT_EQ(chooseExplanation(std::nullopt, std::nullopt).reason, Reason::kUnexplained);
}

TEST(ChooseExplanationTest, ALackOfSpaceForAnUnknownSizeIsDoubtful) {
  EXPECT_TRUE(isDoubtful(film(), noSpaceAt("/m")));
  EXPECT_FALSE(isDoubtful(film(), status(500)));
  EXPECT_FALSE(isDoubtful(film("http://h/a.avi", "t"), noSpaceAt("/m")));
  ItemState sized = film();
  sized.size = 5;
  EXPECT_FALSE(isDoubtful(sized, noSpaceAt("/m")));
}

TEST(ChooseExplanationTest, ThePasswordOfAProtectedFilmHasExpired) {
  EXPECT_EQ(adaptedTo(film(), status(401)), status(401));
  EXPECT_EQ(adaptedTo(film("http://h/a.avi", "t"), status(401)).reason, Reason::kAccessExpired);
  EXPECT_EQ(adaptedTo(film("http://h/a.avi", "t"), noSpaceAt("/m")), noSpaceAt("/m"));
}

TEST(ChooseExplanationTest, ServicesThatAnswerAreNotReady) {
  ProbeResult answered{.address = "http://s", .end = {}, .words = {}, .status = 200};
  EXPECT_EQ(reasonOfServices(answered), Reason::kServicesNotReady);
  answered.status = 0;
  EXPECT_EQ(reasonOfServices(answered), Reason::kServicesUnreachable);
  answered.address.clear();
  EXPECT_EQ(reasonOfServices(answered), Reason::kServicesNotNamed);
}

class FailureExplainerTest : public testing::Test {
 protected:
  void SetUp() override { needApplication(); }

  /// The library knows `report_`; the server answers with `status_` once `gate_` is open.
  void start() {
    explainer_.emplace(
        [this] { ++wakes_; }, [this](const std::string&) { return report_; },
        [this](const std::string& address, const std::stop_token& stop) {
          ++asked_;
          while (isSilent_ && !stop.stop_requested()) std::this_thread::yield();
          return ProbeResult{
              .address = address, .end = {}, .words = {}, .status = status_, .length = 5};
        });
  }

  Explanation onlyAnswer() {
    std::vector<ExplainedFailure> answers;
    EXPECT_TRUE(support::waitFor([&] {
      answers = explainer_->takeAnswers();
      return !answers.empty();
    }));
    EXPECT_EQ(answers.size(), 1u);
    return answers.at(0).explanation;
  }

  std::optional<TransferReport> report_;
  long status_ = 404;
  std::atomic<bool> isSilent_{false};
  std::atomic<int> wakes_{0};
  std::atomic<int> asked_{0};
  std::optional<FailureExplainer> explainer_;
};

TEST_F(FailureExplainerTest, AnswersAtOnceWhenTheReasonIsKnown) {
  start();
  explainer_->explain(film(), {{Notice::kNoSpace, "/proc/films"}}, "");
  ASSERT_TRUE(explainer_->isBusy());
  EXPECT_EQ(explainer_->takeAnswers().at(0).explanation.reason, Reason::kFolderUnusable);
  EXPECT_FALSE(explainer_->isBusy());
  EXPECT_EQ(wakes_, 1);
  EXPECT_EQ(asked_, 0);
}

TEST_F(FailureExplainerTest, ABrokenTransferExplainsItself) {
  report_.emplace();
  report_->phase = TransferPhase::kBroken;
  report_->failure = TransferFailure::kStalled;
  start();
  explainer_->explain(film(), {}, "");
  EXPECT_EQ(onlyAnswer().code(), "stalled");
  EXPECT_EQ(asked_, 0);
}

TEST_F(FailureExplainerTest, ATransferThatWasNotTheOneToBreakExplainsNothing) {
  report_.emplace();
  report_->uid = 7;
  report_->phase = TransferPhase::kStopped;
  report_->failure = TransferFailure::kStalled;
  start();
  explainer_->explain(film(), {}, "");
  EXPECT_EQ(onlyAnswer().code(), "http_404");
}

TEST_F(FailureExplainerTest, AsksTheServerWhenNothingElseIsKnown) {
  start();
  explainer_->explain(film(), {}, "");
  EXPECT_EQ(onlyAnswer(), status(404));
  EXPECT_EQ(wakes_, 1);
  EXPECT_FALSE(explainer_->isBusy());
}

TEST_F(FailureExplainerTest, AServerThatAnswersWellLeavesTheFailureUnexplained) {
  status_ = 200;
  start();
  explainer_->explain(film(), {}, "");
  EXPECT_EQ(onlyAnswer().reason, Reason::kUnexplained);
}

TEST_F(FailureExplainerTest, AProtectedFilmAsksTheServicesEvenIfItHasAnAddress) {
  status_ = 200;
  start();
  explainer_->explain(film("http://films.test/a.avi", "t"), {}, "");
  EXPECT_EQ(onlyAnswer().reason, Reason::kServicesNotNamed);
  setPreferenceOverride("General/ServicesAddress", "http://services.test");
  status_ = 0;
  explainer_->explain(film("http://films.test/a.avi", "t"), {}, "");
  EXPECT_EQ(onlyAnswer().reason, Reason::kServicesUnreachable);
  clearPreferenceOverrides();
}

TEST_F(FailureExplainerTest, TheEndBreaksARunningQuestionOff) {
  isSilent_ = true;
  start();
  explainer_->explain(film(), {}, "");
  explainer_->explain(film(), {}, "");
  ASSERT_TRUE(support::waitFor([this] { return asked_ == 1; }));
  explainer_.reset();
  EXPECT_EQ(wakes_, 0);
}

}  // namespace
}  // namespace playerx::reasons
