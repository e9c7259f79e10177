#include <QCheckBox>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>

#include "playerx/window/dialogs/AddAddressesDialog.h"
#include "playerx/window/dialogs/PreferencesDialog.h"
#include "playerx/window/playback/MiniPlayer.h"
#include "playerx/window/playback/Watching.h"
#include "playerx/window/playback/WatchingPage.h"
#include "playerx/window/shell/FilterBar.h"
#include "playerx/window/shell/MainWindow.h"
#include "tests/unit/window/PartOf.h"
#include "tests/unit/window/WindowFixture.h"

namespace playerx::window {
namespace {

class MainWindowTest : public WindowTest {
 protected:
  template <class Dialog>
  Dialog* dialog() {
    for (auto* const each : window_.findChildren<Dialog*>()) {
      if (each->isVisible()) return each;
    }
    return nullptr;
  }
};

TEST_F(MainWindowTest, KeysDoTheirWorkOnTheSelectedFilms) {
  queue({arriving(1, 40), film(2), film(3), failed(4, {}, {}), film(5, FilmState::kDone)});
  struct Case {
    QList<FilmId> films;
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    const char* call;
  };
  const QList<Case> cases = {
      {{2}, Qt::Key_Up, Qt::ControlModifier, "moveUp 2"},
      {{2}, Qt::Key_Down, Qt::ControlModifier, "moveDown 2"},
      {{2}, Qt::Key_PageUp, Qt::ControlModifier, "moveToTop 2"},
      {{2}, Qt::Key_PageDown, Qt::ControlModifier, "moveToBottom 2"},
      {{2, 3}, Qt::Key_Up, Qt::ControlModifier, "moveUp 2 3"},
      {{1}, Qt::Key_Space, Qt::NoModifier, "stop 1"},
      {{4}, Qt::Key_R, Qt::ControlModifier, "retry 4"},
      {{5}, Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier, "retry 4"},
      {{}, Qt::Key_P, Qt::ControlModifier, "pauseAll"},
  };
  for (const Case& each : cases) {
    select(each.films);
    press(each.key, each.modifiers);
    EXPECT_EQ(queue_.take(), QStringList({QString::fromLatin1(each.call)}));
  }
}

TEST_F(MainWindowTest, SpaceGoesOnWithAStoppedFilm) {
  queue({film(1, FilmState::kStopped)});
  select({1});
  press(Qt::Key_Space);
  EXPECT_EQ(queue_.take(), QStringList({"goOn 1"}));
}

TEST_F(MainWindowTest, APausedQueueGoesOnWithTheSameKey) {
  queue({film(1, FilmState::kPaused)}, true);
  select({1});
  press(Qt::Key_P, Qt::ControlModifier);
  EXPECT_EQ(queue_.take(), QStringList({"resumeAll"}));
}

TEST_F(MainWindowTest, RemovedFilmsCanBeHadBack) {
  queue({film(1, FilmState::kDone), film(2, FilmState::kDone)});
  select({1});
  press(Qt::Key_Delete);
  EXPECT_EQ(view().model()->rowCount(), 1);
  EXPECT_EQ(strip().text(), QStringLiteral("1 film(s) removed."));
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(view().model()->rowCount(), 2);
  EXPECT_TRUE(queue_.take().isEmpty());
  EXPECT_EQ(strip().text(), QString());
}

TEST_F(MainWindowTest, ClosingMakesARemovalFinal) {
  queue({film(1, FilmState::kDone)});
  select({1});
  press(Qt::Key_Delete);
  window_.close();
  EXPECT_EQ(queue_.take(), QStringList({"remove 1"}));
}

TEST_F(MainWindowTest, ClosingWhileFilmsArriveAsksOnceAndRemembers) {
  queue({arriving(1, 40)});
  EXPECT_FALSE(window_.close());
  auto* const box = dialog<QMessageBox>();
  ASSERT_NE(box, nullptr);
  box->checkBox()->setChecked(true);
  QSignalSpy closed(&window_, &MainWindow::closed);
  for (QAbstractButton* const button : box->buttons()) {
    if (button->text() == QStringLiteral("&Quit")) button->click();
  }
  EXPECT_EQ(closed.size(), 1);
  EXPECT_EQ(memory_.preferences().closing, WindowPreferences::kQuit);
}

TEST_F(MainWindowTest, ClosingAsksNothingWhenNothingArrives) {
  queue({film(1, FilmState::kDone), film(2)});
  EXPECT_TRUE(window_.close());
}

TEST_F(MainWindowTest, AnOrderToEndAsksNothing) {
  queue({arriving(1, 40)});
  QSignalSpy closed(&window_, &MainWindow::closed);
  window_.quit();
  EXPECT_EQ(closed.size(), 1);
}

TEST_F(MainWindowTest, AFilmPlaysByItselfWhenTheUserWantsThat) {
  WindowPreferences preferences;
  preferences.playsAutomatically = true;
  memory_.keepPreferences(preferences);
  queue({arriving(1, 4)});
  Film enough = arriving(1, 5);
  enough.partialPath = QStringLiteral("/partial/1.part");
  queue({enough});
  EXPECT_EQ(player_.take(), QStringList({"open /partial/1.part"}));
}

TEST_F(MainWindowTest, AFinishedFilmIsShownInItsFolder) {
  queue({film(1, FilmState::kDone)});
  select({1});
  desktop_.take();
  press(Qt::Key_L, Qt::ControlModifier);
  EXPECT_EQ(desktop_.take(), QStringList({"folder /films/1.avi"}));
}

TEST_F(MainWindowTest, TheFilmThatPlaysKeepsASmallBarInTheList) {
  queue({film(1, FilmState::kDone)});
  partOf<FilmCommands>(window_).carryOut(Verb::kPlay, {1});
  auto* const bar = window_.findChild<MiniPlayer*>();
  EXPECT_FALSE(bar->isVisible());
  window_.showDownloads();
  EXPECT_TRUE(bar->isVisible());
  player_.close();
  EXPECT_FALSE(bar->isVisible());
}

TEST_F(MainWindowTest, DeletingAFilmFromTheDiskAsksFirst) {
  queue({film(1, FilmState::kDone)});
  select({1});
  press(Qt::Key_Delete, Qt::ShiftModifier);
  auto* const box = dialog<QMessageBox>();
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->text(), QStringLiteral("Delete “Film 1” from the disk?"));
  EXPECT_EQ(view().model()->rowCount(), 1);
  for (QAbstractButton* const button : box->buttons()) {
    if (box->buttonRole(button) == QMessageBox::DestructiveRole) button->click();
  }
  EXPECT_EQ(view().model()->rowCount(), 0);
  partOf<FilmCommands>(window_).finish();
  EXPECT_EQ(queue_.take(), QStringList({"removeWithFiles 1"}));
}

TEST_F(MainWindowTest, ClearingDropsWhatIsDoneAndNothingElse) {
  queue({arriving(1, 40), film(2, FilmState::kDone), failed(3, {}, {}), film(4, FilmState::kDone)});
  action(Verb::kClearDone).trigger();
  EXPECT_EQ(view().model()->rowCount(), 2);
  partOf<FilmCommands>(window_).finish();
  EXPECT_EQ(queue_.take(), QStringList({"remove 2 4"}));
}

TEST_F(MainWindowTest, AddressesThatAreEnteredAreQueued) {
  press(Qt::Key_N, Qt::ControlModifier);
  auto* const add = dialog<AddAddressesDialog>();
  ASSERT_NE(add, nullptr);
  add->setText(QStringLiteral("https://a.example/1.avi\nhttps://a.example/2.avi"));
  add->accept();
  EXPECT_EQ(queue_.take(), QStringList({"add https://a.example/1.avi https://a.example/2.avi"}));
}

TEST_F(MainWindowTest, TheClipboardIsOfferedWhenItHoldsAddresses) {
  QApplication::clipboard()->setText(QStringLiteral("https://a.example/1.avi"));
  press(Qt::Key_N, Qt::ControlModifier);
  ASSERT_NE(dialog<AddAddressesDialog>(), nullptr);
  EXPECT_EQ(dialog<AddAddressesDialog>()->inputs(), QStringList({"https://a.example/1.avi"}));
  dialog<AddAddressesDialog>()->reject();
  EXPECT_TRUE(queue_.take().isEmpty());
  EXPECT_TRUE(action(Verb::kPaste).isEnabled());
  action(Verb::kPaste).trigger();
  EXPECT_EQ(queue_.take(), QStringList({"add https://a.example/1.avi"}));
  QApplication::clipboard()->clear();
  EXPECT_FALSE(action(Verb::kPaste).isEnabled());
}

/// A text that counts how often it is fetched.
class CountedText : public QMimeData {
 public:
  explicit CountedText(int& count) : count_(count) {}

