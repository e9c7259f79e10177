#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <utility>

#include "KPX/OSUtilities.h"
#include "playerx/cli/GetCommand.h"
#include "playerx/cli/WakeUp.h"
#include "playerx/transfers/Part.h"
#include "tests/unit/app/FakeSession.h"
#include "tests/unit/cli/LoggingReporter.h"

namespace playerx::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class GetCommandTest : public testing::Test {
 protected:
  /// Every server answers with this status.
  int run(std::vector<std::string> inputs, long status = 404) {
    options_.request.action = session::Request::Action::kAdd;
    options_.request.inputs = std::move(inputs);
    GetCommand command(options_, fake_.session(), reporter_, wakeUp_,
                       [status](const std::string& address, const std::stop_token&) {
                         return reasons::ProbeResult{address, {}, "", status, 5};
                       });
    return command.run();
  }

  std::function<void()> set(DownloadItem& item, DownloadStatusEnumType status) {
    return [&item, status] { item.setStatus(status); };
  }

  WakeUp wakeUp_;
  FakeSession fake_{[this] { wakeUp_.raise(); }};
  FakeModule& module_ = fake_.module;
  support::EventLog& log_ = fake_.log;
  LoggingReporter reporter_;
  Options options_;
};

TEST_F(GetCommandTest, AnEmptyQueueIsDoneAtOnce) {
  EXPECT_EQ(run({}), kExitDone);
  EXPECT_THAT(reporter_.lines, ElementsAre("The queue is empty."));
}

TEST_F(GetCommandTest, WhatStaysPausedIsSaid) {
  module_.put("http://h/a.avi", DownloadStatusStopped);
  EXPECT_EQ(run({}), kExitDone);
  EXPECT_THAT(reporter_.lines, ElementsAre("One film stays paused; `resume` lets it go on."));
}

TEST_F(GetCommandTest, WhatHadFailedBeforeIsSaid) {
  module_.put("http://h/a.avi", DownloadStatusFailed);
  module_.put("http://h/b.avi", DownloadStatusFailed);
  DownloadItem& film = module_.put("http://h/c.avi");
  module_.atNextLooks({[] {}, set(film, DownloadStatusFailed)});
  EXPECT_EQ(run({}), kExitFailed);
  EXPECT_THAT(
      reporter_.lines,
      ElementsAre("failed http_404", "2 films have failed before; `retry all` queues them again."));
}

TEST_F(GetCommandTest, NothingIsSaidOfFilmsThatWereNotNamed) {
  module_.put("http://h/a.avi", DownloadStatusStopped);
  DownloadItem& film = module_.put("http://h/b.avi");
  module_.atEachLook([&] {
    const bool isAdded = reporter_.lines.size() == 1;
    if (isAdded) film.setStatus(DownloadStatusCompleted);
  });
  EXPECT_EQ(run({"http://h/b.avi"}), kExitDone);
  EXPECT_THAT(reporter_.lines, ElementsAre(HasSubstr("is in the queue already"), "finished"));
}

TEST_F(GetCommandTest, EveryStepOfAFilmIsReported) {
  DownloadItem& film = module_.put("http://h/a.avi");
  module_.atNextLooks(
      {[] {}, set(film, DownloadStatusDownloading), set(film, DownloadStatusCompleted)});
  EXPECT_EQ(run({}), kExitDone);
  EXPECT_THAT(reporter_.lines, ElementsAre("changed downloading", "finished"));
}

TEST_F(GetCommandTest, AnAddedAddressIsReportedOnce) {
  module_.atNextLooks({[] {}, [] {},
                       [this] {
                         log_.add("now");
                         module_.all().back()->setStatus(DownloadStatusCompleted);
                       }});
  EXPECT_EQ(run({"http://h/a.avi"}), kExitDone);
  EXPECT_THAT(reporter_.lines, ElementsAre("added http://h/a.avi", "finished"));
}

TEST_F(GetCommandTest, AFailureIsReportedWithItsReason) {
  DownloadItem& film = module_.put("http://h/a.avi");
  module_.atNextLooks({[] {}, set(film, DownloadStatusFailed)});
  EXPECT_EQ(run({}), kExitFailed);
  EXPECT_THAT(reporter_.lines, ElementsAre("failed http_404"));
}

TEST_F(GetCommandTest, ANoticeAboutTheItemIsItsReason) {
  DownloadItem& film = module_.put("http://h/a.avi");
  module_.atNextLooks({[] {},
                       [&] {
                         module_.view()->downloadItemChanged(film.getId());
                         module_.view()->notEnoughSpace(L"/proc/films");
                         film.setStatus(DownloadStatusFailed);
                       }});
  EXPECT_EQ(run({}), kExitFailed);
  EXPECT_THAT(reporter_.lines, ElementsAre("failed media_folder"));
}

TEST_F(GetCommandTest, AFilmOfAnotherLengthIsSaidWithItsOutcome) {
  DownloadItem& film = module_.put("http://h/a.avi");
  film.setPath(fake_.folder.write("a.avi", "1234").wstring());
  film.setSize(7);
  module_.atNextLooks({[] {}, set(film, DownloadStatusCompleted)});
  EXPECT_EQ(run({}), kExitDone);
  EXPECT_THAT(reporter_.lines, ElementsAre(HasSubstr("4 B although its server had announced 7")));
}

