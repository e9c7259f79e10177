#include <gtest/gtest.h>

#include <QSignalSpy>

#include "playerx/window/actions/PendingRemoval.h"
#include "tests/unit/window/Films.h"
#include "tests/unit/window/RecordingQueue.h"

namespace playerx::window {
namespace {

class PendingRemovalTest : public testing::Test {
 protected:
  QSet<FilmId> hidden() const { return hidden_.last().at(0).value<QSet<FilmId>>(); }

  RecordingQueue queue_;
  PendingRemoval removal_{queue_};
  QSignalSpy hidden_{&removal_, &PendingRemoval::hiddenChanged};
};

TEST_F(PendingRemovalTest, HidesAtOnceStopsWhatIsUnfinishedAndRemovesLater) {
  removal_.begin({arriving(1, 40), film(2, FilmState::kDone), film(3, FilmState::kStopped)}, false);
  EXPECT_EQ(hidden(), QSet<FilmId>({1, 2, 3}));
  EXPECT_EQ(queue_.take(), QStringList({"stop 1"}));
  EXPECT_TRUE(removal_.canUndo());
  removal_.commit();
  EXPECT_EQ(queue_.take(), QStringList({"remove 1 2 3"}));
  EXPECT_FALSE(removal_.canUndo());
  EXPECT_EQ(hidden(), QSet<FilmId>({1, 2, 3})) << "they leave the queue only now";
}

TEST_F(PendingRemovalTest, UndoBringsBackWhatWasThere) {
  removal_.begin({arriving(1, 40), film(3, FilmState::kStopped)}, false);
  queue_.take();
  removal_.undo();
  EXPECT_TRUE(hidden().isEmpty());
  EXPECT_EQ(queue_.take(), QStringList({"goOn 1"})) << "film 3 had been stopped before";
}

TEST_F(PendingRemovalTest, ANewRemovalMakesTheEarlierOneFinal) {
  removal_.begin({film(1, FilmState::kDone)}, false);
  removal_.begin({film(2, FilmState::kDone)}, true);
  EXPECT_EQ(queue_.take(), QStringList({"remove 1"}));
  EXPECT_EQ(hidden(), QSet<FilmId>({1, 2}));
  removal_.commit();
  EXPECT_EQ(queue_.take(), QStringList({"removeWithFiles 2"}));
}

TEST_F(PendingRemovalTest, RemovingNothingDoesNothing) {
  removal_.begin({}, false);
  EXPECT_FALSE(removal_.canUndo());
  removal_.commit();
  EXPECT_TRUE(queue_.take().isEmpty());
}

}  // namespace
}  // namespace playerx::window
