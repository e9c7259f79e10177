#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

#include "playerx/window/model/FilmFilter.h"
#include "playerx/window/view/FilmView.h"
#include "playerx/window/view/RowButtons.h"
#include "tests/unit/window/PartOf.h"
#include "tests/unit/window/WindowFixture.h"

namespace playerx::window {
namespace {

class FilmViewTest : public WindowTest {
 protected:
  QRect rowOf(FilmId film) {
    return view().visualRect(qobject_cast<FilmFilter*>(view().model())->indexOf(film));
  }

  FilmId currentFilm() { return view().currentIndex().data(FilmModel::kIdRole).toUInt(); }

  void drop(QMimeData& data, const QPoint& place) {
    const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
    QDragEnterEvent enter(place, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view().viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDragMoveEvent move(place, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view().viewport(), &move);
    QDropEvent drop(place, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view().viewport(), &drop);
  }

  QSignalSpy used_{&view(), &FilmView::buttonUsed};
};

TEST_F(FilmViewTest, RowButtonsAreReachedWithTheArrowKeys) {
  queue({failed(1, QStringLiteral("http_404"), QStringLiteral("No film."))});
  select({1});
  press(Qt::Key_Right);
  EXPECT_EQ(view().focusedButton(), 0);
  press(Qt::Key_Right);
  press(Qt::Key_Right);
  EXPECT_EQ(view().focusedButton(), 1) << "there are two";
  press(Qt::Key_Left);
  press(Qt::Key_Space);
  ASSERT_EQ(used_.size(), 1);
  EXPECT_EQ(used_[0][0].value<Verb>(), Verb::kRetry);
  EXPECT_EQ(queue_.take(), QStringList({"retry 1"}));
  EXPECT_EQ(view().focusedButton(), -1);
}

TEST_F(FilmViewTest, RowButtonsAreReachedWithTheArrowKeysFromRightToLeft) {
  window_.setLayoutDirection(Qt::RightToLeft);
  queue({film(1)});
  select({1});
  press(Qt::Key_Left);
  EXPECT_EQ(view().focusedButton(), 0);
  press(Qt::Key_Right);
  EXPECT_EQ(view().focusedButton(), -1);
}

TEST_F(FilmViewTest, AClickOnARowButtonUsesIt) {
  queue({film(1), film(2)});
  const QRect row = rowOf(2);
  const QPoint button(row.right() - 40, row.center().y() + row.height() / 5);
  QTest::mouseClick(view().viewport(), Qt::LeftButton, Qt::NoModifier, button);
  EXPECT_EQ(queue_.take(), QStringList({"stop 2"}));
  EXPECT_TRUE(view().selectedFilms().isEmpty()) << "a button does not select";
}

TEST_F(FilmViewTest, APressThatLeavesTheButtonDoesNothing) {
  queue({film(1)});
  const QRect row = rowOf(1);
  const QPoint button(row.right() - 40, row.center().y() + row.height() / 5);
  QTest::mousePress(view().viewport(), Qt::LeftButton, Qt::NoModifier, button);
  QTest::mouseRelease(view().viewport(), Qt::LeftButton, Qt::NoModifier, row.topLeft());
  EXPECT_TRUE(queue_.take().isEmpty());
}

TEST_F(FilmViewTest, ADoubleClickPlaysWhatCanBePlayed) {
  queue({film(1), film(2, FilmState::kDone)});
  QTest::mouseDClick(view().viewport(), Qt::LeftButton, Qt::NoModifier,
                     rowOf(1).topLeft() + QPoint(60, 10));
  EXPECT_TRUE(player_.take().isEmpty());
  QTest::mouseDClick(view().viewport(), Qt::LeftButton, Qt::NoModifier,
                     rowOf(2).topLeft() + QPoint(60, 10));
  EXPECT_EQ(player_.take(), QStringList({"open /films/2.avi"}));
}

TEST_F(FilmViewTest, DroppedFilmsGoWhereTheyAreDropped) {
  queue({film(1), film(2), film(3)});
  const auto dragged = [this](int row) {
    return std::unique_ptr<QMimeData>(
        partOf<FilmModel>(window_).mimeData({partOf<FilmModel>(window_).index(row)}));
  };
  drop(*dragged(2), rowOf(1).topLeft() + QPoint(30, 5));
  EXPECT_EQ(queue_.take(), QStringList({"moveBefore 3 1"}));
  drop(*dragged(0), rowOf(2).bottomLeft() + QPoint(30, -5));
  EXPECT_EQ(queue_.take(), QStringList({"moveBefore 1 3"}));
  drop(*dragged(0), rowOf(3).bottomLeft() + QPoint(30, 60));
  EXPECT_EQ(queue_.take(), QStringList({"moveBefore 1 0"}));
}

TEST_F(FilmViewTest, DroppedLinksTextsAndTicketsAreAdded) {
  queue({film(1)});
  QMimeData link;
  link.setUrls({QUrl(QStringLiteral("https://a.example/1.avi"))});
  drop(link, QPoint(5, 5));
  QMimeData text;
  text.setText(QStringLiteral("https://a.example/2.avi"));
  drop(text, QPoint(5, 5));
  QMimeData ticket;
  ticket.setUrls({QUrl::fromLocalFile(QStringLiteral("/t/one.tix"))});
  drop(ticket, QPoint(5, 5));
  EXPECT_EQ(queue_.take(), QStringList({"add https://a.example/1.avi",
                                        "add https://a.example/2.avi", "readTicket /t/one.tix"}));
}

TEST_F(FilmViewTest, SelectionAndPlaceSurviveANewOrder) {
  queue({film(1), film(2), film(3)});
  select({2});
  Q_EMIT queue_.changed(orderOf({3, 2, 1}));
  QTRY_COMPARE(partOf<FilmModel>(window_).rowOf(3), 0);
  EXPECT_EQ(view().selectedFilms(), QList<FilmId>({2}));
}

TEST_F(FilmViewTest, TheKeyboardGoesToTheNextFilmWhenOneIsRemoved) {
  queue({film(1), film(2), film(3)});
  select({2});
  press(Qt::Key_Right);
  ASSERT_EQ(view().focusedButton(), 0);
  action(Verb::kRemove).trigger();
  EXPECT_EQ(currentFilm(), 3u);
  EXPECT_EQ(view().focusedButton(), -1);
  select({3});
  action(Verb::kRemove).trigger();
  EXPECT_EQ(currentFilm(), 1u);
}

TEST_F(FilmViewTest, TheKeyboardStaysNearAFilmThatIsFilteredAway) {
  queue({film(1), film(2), film(3), film(4, FilmState::kDone), film(5, FilmState::kDone)});
  select({3});
  partOf<FilmFilter>(window_).setGroup(FilmFilter::kDone);
  EXPECT_EQ(currentFilm(), 4u);
  partOf<FilmFilter>(window_).setGroup(FilmFilter::kFailed);
  EXPECT_FALSE(view().currentIndex().isValid()) << "no film is shown";
}

TEST_F(FilmViewTest, FilmsSideBySideAreSelectedAsOneRange) {
  queue({film(1), film(2), film(3), film(4), film(5)});
  select({1, 2, 3, 5});
  EXPECT_EQ(view().selectionModel()->selection().size(), 2);
  EXPECT_EQ(view().selectedFilms(), QList<FilmId>({1, 2, 3, 5}));
}

TEST_F(FilmViewTest, EveryStateOffersWhatCanBeDone) {
  EXPECT_EQ(rowButtonsOf(film(1)), QList<Verb>({Verb::kStop}));
  EXPECT_EQ(rowButtonsOf(arriving(1, 40)), QList<Verb>({Verb::kPlay, Verb::kStop}));
  EXPECT_EQ(rowButtonsOf(film(1, FilmState::kStopped)), QList<Verb>({Verb::kGoOn}));
  EXPECT_EQ(rowButtonsOf(film(1, FilmState::kDone)),
            QList<Verb>({Verb::kPlay, Verb::kShowInFolder}));
  EXPECT_EQ(rowButtonsOf(failed(1, QStringLiteral("media_folder"), {})),
            QList<Verb>({Verb::kRetry, Verb::kOtherFolder}));
  EXPECT_EQ(rowButtonsOf(failed(1, QStringLiteral("no_space"), {})),
            QList<Verb>({Verb::kRetry, Verb::kOtherFolder}));
}

}  // namespace
}  // namespace playerx::window