TEST_F(GetCommandTest, NothingButRefusedInputsIsWrongUsage) {
  module_.put("http://h/waiting.avi");
  EXPECT_EQ(run({"film.avi", "http://h/a.txt"}), kExitUsage);
  EXPECT_THAT(reporter_.lines, ElementsAre("refused film.avi unsupported_url",
                                           "refused http://h/a.txt unsupported_type"));
}

TEST_F(GetCommandTest, ARefusedInputLeavesTheOthersAlone) {
  DownloadItem& film = module_.put("http://h/a.avi");
  module_.atEachLook([&] {
    const bool isAdded = reporter_.lines.size() == 2;
    if (isAdded) film.setStatus(DownloadStatusCompleted);
  });
  EXPECT_EQ(run({"film.avi", "http://h/a.avi"}), kExitUsage);
  EXPECT_THAT(reporter_.lines,
              ElementsAre("refused film.avi unsupported_url",
                          "http://h/a.avi is in the queue already; going on with it.", "finished"));
}

TEST_F(GetCommandTest, AnInterruptParksTheQueue) {
  module_.put("http://h/a.avi");
  module_.atNextLooks({[] {}, [] { pthread_kill(pthread_self(), SIGINT); }});
  EXPECT_EQ(run({}), kExitInterrupted);
  EXPECT_TRUE(log_.has("manager.pause"));
  EXPECT_THAT(reporter_.lines, ElementsAre(HasSubstr("Interrupted; what has arrived is kept")));
}

TEST_F(GetCommandTest, AnInterruptBetweenInputsKeepsWhatWasAdded) {
  module_.atNextLooks({[] {}, [] { pthread_kill(pthread_self(), SIGINT); }});
  EXPECT_EQ(run({"http://h/a.avi", "http://h/b.avi"}), kExitInterrupted);
  EXPECT_EQ(log_.lines("manager.add").size(), 1u);
}

TEST_F(GetCommandTest, AnInterruptEndsTheProgramAtOnceWhileALongTicketIsAdded) {
  module_.takesTickets = true;
  module_.atEachLook([this] {
    if (!log_.lines("manager.addTicket").empty()) raise(SIGINT);
  });
  const auto addTicketOf = [this](std::size_t bytes) {
    run({fake_.folder.write("a.tix", std::string(bytes, '\n'))});
    std::_Exit(77);
  };
  EXPECT_EXIT(addTicketOf(1'000'000), testing::ExitedWithCode(kExitInterrupted), "Interrupted;");
  EXPECT_EXIT(addTicketOf(999'999), testing::ExitedWithCode(77), "^$");
}

TEST_F(GetCommandTest, TheFilesOfARemovedFilmAreWaitedForWhileATransferHasThem) {
  int looks = 0;
  module_.atEachLook([&] {
    ++looks;
    wakeUp_.raise();
  });
  EXPECT_EQ(run({}), kExitDone);
  const int usual = std::exchange(looks, 0);
  const std::filesystem::path folder = VeskPlayerX::OSUtilities::getTempPath().toStdString();
  std::filesystem::create_directories(folder);
  int error = 0;
  const auto part =
      transfers::Part::claim({folder, transfers::digestOf("http://h/removed.avi")}, error);
  ASSERT_NE(part, nullptr);
  EXPECT_EQ(run({}), kExitDone);
  EXPECT_EQ(looks, usual + 3);
}

TEST_F(GetCommandTest, WhatPlugInsSayIsPassedOn) {
  const auto messages = KPIM::load<UserMessages>(&fake_.session().plugins(), kUserMessagesId);
  ASSERT_NE(messages, nullptr);
  messages->get()->tellUser("Hello.");
  EXPECT_EQ(run({}), kExitDone);
  EXPECT_THAT(reporter_.lines, ElementsAre("Hello.", "The queue is empty."));
}

TEST_F(GetCommandTest, AFilmIsPlayedOnceAsSoonAsEnoughOfItIsThere) {
  options_.request.plays = true;
  module_.answerPlay(true);
  DownloadItem& film = module_.put("http://h/a.avi");
  module_.atNextLooks({[] {}, set(film, DownloadStatusDownloading),
                       [&] { film.setReadyForProgressivePlayback(true); },
                       [&] { film.setPercentDownloaded(50); }, set(film, DownloadStatusCompleted)});
  EXPECT_EQ(run({}), kExitDone);
  EXPECT_EQ(log_.lines("manager.play").size(), 1u);
}

TEST_F(GetCommandTest, AFilmThatFlowsIsReportedFromTimeToTime) {
  DownloadItem& film = module_.put("http://h/a.avi", DownloadStatusDownloading);
  fake_.reports.isThere = true;
  fake_.reports.last.partialPath = "/partial/a";
  // Nothing is announced, so that only the passing of time leads to another look.
  int looks = 0;
  module_.atEachLook([&] {
    if (++looks == 4) film.setStatus(DownloadStatusCompleted);
  });
  EXPECT_EQ(run({}), kExitDone);
  EXPECT_THAT(reporter_.lines, testing::Contains("changed downloading"));
}

}  // namespace
}  // namespace playerx::cli