 protected:
  bool hasFormat(const QString& type) const override { return type == QLatin1String("text/plain"); }
  QStringList formats() const override { return {QStringLiteral("text/plain")}; }
  QVariant retrieveData(const QString&, QMetaType) const override {
    ++count_;
    return QStringLiteral("https://a.example/1.avi");
  }

 private:
  int& count_;
};

TEST_F(MainWindowTest, TheClipboardIsFetchedOnlyWhenItChanges) {
  int count = 0;
  QApplication::clipboard()->setMimeData(new CountedText(count));
  EXPECT_TRUE(action(Verb::kPaste).isEnabled());
  const int once = count;
  queue({film(1), film(2)});
  select({1});
  select({2});
  EXPECT_EQ(count, once);
  QApplication::clipboard()->clear();
}

TEST_F(MainWindowTest, TicketsAreReadBeforeTheyAreQueued) {
  window_.take({QStringLiteral("/t/good.tix"), QStringLiteral("https://a.example/1.avi")});
  EXPECT_EQ(queue_.take(), QStringList({"readTicket /t/good.tix", "add https://a.example/1.avi"}));
  TicketReport good;
  good.path = QStringLiteral("/t/good.tix");
  good.films = 2;
  Q_EMIT queue_.ticketRead(good);
  EXPECT_EQ(queue_.take(), QStringList({"add /t/good.tix"}));
}

TEST_F(MainWindowTest, ADoubtfulTicketIsQueuedOnlyWhenTheUserSaysSo) {
  TicketReport doubtful;
  doubtful.path = QStringLiteral("/t/odd.tix");
  doubtful.films = 1;
  doubtful.problem = QStringLiteral("This film has no line \"end\".");
  Q_EMIT queue_.ticketRead(doubtful);
  EXPECT_TRUE(queue_.take().isEmpty());
  EXPECT_TRUE(strip().text().contains(doubtful.problem));
  strip().findChild<QPushButton*>()->click();
  EXPECT_EQ(queue_.take(), QStringList({"add /t/odd.tix"}));
}

TEST_F(MainWindowTest, RefusedInputsAreNamedWithTheirReason) {
  InputReport report;
  report.refused = {{QStringLiteral("ftp://x/y"), QStringLiteral("unsupported_url"),
                     QStringLiteral("This is not the address of a film.")}};
  Q_EMIT queue_.inputsTaken(report);
  EXPECT_EQ(strip().text(),
            QStringLiteral("Not added: ftp://x/y — This is not the address of a film."));
}

TEST_F(MainWindowTest, FilmsThatWereAddedAreSelected) {
  queue({film(1), film(2), film(3)});
  InputReport report;
  report.films = {2, 3};
  Q_EMIT queue_.inputsTaken(report);
  EXPECT_EQ(view().selectedFilms(), QList<FilmId>({2, 3}));
}

TEST_F(MainWindowTest, TheFilterTakesTheKeysAndGivesThemBack) {
  queue({film(1), film(2)});
  press(Qt::Key_F, Qt::ControlModifier);
  auto* const words = qobject_cast<QLineEdit*>(QApplication::focusWidget());
  ASSERT_NE(words, nullptr);
  QTest::keyClicks(words, QStringLiteral("film 2"));
  EXPECT_EQ(view().model()->rowCount(), 1);
  QTest::keyClick(words, Qt::Key_Escape);
  EXPECT_EQ(view().model()->rowCount(), 2);
  EXPECT_EQ(QApplication::focusWidget(), &view());
}

TEST_F(MainWindowTest, TheFilterStandsAboveTheEndOfTheRows) {
  for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
    window_.setLayoutDirection(direction);
    QApplication::processEvents();
    const QWidget& words = *partOf<FilterBar>(window_).findChild<QLineEdit*>();
    const int left = words.mapTo(&window_, QPoint(0, 0)).x();
    const int gap = direction == Qt::RightToLeft ? left : window_.width() - left - words.width();
    EXPECT_EQ(gap, 16);
  }
}

