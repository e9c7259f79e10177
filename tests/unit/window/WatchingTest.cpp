#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/WindowMemory.h"
#include "playerx/window/playback/Watching.h"
#include "tests/unit/window/FakePlayer.h"
#include "tests/unit/window/Films.h"

namespace playerx::window {
namespace {

class WatchingTest : public testing::Test {
 protected:
  static Film half(FilmId id) {
    Film half = arriving(id, 50);
    half.partialPath = QStringLiteral("/partial/%1").arg(id);
    return half;
  }

  void change(const Film& film) {
    QueueUpdate update;
    update.films = {film};
    films_.apply(update);
  }

  QTemporaryDir folder_;
  WindowMemory memory_{folder_.filePath(QStringLiteral("w.ini"))};
  FilmModel films_;
  FakePlayer player_;
  std::unique_ptr<QWidget> picture_{player_.picture()};
  Watching watching_{films_, &player_, memory_};
};

TEST_F(WatchingTest, AFinishedFilmIsPlayedFromItsFile) {
  films_.apply(queueOf({film(1, FilmState::kDone)}));
  EXPECT_TRUE(watching_.play(1));
  EXPECT_EQ(player_.source().file, QStringLiteral("/films/1.avi"));
  EXPECT_TRUE(player_.source().isComplete);
}

TEST_F(WatchingTest, AnArrivingFilmIsPlayedFromThePartThatIsThere) {
  films_.apply(queueOf({half(1)}));
  EXPECT_TRUE(watching_.play(1));
  EXPECT_EQ(player_.source().file, QStringLiteral("/partial/1"));
  EXPECT_EQ(player_.source().total, 700'000'000u);
  EXPECT_FALSE(player_.source().isComplete);
}

TEST_F(WatchingTest, AFilmOfWhichTooLittleIsThereIsNotPlayed) {
  films_.apply(queueOf({arriving(1, 4)}));
  EXPECT_FALSE(watching_.play(1));
  EXPECT_FALSE(watching_.play(99));
  EXPECT_TRUE(player_.take().isEmpty());
}

TEST_F(WatchingTest, ThePlayerIsToldThatTheFilmGrowsAndEnds) {
  films_.apply(queueOf({half(1)}));
  watching_.play(1);
  player_.take();
  Film more = half(1);
  more.percent = 60;
  change(more);
  EXPECT_EQ(player_.take(), QStringList({"grew"}));
  change(film(1, FilmState::kDone));
  EXPECT_EQ(player_.take(), QStringList({"ended"}));
  change(half(1));
  EXPECT_TRUE(player_.take().isEmpty()) << "what is complete stays so";
}

TEST_F(WatchingTest, AFilmThatIsRemovedWhileItArrivesEnds) {
  films_.apply(queueOf({half(1)}));
  watching_.play(1);
  player_.take();
  films_.apply(orderOf({}));
  EXPECT_EQ(player_.take(), QStringList({"ended"}));
}

TEST_F(WatchingTest, AnAddressThatIsArrivingIsNotFetchedOnceMore) {
  films_.apply(queueOf({half(1)}));
  watching_.play(half(1).address);
  EXPECT_EQ(player_.take(), QStringList({"open /partial/1"}));
  watching_.play(QStringLiteral("https://elsewhere.example/x.avi"));
  EXPECT_EQ(player_.take(), QStringList({"open https://elsewhere.example/x.avi"}));
}

TEST_F(WatchingTest, AFilmIsGoneOnWithWhereItWasLeft) {
  films_.apply(queueOf({film(1, FilmState::kDone), film(2, FilmState::kDone)}));
  watching_.play(1);
  player_.show(playing(43));
  watching_.play(2);
  EXPECT_EQ(player_.source().startAt, 0);
  watching_.play(1);
  EXPECT_EQ(player_.source().startAt, 40) << "in steps of five seconds";
}

TEST_F(WatchingTest, AFilmThatWasSeenToTheEndBeginsAnew) {
  films_.apply(queueOf({film(1, FilmState::kDone)}));
  watching_.play(1);
  player_.show(playing(50));
  player_.show(playing(95));
  watching_.play(1);
  EXPECT_EQ(player_.source().startAt, 0);
}

}  // namespace
}  // namespace playerx::window
