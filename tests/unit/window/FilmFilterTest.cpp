#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include "playerx/window/model/FilmFilter.h"
#include "playerx/window/model/FilmModel.h"
#include "tests/unit/window/Films.h"

namespace playerx::window {
namespace {

class FilmFilterTest : public testing::Test {
 protected:
  FilmFilterTest() {
    filter_.setSourceModel(&films_);
    Film road = film(1, FilmState::kDone);
    road.title = QStringLiteral("The Long Road");
    films_.apply(queueOf({road, arriving(2, 10), film(3), failed(4, {}, {})}));
  }

  QList<FilmId> shown() const {
    QList<FilmId> ids;
    for (int row = 0; row < filter_.rowCount(); ++row) {
      ids << filter_.index(row, 0).data(FilmModel::kIdRole).toUInt();
    }
    return ids;
  }

  FilmModel films_;
  FilmFilter filter_;
  QAbstractItemModelTester tester_{&filter_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(FilmFilterTest, HidesScatteredFilmsAtOnce) {
  QList<Film> films;
  for (FilmId id = 1; id <= 1000; ++id) {
    films << film(id, id % 2 == 0 ? FilmState::kDone : FilmState::kWaiting);
  }
  films_.apply(queueOf(films));
  const QPersistentModelIndex kept = filter_.indexOf(11);
  QSignalSpy removed(&filter_, &FilmFilter::rowsRemoved);
  QSignalSpy arranged(&filter_, &FilmFilter::layoutChanged);
  filter_.setGroup(FilmFilter::kUnfinished);
  EXPECT_EQ(removed.size(), 0);
  EXPECT_EQ(arranged.size(), 1);
  EXPECT_EQ(shown().size(), 500);
  EXPECT_EQ(kept.data(FilmModel::kIdRole).toUInt(), 11u);
}

TEST_F(FilmFilterTest, ShowsFilmsThatHoldEveryWordSomewhere) {
  filter_.setText(QStringLiteral("road LONG"));
  EXPECT_EQ(shown(), QList<FilmId>({1}));
  filter_.setText(QStringLiteral("films.example downloading"));
  EXPECT_EQ(shown(), QList<FilmId>({2}));
  filter_.setText(QStringLiteral("nothing such"));
  EXPECT_TRUE(shown().isEmpty());
  EXPECT_TRUE(filter_.isNarrowed());
}

TEST_F(FilmFilterTest, ShowsFilmsOfAGroup) {
  filter_.setGroup(FilmFilter::kUnfinished);
  EXPECT_EQ(shown(), QList<FilmId>({2, 3}));
  filter_.setGroup(FilmFilter::kDone);
  EXPECT_EQ(shown(), QList<FilmId>({1}));
  filter_.setGroup(FilmFilter::kFailed);
  EXPECT_EQ(shown(), QList<FilmId>({4}));
  filter_.setGroup(FilmFilter::kAll);
  EXPECT_FALSE(filter_.isNarrowed());
}

TEST_F(FilmFilterTest, LeavesOutFilmsThatAreBeingRemoved) {
  filter_.setHidden({1, 4});
  EXPECT_EQ(shown(), QList<FilmId>({2, 3}));
  EXPECT_FALSE(filter_.isNarrowed());
}

TEST_F(FilmFilterTest, FollowsFilmsThatChangeTheirState) {
  filter_.setGroup(FilmFilter::kDone);
  QueueUpdate update;
  update.films = {film(2, FilmState::kDone)};
  films_.apply(update);
  EXPECT_EQ(shown(), QList<FilmId>({1, 2}));
}

TEST_F(FilmFilterTest, FindsRowsByFilm) {
  filter_.setGroup(FilmFilter::kUnfinished);
  EXPECT_EQ(filter_.indexOf(3).row(), 1);
  EXPECT_FALSE(filter_.indexOf(1).isValid());
  EXPECT_FALSE(filter_.indexOf(99).isValid());
  EXPECT_EQ(filter_.filmAt(filter_.indexOf(3))->id, 3U);
  EXPECT_EQ(filter_.filmAt({}), nullptr);
}

}  // namespace
}  // namespace playerx::window