TEST_F(MainWindowTest, FilmsThatCameBackIntoSightAreNotMovedWhileFiltered) {
  queue({film(1), film(2)});
  partOf<FilterBar>(window_).setGroup(1);
  select({1});
  EXPECT_FALSE(action(Verb::kMoveDown).isEnabled());
  partOf<FilmCommands>(window_).moveBefore({1}, 2);
  EXPECT_TRUE(queue_.take().isEmpty());
}

TEST_F(MainWindowTest, AFilmOfWhichTooLittleIsThereIsAskedForFromTheQueue) {
  queue({arriving(1, 2)});
  partOf<FilmCommands>(window_).carryOut(Verb::kPlay, {1});
  EXPECT_EQ(queue_.take(), QStringList({"play 1"}));
  EXPECT_TRUE(player_.take().isEmpty());
}

TEST_F(MainWindowTest, ReturnPlaysTheSelectedFilmAndEscapeGoesBack) {
  queue({film(1, FilmState::kDone)});
  select({1});
  press(Qt::Key_Return);
  EXPECT_EQ(player_.take(), QStringList({"open /films/1.avi"}));
  EXPECT_TRUE(partOf<WatchingPage>(window_).isVisible());
  press(Qt::Key_Escape);
  EXPECT_FALSE(partOf<WatchingPage>(window_).isVisible());
}

