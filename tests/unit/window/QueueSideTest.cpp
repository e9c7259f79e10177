#include <gtest/gtest.h>

#include <future>

#include "playerx/window/queue/FilmBook.h"
#include "playerx/window/queue/SlotDesk.h"
#include "playerx/window/queue/TimeLeft.h"

namespace playerx::window {
namespace {

using std::chrono::seconds;

class TimeLeftTest : public testing::Test {
 protected:
  /// After `second` seconds, with `bytes` left at `speed`.
  std::optional<std::uint64_t> at(int second, std::uint64_t bytes, std::uint64_t speed) {
    return left_.of(bytes, speed, TimeLeft::Clock::time_point() + seconds(second));
  }

  TimeLeft left_;
};

TEST_F(TimeLeftTest, CountsDownWhileTheEstimateWavers) {
  EXPECT_EQ(at(0, 1000, 10), 100u);
  EXPECT_EQ(at(1, 990, 9), 99u);
  EXPECT_EQ(at(2, 980, 11), 98u);
}

TEST_F(TimeLeftTest, FollowsAnEstimateThatHasClearlyChanged) {
  EXPECT_EQ(at(0, 1000, 10), 100u);
  EXPECT_EQ(at(1, 990, 30), 33u);
}

TEST_F(TimeLeftTest, IsUnknownWithoutSpeedOrBeyondAMonth) {
  EXPECT_EQ(at(0, 1000, 0), std::nullopt);
  EXPECT_EQ(at(0, 1'000'000'000'000, 1), std::nullopt);
}

TEST_F(TimeLeftTest, IsNeverZeroWhileBytesAreMissing) { EXPECT_EQ(at(0, 1, 1'000'000), 1u); }

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

  std::optional<QueueUpdate> update(const std::vector<model::ItemState>& queue, int second = 0) {
    return book_.update(queue, false, FilmBook::Clock::time_point() + seconds(second));
  }

  std::optional<TransferReport> transfer_;
  FilmBook book_{[this](const std::string&) { return transfer_; }};
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

TEST_F(FilmBookTest, NumbersOfARunningFilmComeFromItsTransfer) {
  transfer_.emplace();
  transfer_->arrived = 300;
  transfer_->total = 1000;
  transfer_->partialPath = "/partial/a.part";
  update({item(1, DownloadStatusDownloading)}, 0);
  transfer_->arrived = 400;
  const auto second = update({item(1, DownloadStatusDownloading)}, 1);
  const Film& film = second->films.first();
  EXPECT_EQ(film.arrived, 400u);
  EXPECT_EQ(film.bytesPerSecond, 100u);
  EXPECT_EQ(film.secondsLeft, 6u);
  EXPECT_TRUE(film.isPlayable);
  EXPECT_EQ(film.partialPath, QStringLiteral("/partial/a.part"));
}

TEST_F(FilmBookTest, AFilmIsPlayableFromAFewPercentOn) {
  transfer_.emplace();
  transfer_->partialPath = "/partial/a.part";
  transfer_->arrived = 49;
  EXPECT_FALSE(update({item(1, DownloadStatusDownloading)})->films.first().isPlayable);
  transfer_->arrived = 50;
  EXPECT_TRUE(update({item(1, DownloadStatusDownloading)}, 1)->films.first().isPlayable);
}

TEST_F(FilmBookTest, AFailureKeepsItsReasonUntilItIsTriedAgain) {
  update({item(1, DownloadStatusFailed)});
  book_.explain(1, reasons::explain(reasons::reasonOfStatus(404), {.host = "films.example"}));
  const auto failed = update({item(1, DownloadStatusFailed)});
  ASSERT_TRUE(failed);
  EXPECT_EQ(failed->films.first().failure.code, QStringLiteral("http_404"));
  EXPECT_FALSE(failed->films.first().failure.sentence.isEmpty());
  EXPECT_EQ(update({item(1, DownloadStatusQueued)})->films.first().failure, FilmFailure());
}

TEST_F(FilmBookTest, AFilmThatFinishesNowIsDatedAndOneThatWasDoneIsNot) {
  EXPECT_FALSE(update({item(1, DownloadStatusCompleted), item(2, DownloadStatusDownloading)})
                   ->films.first()
                   .finishedAt.isValid());
  EXPECT_TRUE(update({item(1, DownloadStatusCompleted), item(2, DownloadStatusCompleted)})
                  ->films.first()
                  .finishedAt.isValid());
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
