#include <gtest/gtest.h>

#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include "playerx/window/playback/ControlBar.h"
#include "playerx/window/playback/SeekBar.h"
#include "playerx/window/playback/WatchingPage.h"
#include "tests/unit/window/FakePlayer.h"

namespace playerx::window {
namespace {

constexpr int kSoonMs = 20;

class WatchingPageTest : public testing::Test {
 protected:
  WatchingPageTest() {
    page_.resize(800, 500);
    page_.show();
    page_.setFocus();
    player_.show(playing());
    player_.take();
  }

  void press(Qt::Key key) { QTest::keyClick(&page_, key); }

  ControlBar& controls() { return *page_.findChild<ControlBar*>(); }

  FakePlayer player_;
  WatchingPage page_{&player_, nullptr, kSoonMs};
};

TEST_F(WatchingPageTest, KeysDoWhatPeopleExpect) {
  const QList<std::pair<Qt::Key, const char*>> cases = {
      {Qt::Key_Space, "pause"},   {Qt::Key_Left, "seek 0"},    {Qt::Key_Right, "seek 20"},
      {Qt::Key_Up, "volume 105"}, {Qt::Key_Down, "volume 95"}, {Qt::Key_M, "mute"},
  };
  for (const auto& [key, call] : cases) {
    press(key);
    EXPECT_EQ(player_.take(), QStringList({QString::fromLatin1(call)}));
  }
}

TEST_F(WatchingPageTest, AFilmThatHasEndedBeginsAnew) {
  PlaybackState ended = playing(100);
  ended.hasEnded = true;
  player_.show(ended);
  press(Qt::Key_Space);
  EXPECT_EQ(player_.take(), QStringList({"seek 0", "go on"}));
}

TEST_F(WatchingPageTest, SaysWhatIsWaitedFor) {
  PlaybackState waiting = playing(754);
  waiting.isWaiting = true;
  player_.show(waiting);
  EXPECT_EQ(page_.notice(), QStringLiteral("Waiting for the film to arrive (12:34)"));
  waiting.isLoaded = false;
  player_.show(waiting);
  EXPECT_EQ(page_.notice(), QStringLiteral("Waiting for the beginning of the film to arrive"));
  player_.show(playing());
  EXPECT_EQ(page_.notice(), QString());
}

TEST_F(WatchingPageTest, AProblemIsSaidAndHandedToTheDesktop) {
  PlaybackState problem;
  problem.isOpen = true;
  problem.problem = QStringLiteral("This file is no film that can be shown.");
  player_.show(problem);
  EXPECT_EQ(page_.notice(), problem.problem);
  QSignalSpy wanted(&page_, &WatchingPage::desktopPlayerWanted);
  auto* const button = page_.findChild<QPushButton*>();
  ASSERT_TRUE(button->isVisible());
  button->click();
  EXPECT_EQ(wanted.size(), 1);
}

TEST_F(WatchingPageTest, ControlsHideWhileTheFilmPlaysAndComeBack) {
  EXPECT_TRUE(controls().isVisible());
  EXPECT_TRUE(QTest::qWaitFor([this] { return !controls().isVisible(); }, 10'000));
  QTest::mouseMove(player_.picture(), QPoint(10, 10));
  press(Qt::Key_Up);
  EXPECT_TRUE(controls().isVisible());
}

TEST_F(WatchingPageTest, ControlsStayWhileTheFilmIsPaused) {
  PlaybackState paused = playing();
  paused.isPaused = true;
  player_.show(paused);
  // Timers go off in the order of their times, that of the controls before this one.
  QTimer later;
  QSignalSpy passed(&later, &QTimer::timeout);
  later.start(2 * kSoonMs);
  ASSERT_TRUE(passed.wait());
  EXPECT_TRUE(controls().isVisible());
}

TEST_F(WatchingPageTest, EveryControlHasAName) {
  for (const auto* const button : controls().findChildren<QToolButton*>()) {
    EXPECT_FALSE(button->text().isEmpty());
    EXPECT_FALSE(button->toolTip().isEmpty());
  }
}

TEST_F(WatchingPageTest, TracksAreChosenFromMenus) {
  PlaybackState state = playing();
  state.sounds = {{1, QStringLiteral("English")}, {2, QStringLiteral("Deutsch")}};
  state.sound = 1;
  state.subtitles = {{1, QStringLiteral("English")}};
  player_.show(state);
  QSignalSpy sounds(&controls(), &ControlBar::soundChosen);
  for (auto* const button : controls().findChildren<QToolButton*>()) {
    if (button->menu() != nullptr) button->menu()->actions().last()->trigger();
  }
  EXPECT_EQ(player_.take(), QStringList({"sound 2", "subtitle 1"}));
}

TEST(WatchingPageWithoutPlayerTest, SaysThatItWasBuiltWithoutOne) {
  WatchingPage page(nullptr);
  page.show();
  EXPECT_EQ(page.notice(), QStringLiteral("This player was built without playback of its own."));
  EXPECT_TRUE(page.findChild<QPushButton*>()->isVisible());
}

TEST(SeekBarTest, GoesNoFurtherThanHasArrived) {
  SeekBar bar;
  bar.resize(300, 24);
  bar.show();
  bar.setArrived(0.5);
  QSignalSpy chosen(&bar, &SeekBar::chosen);
  QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(280, 12));
  ASSERT_EQ(chosen.size(), 1);
  EXPECT_DOUBLE_EQ(chosen[0][0].toDouble(), 0.5);
  QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(80, 12));
  EXPECT_NEAR(chosen[1][0].toDouble(), 0.25, 0.03);
}

TEST(SeekBarTest, RunsFromRightToLeftWhereTextDoes) {
  SeekBar bar;
  bar.setLayoutDirection(Qt::RightToLeft);
  bar.resize(300, 24);
  bar.show();
  QSignalSpy chosen(&bar, &SeekBar::chosen);
  QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(280, 12));
  EXPECT_LT(chosen[0][0].toDouble(), 0.1);
}

TEST(ControlBarTest, TheTimeShowsPlaceAndLength) {
  EXPECT_EQ(timeText(playing(75)), QStringLiteral("1:15 of 1:40"));
  PlaybackState unknown = playing(75);
  unknown.duration.reset();
  EXPECT_EQ(timeText(unknown), QStringLiteral("1:15"));
}

}  // namespace
}  // namespace playerx::window