TEST_F(MainWindowTest, WhatTheQueueWantsPlayedIsPlayedFromItsFile) {
  Film half = arriving(1, 50);
  half.partialPath = QStringLiteral("/partial/1.part");
  queue({half});
  Q_EMIT queue_.playRequested(0, half.address);
  EXPECT_EQ(player_.take(), QStringList({"open /partial/1.part"}));
}

TEST_F(MainWindowTest, ThePreferencesAreThoseOfTheQueue) {
  QueuePreferences preferences;
  preferences.mediaFolder = QStringLiteral("/films");
  Q_EMIT queue_.preferencesRead(preferences);
  action(Verb::kPreferences).trigger();
  auto* const dialog = this->dialog<PreferencesDialog>();
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->queuePreferences(), preferences);
  for (auto* const edit : dialog->findChildren<QLineEdit*>()) {
    if (edit->accessibleName() == QStringLiteral("Folder for films")) {
      edit->setText(QStringLiteral("/videos"));
    }
  }
  dialog->accept();
  EXPECT_EQ(queue_.take(), QStringList({"setPreferences /videos"}));
}

TEST_F(MainWindowTest, SizeAndGroupAreRemembered) {
  window_.resize(777, 555);
  partOf<FilterBar>(window_).setGroup(2);
  window_.close();
  MainWindow next({queue_, memory_, desktop_, nullptr});
  EXPECT_EQ(next.size(), QSize(777, 555));
  EXPECT_EQ(partOf<FilterBar>(next).group(), 2);
}

TEST_F(MainWindowTest, ASlotIsChosenInTheStrip) {
  Q_EMIT queue_.slotAsked({5, QStringLiteral("Protected")});
  EXPECT_TRUE(strip().text().contains(QStringLiteral("Protected")));
  strip().findChildren<QPushButton*>().at(0)->click();
  EXPECT_EQ(queue_.take(), QStringList({"chooseSlot 5 0"}));
}

TEST_F(MainWindowTest, AQuestionForASlotThatIsClosedIsDeclined) {
  Q_EMIT queue_.slotAsked({5, QStringLiteral("Protected")});
  strip().end(QStringLiteral("slot:5"));
  EXPECT_EQ(queue_.take(), QStringList({"chooseSlot 5 -1"}));
}

TEST_F(MainWindowTest, TooLittleRoomIsToldWithAWayOut) {
  Notice notice;
  notice.kind = Notice::kNoSpace;
  notice.text = QStringLiteral("There is too little free space.");
  notice.film = 1;
  queue({failed(1, QStringLiteral("no_space"), {})});
  Q_EMIT queue_.noticed(notice);
  EXPECT_EQ(strip().text(), notice.text);
  strip().findChildren<QPushButton*>().at(1)->click();
  EXPECT_EQ(queue_.take(), QStringList({"retry 1"}));
}

}  // namespace
}  // namespace playerx::window
