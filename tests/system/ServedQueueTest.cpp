#include <gmock/gmock.h>

#include <csignal>
#include <map>
#include <memory>

#include "tests/system/ServedQueue.h"

namespace system_test {
namespace {

using support::Process;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

TEST_F(ServedQueueTest, ASecondGetShowsItsOwnFilm) {
  const auto first = startSlow("a.avi");
  const PlayerResult second = home.run({"get", offerQuick("b.avi")});
  EXPECT_EQ(second.status, 0) << second.output << second.errors;
  ASSERT_THAT(second.events("finished"), SizeIs(1));
  EXPECT_EQ(second.events("finished")[0]["title"], "b.avi");
  EXPECT_EQ(first->wait(), 0) << first->errors();
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
}

TEST_F(ServedQueueTest, ASecondGetHasTheStatusOfItsOwnFilm) {
  const auto first = startSlow("a.avi");
  const PlayerResult missing = home.run({"get", quick.url("/none.avi")});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.failureCode(), "http_404");
  EXPECT_EQ(home.run({"get", "film"}).status, 2);
}

TEST_F(ServedQueueTest, CtrlCLetsTheDownloadGoOn) {
  const auto first = startSlow("a.avi");
  Process second(home.startOptions({"get", offerSlow("b.avi")}));
  ASSERT_TRUE(second.waitForOutput("\"added\"")) << second.errors();
  second.send(SIGINT);
  EXPECT_EQ(second.wait(), 130);
  EXPECT_THAT(second.errors(), HasSubstr("the download goes on"));
  EXPECT_EQ(first->wait(), 0) << first->errors();
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
}

TEST_F(ServedQueueTest, ASecondGetGoesOnWhenTheFirstIsKilled) {
  const auto first = startSlow("a.avi");
  Process second(home.startOptions({"get", offerQuick("b.avi"), offerSlow("c.avi")}));
  ASSERT_TRUE(second.waitForOutput("\"added\"")) << second.errors();
  first->send(SIGKILL);
  EXPECT_EQ(second.wait(), 0) << second.output() << second.errors();
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi", "c.avi"));
}

TEST_F(ServedQueueTest, CommandsActOnTheRunningQueue) {
  const auto first = startSlow("a.avi");
  EXPECT_EQ(home.run({"add", offerQuick("b.avi"), offerSlow("c.avi")}).status, 0);
  EXPECT_EQ(home.run({"move", "3", "up"}).status, 0);
  EXPECT_THAT(titles(), ElementsAre("a.avi", "c.avi", "b.avi"));
  EXPECT_EQ(home.run({"remove", "2"}).status, 0);
  EXPECT_THAT(titles(), ElementsAre("a.avi", "b.avi"));
  EXPECT_EQ(home.run({"remove", "9"}).status, 2);
  EXPECT_EQ(first->wait(), 0) << first->errors();
  EXPECT_EQ(home.run({"clear"}).status, 0);
  EXPECT_THAT(titles(), IsEmpty());
}

TEST_F(ServedQueueTest, APausedQueueGoesOnWhenItIsResumed) {
  const auto first = startSlow("a.avi");
  EXPECT_EQ(home.run({"pause"}).status, 0);
  EXPECT_EQ(home.queue().at(0)["status"], "paused");
  EXPECT_EQ(home.run({"list"}).events("queue").at(0)["paused"], true);
  EXPECT_TRUE(first->waitForOutput("\"paused\":true")) << first->output();
  EXPECT_TRUE(first->running());
  EXPECT_EQ(home.run({"resume"}).status, 0);
  EXPECT_EQ(first->wait(), 0) << first->errors();
}

TEST_F(ServedQueueTest, AGetWhoseFilmIsPausedSaysSo) {
  const auto first = startSlow("a.avi");
  Process second(home.startOptions({"get", offerSlow("b.avi")}));
  ASSERT_TRUE(second.waitForOutput("\"added\"")) << second.errors();
  EXPECT_EQ(home.run({"pause", "2"}).status, 0);
  EXPECT_EQ(second.wait(), 0) << second.errors();
  EXPECT_THAT(second.errors(), HasSubstr("One film stays paused; `resume` lets it go on."));
}

TEST_F(ServedQueueTest, RemovingWhatRunsLetsTheNextBegin) {
  const auto first = startSlow("a.avi");
  EXPECT_EQ(home.run({"add", offerQuick("b.avi")}).status, 0);
  EXPECT_EQ(home.run({"remove", "1"}).status, 0);
  EXPECT_EQ(first->wait(), 1) << first->errors();
  EXPECT_THAT(home.films(), ElementsAre("b.avi"));
  EXPECT_THAT(slow.accessLog(), testing::Not(HasSubstr(" 206 ")));
}

TEST_F(ServedQueueTest, WhatArrivesIsDownloadedWhateverIsAddedOrResumed) {
  const auto first = startSlow("a.avi");
  EXPECT_EQ(home.run({"add", offerQuick("b.avi")}).status, 0);
  EXPECT_EQ(home.queue().at(0)["status"], "downloading");
  EXPECT_THAT(home.run({"resume"}).errors, HasSubstr("Nothing is paused."));
  EXPECT_EQ(home.queue().at(0)["status"], "downloading");
}

TEST_F(ServedQueueTest, OnlyWhatIsNewIsToldAsAdded) {
  const auto first = startSlow("a.avi");
  const std::string url = offerQuick("b.avi");
  EXPECT_THAT(home.run({"add", url}).output, HasSubstr("\"event\":\"added\""));
  EXPECT_THAT(home.run({"add", url}).output, Not(HasSubstr("\"event\":\"added\"")));
  EXPECT_THAT(home.run({"get"}).output, Not(HasSubstr("\"event\":\"added\"")));
}

TEST_F(ServedQueueTest, PausingOneItemLetsTheNextBegin) {
  const auto first = startSlow("a.avi");
  EXPECT_EQ(home.run({"add", offerQuick("b.avi")}).status, 0);
  EXPECT_THAT(home.run({"pause", "1"}).errors,
              HasSubstr("Paused: a.avi; the next film goes first."));
  EXPECT_EQ(first->wait(), 0) << first->errors();
  EXPECT_THAT(home.films(), ElementsAre("b.avi"));
  EXPECT_EQ(home.run({"resume", "1"}).status, 0);
  EXPECT_EQ(home.run({"get"}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
}

TEST_F(ServedQueueTest, WhatIsRemovedFreesItsBytes) {
  const auto first = startSlow("a.avi");
  first->send(SIGINT);
  EXPECT_EQ(first->wait(), 130);
  EXPECT_THAT(home.partials(), testing::Not(IsEmpty()));
  EXPECT_EQ(home.run({"remove", "1"}).status, 0);
  EXPECT_THAT(home.partials(), IsEmpty());
}

TEST_F(ServedQueueTest, AGetWhoseFilmIsRemovedFailsWithoutLeftovers) {
  const auto first = startSlow("a.avi");
  EXPECT_EQ(home.run({"remove", "1"}).status, 0);
  EXPECT_EQ(first->wait(), 1);
  EXPECT_THAT(first->errors(), HasSubstr("a.avi was taken out of the queue."));
  EXPECT_THAT(home.partials(), IsEmpty());
}

TEST_F(ServedQueueTest, AChangeThatIsNotSavedFailsWhereItWasAskedFor) {
  const auto first = startSlow("a.avi");
  std::filesystem::remove(home.queueFile());
  std::filesystem::create_directories(home.queueFile());
  const PlayerResult added = home.run({"add", offerQuick("b.avi")});
  EXPECT_EQ(added.status, 1);
  EXPECT_THAT(added.errors, HasSubstr("does not hold the last changes"));
}

TEST_F(ServedQueueTest, WhatIsLeftOfALostQueueIsNamedBeforeItIsCleaned) {
  const auto first = startSlow("a.avi");
  first->send(SIGKILL);
  first->wait();
  std::filesystem::remove(home.queueFile());
  EXPECT_THAT(home.run({"clean", "--dry-run"}).errors, HasSubstr("Would delete"));
  EXPECT_THAT(home.partials(), testing::Not(IsEmpty()));
  EXPECT_THAT(home.run({"clean"}).errors, HasSubstr(slow.url("/a.avi")));
  EXPECT_THAT(home.partials(), IsEmpty());
}

TEST_F(ServedQueueTest, WhatIsLeftOfALostQueueGoesWithTheNextGet) {
  const auto first = startSlow("a.avi");
  first->send(SIGKILL);
  first->wait();
  EXPECT_THAT(home.partials(), testing::Not(IsEmpty()));
  std::filesystem::remove(home.queueFile());
  EXPECT_EQ(home.run({"get", offerQuick("b.avi")}).status, 0);
  EXPECT_THAT(home.partials(), IsEmpty());
}

TEST_F(ServedQueueTest, WhatHasFailedIsRetriedBesideWhatRuns) {
  Process first(home.startOptions({"get", quick.url("/late.avi"), offerSlow("a.avi")}));
  ASSERT_TRUE(first.waitForOutput("\"percent\":1")) << first.errors();
  offerQuick("late.avi");
  EXPECT_EQ(home.run({"retry", "all"}).status, 0);
  EXPECT_EQ(first.wait(), 1) << "it has failed once";
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "late.avi"));
}

TEST_F(ServedQueueTest, AMediaFolderForAnotherPlayerIsSaidToHaveNoEffect) {
  const auto first = startSlow("a.avi");
  Process second(home.startOptions({"get", offerQuick("b.avi")}));
  EXPECT_TRUE(second.waitForErrors("into its own media folder, whatever --media says."));
}

TEST_F(ServedQueueTest, TheEndOfTheWatchedPlayerIsSaid) {
  const auto first = startSlow("a.avi");
  Process watch(home.startOptions({"watch"}));
  ASSERT_TRUE(watch.waitForOutput("\"queue\"")) << watch.errors();
  first->send(SIGKILL);
  EXPECT_EQ(watch.wait(), 0);
  EXPECT_THAT(watch.errors(), HasSubstr("has ended"));
}

TEST_F(ServedQueueTest, WatchShowsWhatAnotherDownloads) {
  const auto first = startSlow("a.avi");
  const PlayerResult watch = home.run({"watch"});
  EXPECT_EQ(watch.status, 0) << watch.errors;
  EXPECT_THAT(watch.events("finished"), SizeIs(1));
  EXPECT_EQ(home.run({"watch"}).status, 0);
}

TEST_F(ServedQueueTest, AFilmThatFailsAtOnceFailsTheGetThatBroughtIt) {
  const auto first = startSlow("a.avi");
  for (int i = 0; i < 10; ++i) {
    const std::string url = "http://127.0.0.1:1/" + std::to_string(i / 2) + ".avi";
    const PlayerResult result = home.run({"get", url});
    EXPECT_EQ(result.status, 1) << result.output << result.errors;
    EXPECT_EQ(result.failureCode(), "refused");
  }
}

TEST_F(ServedQueueTest, TheListOfARunningQueueShowsItsPace) {
  const auto first = startSlow("a.avi");
  EXPECT_TRUE(support::waitFor([this] {
    const Json film = home.queue().at(0);
    return film["bytesPerSecond"] > 0 && film["secondsRemaining"].is_number() &&
           film["arrived"].is_number();
  }));
  EXPECT_THAT(home.runForPeople({"list"}).output, HasSubstr("/s, "));
}

TEST_F(ServedQueueTest, EveryFaceIsToldOfTheWholeQueue) {
  const auto first = startSlow("a.avi");
  Process watch(home.startOptions({"watch"}));
  const PlayerResult second = home.run({"get", offerQuick("b.avi")});
  const auto queues = second.events("queue");
  ASSERT_THAT(queues, testing::Not(IsEmpty()));
  EXPECT_EQ(queues.back()["items"], 2);
  EXPECT_EQ(first->wait(), 0);
  EXPECT_EQ(finish(watch).events("queue").back()["completed"], 2);
}

TEST_F(ServedQueueTest, AFilmThatWaitsGetsTheNameThatItIsGivenLater) {
  const auto first = startSlow("a.avi");
  EXPECT_EQ(home.run({"add", offerQuick("b.avi")}).status, 0);
  EXPECT_EQ(home.run({"get", "-o", "c.avi", quick.url("/b.avi")}).status, 0);
  EXPECT_EQ(first->wait(), 0) << first->errors();
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "c.avi"));
}

