#include <gmock/gmock.h>

#include <filesystem>

#include "KPX/OSUtilities.h"
#include "playerx/app/session/FilmOptionsFile.h"
#include "playerx/app/session/QueueService.h"
#include "playerx/transfers/Part.h"
#include "tests/unit/app/FakeSession.h"

namespace playerx::session {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Action = Request::Action;
using Direction = Request::Direction;
using Outcome = Reply::Outcome;

class QueueServiceTest : public testing::Test {
 protected:
  Reply ask(Action action, int position = 0, Direction direction = Direction::kUp) {
    return service().handle({.action = action, .position = position, .direction = direction});
  }

  Reply add(const std::string& input) {
    return service().handle({.action = Action::kAdd, .inputs = {input}});
  }

  /// Built with the first request, so that a test can fill the queue before.
  QueueService& service() {
    if (!service_) {
      service_.emplace(
          fake_.session(), model::QueueTracker::Keep::kUnlessComplete, [] {},
          [](const std::string& address, const std::stop_token&) {
            return reasons::ProbeResult{address, {}, "", 404, 5};
          },
          [this](const QueueEvent& event) { events_.push_back(event); });
    }
    return *service_;
  }

  static std::string call(const std::string& operation, const DownloadItem& item) {
    return "manager." + operation + " " + std::to_string(item.getId());
  }

  DownloadItem& putFilm(DownloadStatusEnumType status) {
    DownloadItem& item = fake_.module.put("http://h/a.avi", status);
    item.setPath((fake_.folder / "a.avi").wstring());
    return item;
  }

  /// The files of a transfer of this address, in a folder that is made for them.
  static transfers::PartPaths filesOf(const std::string& address) {
    const std::filesystem::path folder = VeskPlayerX::OSUtilities::getTempPath().toStdString();
    std::filesystem::create_directories(folder);
    return {folder, transfers::digestOf(address)};
  }

