#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QSignalSpy>
#include <random>

#include "playerx/window/model/FilmModel.h"
#include "tests/unit/window/Films.h"

namespace playerx::window {
namespace {

class FilmModelTest : public testing::Test {
 protected:
  QList<FilmId> order() const {
    QList<FilmId> ids;
    for (const Film& film : films_.films()) ids.append(film.id);
    return ids;
  }

  void show(const QList<FilmId>& ids) {
    QList<Film> films;
    for (const FilmId id : ids) films.append(film(id));
    films_.apply(queueOf(films));
  }

  FilmModel films_;
  QAbstractItemModelTester tester_{&films_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(FilmModelTest, ShowsTheQueueInItsOrder) {
  show({3, 1, 2});
  EXPECT_EQ(order(), QList<FilmId>({3, 1, 2}));
  EXPECT_EQ(films_.rowOf(1), 1);
  EXPECT_EQ(films_.index(0).data().toString(), QStringLiteral("Film 3"));
  EXPECT_EQ(films_.index(1).data(FilmModel::kNumberRole).toInt(), 2);
}

TEST_F(FilmModelTest, FindsNoRowOfAFilmThatIsNotQueued) {
  show({1});
  EXPECT_EQ(films_.rowOf(2), -1);
  EXPECT_EQ(films_.film(2), nullptr);
}

TEST_F(FilmModelTest, AnnouncesNeighboursThatChangeAsOneRange) {
  show({1, 2, 3, 4, 5});
  QSignalSpy changed(&films_, &FilmModel::dataChanged);
  QueueUpdate update;
  update.films = {arriving(3, 10), arriving(2, 10), arriving(5, 10)};
  films_.apply(update);
  ASSERT_EQ(changed.size(), 2);
  EXPECT_EQ(changed[0][0].toModelIndex().row(), 1);
  EXPECT_EQ(changed[0][1].toModelIndex().row(), 2);
  EXPECT_EQ(changed[1][0].toModelIndex().row(), 4);
}

TEST_F(FilmModelTest, ManyScatteredFilmsLeaveAtOnce) {
  QList<FilmId> all, odd;
  for (FilmId id = 1; id <= 1000; ++id) {
    all << id;
    if (id % 2 != 0) odd << id;
  }
  show(all);
  const QPersistentModelIndex kept = films_.index(10);
  QSignalSpy removed(&films_, &FilmModel::rowsRemoved);
  show(odd);
  EXPECT_EQ(removed.size(), 1);
  EXPECT_EQ(order(), odd);
  EXPECT_EQ(kept.data(FilmModel::kIdRole).toUInt(), 11u);
}

TEST_F(FilmModelTest, AnnouncesNothingWhenNothingChanged) {
  show({1, 2});
  QSignalSpy changed(&films_, &FilmModel::dataChanged);
  show({1, 2});
  EXPECT_EQ(changed.size(), 0);
}

TEST_F(FilmModelTest, AnnouncesAFilmThatGoesToTheEndAsOneMove) {
  show({1, 2, 3, 4});
  QSignalSpy moved(&films_, &FilmModel::rowsMoved);
  films_.apply(orderOf({2, 3, 4, 1}));
  EXPECT_EQ(moved.size(), 1);
  EXPECT_EQ(order(), QList<FilmId>({2, 3, 4, 1}));
}

TEST_F(FilmModelTest, KeepsPersistentIndexesThroughANewOrderOfManyFilms) {
  QList<FilmId> ids;
  for (FilmId id = 1; id <= 300; ++id) ids.append(id);
  show(ids);
  const QPersistentModelIndex tenth = films_.index(9);
  std::reverse(ids.begin(), ids.end());
  films_.apply(orderOf(ids));
  EXPECT_EQ(order(), ids);
  EXPECT_EQ(tenth.data(FilmModel::kIdRole).toUInt(), 10U);
}

TEST_F(FilmModelTest, FollowsAnyChangeOfTheQueue) {
  std::mt19937 random(7);
  QList<FilmId> ids;
  FilmId next = 1;
  for (int round = 0; round < 300; ++round) {
    for (unsigned i = random() % 4; i > 0; --i) {
      ids.insert(static_cast<qsizetype>(random() % static_cast<unsigned>(ids.size() + 1)), next++);
    }
    for (unsigned i = random() % 4; i > 0 && !ids.isEmpty(); --i) {
      ids.removeAt(static_cast<qsizetype>(random() % static_cast<unsigned>(ids.size())));
    }
    if (round % 3 == 0) std::shuffle(ids.begin(), ids.end(), random);
    show(ids);
    ASSERT_EQ(films_.rowCount(), ids.size());
    for (int row = 0; row < films_.rowCount(); ++row) ASSERT_EQ(films_.rowOf(ids[row]), row);
  }
}

TEST_F(FilmModelTest, CarriesDraggedFilmsByTheirIds) {
  show({7, 8, 9});
  const std::unique_ptr<QMimeData> data(films_.mimeData({films_.index(0), films_.index(2)}));
  EXPECT_EQ(draggedFilms(*data), QList<FilmId>({7, 9}));
  EXPECT_TRUE(draggedFilms(QMimeData()).isEmpty());
}

TEST_F(FilmModelTest, TellsAScreenReaderTitleStateAndPercent) {
  films_.apply(queueOf({arriving(1, 42)}));
  EXPECT_EQ(films_.index(0).data(Qt::AccessibleTextRole).toString(),
            QStringLiteral("Film 1, Downloading, 42 percent"));
}

}  // namespace
}  // namespace playerx::window