TEST_F(ServedQueueTest, APlayerThatIsStoppedIsSaid) {
  const auto first = startSlow("a.avi");
  Process second(home.startOptions({"get", offerQuick("b.avi")}));
  ASSERT_TRUE(second.waitForOutput("\"added\"")) << second.errors();
  first->send(SIGSTOP);
  EXPECT_TRUE(second.waitForErrors("does not answer")) << second.errors();
  EXPECT_THAT(home.run({"pause"}).errors, HasSubstr("does not answer"));
  EXPECT_THAT(home.run({"list"}).errors, HasSubstr("This is what it has saved."));
  first->send(SIGCONT);
  EXPECT_TRUE(second.waitForErrors("answers again")) << second.errors();
  EXPECT_EQ(second.wait(), 0) << second.errors();
  EXPECT_EQ(first->wait(), 0) << first->errors();
}

TEST_F(ServedQueueTest, FiveProcessesAddAHundredFilmsEachOnce) {
  std::vector<std::unique_ptr<Process>> adders;
  for (int i = 0; i < 5; ++i) {
    std::vector<std::string> arguments = {"add"};
    for (int j = 0; j < 100; ++j) {
      arguments.push_back("http://127.0.0.1:1/" + std::to_string(100 * i + j) + ".avi");
    }
    adders.push_back(std::make_unique<Process>(home.startOptions(arguments)));
  }
  for (const auto& adder : adders)
    EXPECT_EQ(adder->wait(std::chrono::minutes(2)), 0) << adder->errors();
  std::map<std::string, int> counts;
  for (const std::string& title : titles()) ++counts[title];
  EXPECT_THAT(counts, SizeIs(500));
  for (const auto& [title, count] : counts) EXPECT_EQ(count, 1) << title;
}

TEST_F(ServedQueueTest, FiveProcessesFetchOneQueue) {
  std::vector<std::unique_ptr<Process>> players;
  for (int i = 0; i < 5; ++i) {
    players.push_back(std::make_unique<Process>(
        home.startOptions({"get", offerQuick(std::to_string(i) + ".avi")})));
  }
  for (const auto& player : players)
    EXPECT_EQ(player->wait(std::chrono::minutes(1)), 0) << player->errors();
  EXPECT_THAT(home.films(), SizeIs(5));
}

}  // namespace
}  // namespace system_test