  FakeSession fake_;
  support::EventLog& log_ = fake_.log;
  std::vector<QueueEvent> events_;
  std::optional<QueueService> service_;
};

TEST_F(QueueServiceTest, ListHandsTheQueueOut) {
  fake_.module.put("http://h/a.avi");
  fake_.module.put("http://h/b.avi");
  const Reply reply = ask(Action::kList);
  ASSERT_EQ(reply.items.size(), 2u);
  EXPECT_EQ(reply.items[1].url, "http://h/b.avi");
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(QueueServiceTest, APositionThatIsNotThereIsWrongUse) {
  fake_.module.put("http://h/a.avi");
  const Reply reply = ask(Action::kRemove, 2);
  EXPECT_EQ(reply.outcome, Outcome::kWrongUse);
  EXPECT_THAT(reply.notes, ElementsAre("There is no item 2; the queue holds 1."));
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(QueueServiceTest, AnItemIsAlsoNamedByItsId) {
  const DownloadItem& item = fake_.module.put("http://h/a.avi");
  service().handle({.action = Action::kRemove, .id = item.getId()});
  EXPECT_THAT(log_.lines(), ElementsAre(call("remove", item)));
  EXPECT_EQ(service().handle({.action = Action::kRemove, .id = item.getId() + 1}).outcome,
            Outcome::kWrongUse);
}

TEST_F(QueueServiceTest, OnlyAFailedItemIsRetried) {
  DownloadItem& item = fake_.module.put("http://h/a.avi");
  EXPECT_THAT(ask(Action::kRetry, 1).notes,
              ElementsAre("Only a failed item can be retried; this one is queued."));
  item.setStatus(DownloadStatusFailed);
  EXPECT_THAT(ask(Action::kRetry, 1).results,
              ElementsAre("Queued again: film; `get` downloads it."));
  EXPECT_THAT(log_.lines(), ElementsAre(call("retry", item)));
}

TEST_F(QueueServiceTest, ARetryKeepsThePause) {
  const DownloadItem& item = fake_.module.put("http://h/a.avi", DownloadStatusFailed);
  fake_.session().start();
  fake_.module.isPausedNow = true;
  log_.clear();
  EXPECT_THAT(ask(Action::kRetry, 1).results,
              ElementsAre("Queued again: film; the queue is paused."));
  EXPECT_THAT(log_.lines("manager."),
              ElementsAre(call("updateStatus", item) + " 1", call("moveToTop", item)));
}

TEST_F(QueueServiceTest, RetryOfAllSpeaksOfOneOrMany) {
  fake_.module.put("http://h/a.avi", DownloadStatusFailed);
  EXPECT_THAT(ask(Action::kRetry).results,
              ElementsAre("Queued again: one item; `get` downloads it."));
}

TEST_F(QueueServiceTest, RetryOfAllMovesNothing) {
  const DownloadItem& first = fake_.module.put("http://h/a.avi", DownloadStatusFailed);
  fake_.module.put("http://h/b.avi", DownloadStatusCompleted);
  const DownloadItem& last = fake_.module.put("http://h/c.avi", DownloadStatusFailed);
  EXPECT_THAT(ask(Action::kRetry).results,
              ElementsAre("Queued again: 2 items; `get` downloads them."));
  EXPECT_THAT(log_.lines(),
              ElementsAre(call("updateStatus", first) + " 1", call("updateStatus", last) + " 1"));
}

TEST_F(QueueServiceTest, AFailedItemIsNotMoved) {
  fake_.module.put("http://h/a.avi");
  fake_.module.put("http://h/b.avi", DownloadStatusFailed);
  for (const Direction direction : {Direction::kTop, Direction::kBefore}) {
    EXPECT_THAT(ask(Action::kMove, 2, direction).notes,
                ElementsAre("A failed item cannot be moved before it is tried again."));
  }
  EXPECT_THAT(log_.lines(), testing::IsEmpty());
}

TEST_F(QueueServiceTest, FailedItemsGoOutOfTheWayOfAnotherThatIsRetried) {
  const DownloadItem& first = fake_.module.put("http://h/a.avi", DownloadStatusFailed);
  const DownloadItem& second = fake_.module.put("http://h/b.avi", DownloadStatusFailed);
  ask(Action::kRetry, 2);
  EXPECT_EQ(log_.lines().front(), call("updateStatus", first) + " 6");
  EXPECT_EQ(log_.lines().back(), call("retry", second));
}

TEST_F(QueueServiceTest, EachDirectionIsAMoveOfItsOwn) {
  const DownloadItem& item = fake_.module.put("http://h/a.avi");
  EXPECT_THAT(ask(Action::kMove, 1, Direction::kTop).results,
              ElementsAre("film is now item 1 of 1."));
  EXPECT_EQ(ask(Action::kMove, 1, Direction::kBottom).outcome, Outcome::kDone);
  EXPECT_EQ(ask(Action::kMove, 1, Direction::kUp).outcome, Outcome::kFailed);
  EXPECT_THAT(ask(Action::kMove, 1, Direction::kDown).notes,
              ElementsAre("The item cannot move any further."));
  EXPECT_THAT(log_.lines(), ElementsAre(call("moveToTop", item), call("moveToBottom", item),
                                        call("moveUp", item), call("moveDown", item)));
}

TEST_F(QueueServiceTest, AMoveInFrontOfAnotherItemGoesStepByStep) {
  const DownloadItem& first = fake_.module.put("http://h/a.avi");
  const DownloadItem& second = fake_.module.put("http://h/b.avi");
  const DownloadItem& third = fake_.module.put("http://h/c.avi");
  const auto moveBefore = [this](const DownloadItem& item, unsigned int before) {
    return service()
        .handle({.action = Action::kMove,
                 .id = item.getId(),
                 .direction = Direction::kBefore,
                 .before = before})
        .outcome;
  };
  EXPECT_EQ(moveBefore(third, first.getId()), Outcome::kFailed);  // the manager refuses the step
  EXPECT_EQ(moveBefore(first, third.getId()), Outcome::kFailed);
  EXPECT_EQ(moveBefore(first, second.getId()), Outcome::kDone);  // it is there
  EXPECT_EQ(moveBefore(first, third.getId() + 1), Outcome::kWrongUse);
  EXPECT_THAT(log_.lines(), ElementsAre(call("moveUp", third), call("moveDown", first)));
}

TEST_F(QueueServiceTest, ThereIsNoWindowToShow) {
  EXPECT_EQ(ask(Action::kShow).outcome, Outcome::kFailed);
}

TEST_F(QueueServiceTest, ClearDropsWhatIsComplete) {
  EXPECT_THAT(ask(Action::kClear).results, ElementsAre("No item is complete."));
  putFilm(DownloadStatusCompleted);
  EXPECT_THAT(ask(Action::kClear).results, ElementsAre("Removed one completed item."));
  putFilm(DownloadStatusCompleted);
  EXPECT_THAT(ask(Action::kClear).results, ElementsAre("Removed 2 completed items."));
  EXPECT_EQ(log_.lines("manager.clearCompletedDownloads").size(), 3u);
}

TEST_F(QueueServiceTest, ALimitIsSaidInBytes) {
  fake_.session().start();
  EXPECT_THAT(service().handle({.action = Action::kLimit, .rateLimit = 20 * 1024}).results,
              ElementsAre("At most 20480 bytes (20.5 kB) per second from now on."));
  EXPECT_THAT(service().handle({.action = Action::kLimit, .rateLimit = 0}).results,
              ElementsAre("The rate is no longer limited."));
}

TEST_F(QueueServiceTest, APauseSaysHowItEnds) {
  fake_.session().start();
  fake_.module.put("http://h/a.avi");
  EXPECT_THAT(ask(Action::kPause).results,
              ElementsAre("The queue is paused; `resume` lets it go on."));
}

TEST_F(QueueServiceTest, WhatIsResumedIsCounted) {
  EXPECT_THAT(ask(Action::kResume).results, ElementsAre("Nothing is paused."));
  fake_.module.put("http://h/a.avi", DownloadStatusStopped);
  fake_.module.put("http://h/b.avi", DownloadStatusPaused);
  EXPECT_THAT(ask(Action::kResume).results, ElementsAre("Resumed 2 items; `get` downloads them."));
  fake_.session().start();
  EXPECT_THAT(ask(Action::kResume).results, ElementsAre("The queue goes on."));
}

TEST_F(QueueServiceTest, ATransferEndsBeforeItsItemIsRemoved) {
  fake_.session().start();
  const DownloadItem& item = fake_.module.put("http://h/a.avi", DownloadStatusQueued);
  fake_.module.put("http://h/b.avi", DownloadStatusQueued);
  ask(Action::kRemove, 1);
  EXPECT_THAT(log_.lines(), ElementsAre("manager.pause", call("remove", item), "manager.resume"));
}

TEST_F(QueueServiceTest, NothingIsStoppedForAnItemThatWaits) {
  fake_.session().start();
  fake_.module.put("http://h/a.avi", DownloadStatusDownloading);
  const DownloadItem& second = fake_.module.put("http://h/b.avi", DownloadStatusQueued);
  ask(Action::kRemove, 2);
  EXPECT_THAT(log_.lines(), ElementsAre(call("remove", second)));
}

TEST_F(QueueServiceTest, WithoutADownloadThereIsNothingToPause) {
  fake_.module.put("http://h/a.avi", DownloadStatusQueued);
  const Reply reply = ask(Action::kPause);
  EXPECT_EQ(reply.outcome, Outcome::kFailed);
  EXPECT_THAT(reply.notes,
              ElementsAre("Nothing is being downloaded; `pause N` keeps an item waiting."));
  EXPECT_THAT(log_.lines(), testing::IsEmpty());
}

TEST_F(QueueServiceTest, WithoutAFailureThereIsNothingToRetry) {
  fake_.module.put("http://h/a.avi", DownloadStatusQueued);
  EXPECT_THAT(ask(Action::kRetry).results, ElementsAre("No item has failed."));
}

TEST_F(QueueServiceTest, APausedItemIsPassedOverUntilItIsResumed) {
  fake_.session().start();
  DownloadItem& item = fake_.module.put("http://h/a.avi", DownloadStatusDownloading);
  const std::string update = call("updateStatus", item);
  EXPECT_THAT(ask(Action::kPause, 1).results, ElementsAre("Paused: film."));
  std::vector<std::string> lines = log_.lines();
  lines.resize(3);  // the item, which keeps its status here, is held again afterwards
  EXPECT_THAT(lines, ElementsAre("manager.pause", update + " 5", "manager.resume"));
  item.setStatus(DownloadStatusStopped);
  EXPECT_EQ(ask(Action::kPause, 1).outcome, Outcome::kFailed);
  EXPECT_THAT(ask(Action::kResume, 1).results, ElementsAre("Resumed: film."));
  EXPECT_EQ(log_.lines().back(), update + " 1");
}

TEST_F(QueueServiceTest, AnItemThatTheManagerQueuesAgainStaysPaused) {
  DownloadItem& item = fake_.module.put("http://h/a.avi", DownloadStatusStopped);
  service();
  item.setStatus(DownloadStatusQueued);
  service().update();
  EXPECT_THAT(log_.lines(), ElementsAre(call("updateStatus", item) + " 5"));
  EXPECT_THAT(events_, IsEmpty());
  ask(Action::kResume);
  service().update();
  EXPECT_EQ(log_.lines("manager.updateStatus").size(), 1u);
}

TEST_F(QueueServiceTest, APausedItemThatIsQueuedForAMomentGoesOnToo) {
  DownloadItem& item = fake_.module.put("http://h/a.avi", DownloadStatusStopped);
  service();
  item.setStatus(DownloadStatusQueued);
  add("http://h/a.avi");
  EXPECT_FALSE(fake_.session().view().isKeptStopped(item.getId()));
}

TEST_F(QueueServiceTest, AnAddedAddressIsLeftToBeFetched) {
  const Reply reply = add("http://h/a.avi");
  EXPECT_EQ(reply.outcome, Outcome::kDone);
  ASSERT_EQ(reply.items.size(), 1u);
  EXPECT_EQ(reply.items[0].url, "http://h/a.avi");
}

TEST_F(QueueServiceTest, ARefusedInputIsNamedWithItsReason) {
  const Reply reply = add("http://h/a.txt");
  EXPECT_EQ(reply.outcome, Outcome::kWrongUse);
  ASSERT_EQ(reply.refused.size(), 1u);
  EXPECT_EQ(reply.refused[0].reason.code(), "unsupported_type");
}

TEST_F(QueueServiceTest, AnAddressThatWaitsIsNotAddedTwice) {
  const DownloadItem& item = fake_.module.put("http://h/a.avi");
  const Reply reply = add("http://h/a.avi");
  EXPECT_THAT(log_.lines("manager.add"), IsEmpty());
  ASSERT_EQ(reply.items.size(), 1u);
  EXPECT_EQ(reply.items[0].id, item.getId());
}

TEST_F(QueueServiceTest, AFilmThatIsThereIsNotFetchedAgain) {
  putFilm(DownloadStatusCompleted);
  fake_.folder.write("a.avi", "film");
  const Reply reply = add("http://h/a.avi");
  EXPECT_THAT(log_.lines(), IsEmpty());
  EXPECT_THAT(reply.items, IsEmpty());
  EXPECT_THAT(reply.results, ElementsAre(HasSubstr("http://h/a.avi is already there: ")));
}

TEST_F(QueueServiceTest, AChecksumOfAFilmThatIsThereIsSaidNotToBeCompared) {
  putFilm(DownloadStatusCompleted);
  fake_.folder.write("a.avi", "film");
  Request request{.action = Action::kAdd, .inputs = {"http://h/a.avi"}};
  request.options.sha256 = std::string(64, '0');
  EXPECT_THAT(service().handle(request).notes,
              ElementsAre(HasSubstr("; its checksum was not compared: --again fetches")));
}

TEST_F(QueueServiceTest, AFilmThatIsGoneIsFetchedAnew) {
  const DownloadItem& item = putFilm(DownloadStatusCompleted);
  add("http://h/a.avi");
  EXPECT_EQ(log_.lines().front(), call("remove", item));
  EXPECT_EQ(log_.lines("manager.add").size(), 1u);
}

TEST_F(QueueServiceTest, AFilmThatIsThereIsFetchedAgainOnDemand) {
  putFilm(DownloadStatusCompleted);
  fake_.folder.write("a.avi", "film");
  service().handle({.action = Action::kAdd, .inputs = {"http://h/a.avi"}, .again = true});
  EXPECT_EQ(log_.lines("manager.add").size(), 1u);
}

TEST_F(QueueServiceTest, AFilmIsNamedWhileNothingIsTransferred) {
  service().handle({.action = Action::kAdd, .inputs = {"http://h/a.avi"}, .name = "b.avi"});
  const std::string path = (fake_.folder / "films/b.avi").string();
  const std::vector<std::string> lines = log_.lines();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[1], "manager.pause");
  EXPECT_EQ(lines[2], call("updatePath", *fake_.module.all().back()) + " " + path);
  EXPECT_EQ(lines[3], "manager.resume");
}

TEST_F(QueueServiceTest, AFailedAddressIsRetried) {
  const DownloadItem& item = putFilm(DownloadStatusFailed);
  add("http://h/a.avi");
  EXPECT_THAT(log_.lines(), ElementsAre(call("updateStatus", item) + " 1"));
}

TEST_F(QueueServiceTest, AFilmGoesWithItsItemOnDemand) {
  putFilm(DownloadStatusCompleted);
  const std::filesystem::path film = fake_.folder.write("a.avi", "film");
  const std::filesystem::path rights = fake_.folder.write("a.avi.rights", "rights");
  EXPECT_THAT(ask(Action::kRemove, 1).results, ElementsAre("Removed: film."));
  EXPECT_TRUE(std::filesystem::exists(film));
  const Request withFilm{.action = Action::kRemove, .position = 1, .withFilm = true};
  EXPECT_THAT(service().handle(withFilm).results,
              ElementsAre("Removed: film; " + film.string() + " was deleted."));
  EXPECT_FALSE(std::filesystem::exists(film));
  EXPECT_FALSE(std::filesystem::exists(rights));
  EXPECT_THAT(service().handle(withFilm).results, ElementsAre("Removed: film; it had no film."));
}

TEST_F(QueueServiceTest, WhatIsLeftOverIsNamedThenDeleted) {
  const std::filesystem::path left = filesOf("http://h/removed.avi").bytes();
  support::writeFile(left, "0123456789");
  const Reply before = service().handle({.action = Action::kClean, .dryRun = true});
  EXPECT_THAT(before.results, ElementsAre(HasSubstr("Would delete what is left of ")));
  EXPECT_TRUE(std::filesystem::exists(left));
  EXPECT_THAT(ask(Action::kClean).results, ElementsAre(HasSubstr("Deleted what was left of ")));
  EXPECT_FALSE(std::filesystem::exists(left));
  EXPECT_THAT(ask(Action::kClean).results, ElementsAre("Nothing is left over."));
}

TEST_F(QueueServiceTest, WhatATransferHasStillIsNotSaidToBeDeleted) {
  int error = 0;
  const auto part = transfers::Part::claim(filesOf("http://h/removed.avi"), error);
  ASSERT_NE(part, nullptr);
  EXPECT_THAT(ask(Action::kClean).results, ElementsAre("Nothing is left over."));
}

TEST_F(QueueServiceTest, OptionsOfATicketAreForItsFilmsThatWaitAlready) {
  fake_.module.put("http://h/a.avi");
  const std::string ticket =
      fake_.folder.write("a.tix", "TixVeskVersion=1.0\nstart\nurl=http://h/a.avi\nend\n");
  const auto options = [this] { return FilmOptionsFile(fake_.session().places().data).all(); };
  add(ticket);
  EXPECT_THAT(options(), IsEmpty());
  service().handle({.action = Action::kAdd, .inputs = {ticket}, .options = {.tries = 3}});
  ASSERT_THAT(options(), testing::SizeIs(1));
  EXPECT_EQ(options().at("http://h/a.avi").tries, 3u);
}

TEST_F(QueueServiceTest, AnItemThatIsNotCompleteTakesNoFilmAlong) {
  const std::filesystem::path film = fake_.folder.write("a.avi", "another one");
  for (const DownloadStatusEnumType status :
       {DownloadStatusQueued, DownloadStatusStopped, DownloadStatusFailed}) {
    putFilm(status);
    const Request withFilm{.action = Action::kRemove, .position = 1, .withFilm = true};
    EXPECT_THAT(service().handle(withFilm).results, ElementsAre("Removed: film; it had no film."));
    EXPECT_TRUE(std::filesystem::exists(film));
  }
}

}  // namespace
}  // namespace playerx::session
