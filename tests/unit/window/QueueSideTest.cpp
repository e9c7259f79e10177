#include <gtest/gtest.h>

#include <future>

#include "playerx/window/queue/FilmBook.h"
#include "playerx/window/queue/SlotDesk.h"

namespace playerx::window {
namespace {

using session::QueueEvent;

class FilmBookTest : public testing::Test {
 protected:
  static model::ItemState item(FilmId id, DownloadStatusEnumType status) {
    model::ItemState item;
    item.id = id;
    item.title = "Film";
    item.url = "http://films.example/a.avi";
    item.status = status;
    item.size = 1000;
    item.percent = 20;
    return item;
  }

  std::optional<QueueUpdate> update(const std::vector<model::ItemState>& queue) {
    return book_.update(queue, false);
  }

  /// The film that arrives, after `arrived` of its 1000 bytes.
  Film measured(std::uint64_t arrived) {
    const model::ItemState film = item(1, DownloadStatusDownloading);
    QueueEvent event{QueueEvent::Kind::kChanged, film};
    event.progress.arrived = arrived;
    event.progress.bytesPerSecond = 100;
    event.progress.secondsLeft = 6;
    event.progress.partialPath = "/partial/a.part";
    book_.note(event);
    return update({film})->films.first();
  }

  std::optional<reasons::Explanation> known_;
  FilmBook book_{[this](const model::ItemState&) { return known_; }, 0};
};

TEST_F(FilmBookTest, TellsAllAtFirstAndThenWhatChanged) {
  const auto first = update({item(1, DownloadStatusQueued), item(2, DownloadStatusQueued)});
  ASSERT_TRUE(first);
  EXPECT_EQ(first->films.size(), 2);
  EXPECT_EQ(first->order, QList<FilmId>({1, 2}));
  EXPECT_FALSE(update({item(1, DownloadStatusQueued), item(2, DownloadStatusQueued)}));
  const auto third = update({item(1, DownloadStatusStopped), item(2, DownloadStatusQueued)});
  ASSERT_EQ(third->films.size(), 1);
  EXPECT_EQ(third->films.first().state, FilmState::kStopped);
  EXPECT_FALSE(third->order);
}

TEST_F(FilmBookTest, AnEmptyQueueIsToldOnce) {
  EXPECT_EQ(update({})->order, QList<FilmId>());
  EXPECT_FALSE(update({}));
}

TEST_F(FilmBookTest, AFilmThatLeavesIsForgotten) {
  update({item(1, DownloadStatusQueued), item(2, DownloadStatusQueued)});
  EXPECT_EQ(update({item(2, DownloadStatusQueued)})->order, QList<FilmId>({2}));
  const auto back = update({item(1, DownloadStatusQueued), item(2, DownloadStatusQueued)});
  EXPECT_EQ(back->films.size(), 1);
}

TEST_F(FilmBookTest, ARunningFilmHasTheNumbersOfItsProgress) {
  const Film film = measured(400);
  EXPECT_EQ(film.arrived, 400u);
  EXPECT_EQ(film.bytesPerSecond, 100u);
  EXPECT_EQ(film.secondsLeft, 6u);
  EXPECT_EQ(film.partialPath, QStringLiteral("/partial/a.part"));
}

TEST_F(FilmBookTest, AFilmIsPlayableFromAFewPercentOn) {
  EXPECT_FALSE(measured(49).isPlayable);
  EXPECT_TRUE(measured(50).isPlayable);
}

TEST_F(FilmBookTest, AFailureKeepsItsReasonUntilItIsTriedAgain) {
  update({item(1, DownloadStatusFailed)});
  QueueEvent event{QueueEvent::Kind::kFailed, item(1, DownloadStatusFailed)};
  event.reason = reasons::explain(reasons::reasonOfStatus(404), {.host = "films.example"});
  book_.note(event);
  const auto failed = update({item(1, DownloadStatusFailed)});
  ASSERT_TRUE(failed);
  EXPECT_EQ(failed->films.first().failure.code, QStringLiteral("http_404"));
  EXPECT_FALSE(failed->films.first().failure.sentence.isEmpty());
  EXPECT_EQ(update({item(1, DownloadStatusQueued)})->films.first().failure, FilmFailure());
}

TEST_F(FilmBookTest, AFilmThatFailedInAnEarlierRunHasTheReasonThatWasKept) {
  known_ = reasons::explain(reasons::reasonOfStatus(404), {.host = "films.example"});
  EXPECT_EQ(update({item(1, DownloadStatusFailed)})->films.first().failure.code,
            QStringLiteral("http_404"));
}

TEST_F(FilmBookTest, AFilmThatFinishesNowIsDatedAndOneThatWasDoneIsNot) {
  EXPECT_FALSE(update({item(1, DownloadStatusCompleted), item(2, DownloadStatusDownloading)})
                   ->films.first()
                   .finishedAt.isValid());
  EXPECT_TRUE(update({item(1, DownloadStatusCompleted), item(2, DownloadStatusCompleted)})
                  ->films.first()
                  .finishedAt.isValid());
}

TEST(FilmBookOfAnotherQueueTest, FilmsAreNumberedFromAboveTheGivenOneOn) {
  FilmBook book([](const model::ItemState&) { return std::nullopt; }, 100);
  model::ItemState item;
  item.id = 3;
  EXPECT_EQ(book.update({item}, false)->order, QList<FilmId>({103}));
  EXPECT_EQ(book.filmOf({QueueEvent::Kind::kFinished, item}), 103U);
  EXPECT_EQ(book.filmOf({.sentence = "Of no film."}), 0U);
}

TEST(FilmBookOfAnotherQueueTest, ANumberIsUsedUpWhenItsFilmHasLeft) {
  FilmBook book([](const model::ItemState&) { return std::nullopt; }, 100);
  EXPECT_EQ(book.lastId(), 100U);
  model::ItemState item;
  item.id = 3;
  book.update({item}, false);
  book.update({}, false);
  EXPECT_EQ(book.lastId(), 103U);
}

TEST(SlotDeskTest, TheAnswerReachesTheThreadThatAsked) {
  std::promise<int> number;
  SlotDesk desk([&number](const SlotQuestion& question) { number.set_value(question.number); });
  auto slot = std::async(std::launch::async, [&desk] { return desk.choose("Film"); });
  desk.answer(number.get_future().get(), 3);
  EXPECT_EQ(slot.get(), 3);
}

TEST(SlotDeskTest, ClosingDeclinesWhatIsOpenAndWhatComes) {
  std::promise<void> asked;
  SlotDesk desk([&asked](const SlotQuestion&) { asked.set_value(); });
  auto slot = std::async(std::launch::async, [&desk] { return desk.choose("Film"); });
  asked.get_future().get();
  desk.close();
  EXPECT_EQ(slot.get(), -1);
  EXPECT_EQ(desk.choose("Another"), -1);
}

}  // namespace
}  // namespace playerx::window
