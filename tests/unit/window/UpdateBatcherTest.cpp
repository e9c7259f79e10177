#include <gtest/gtest.h>

#include <QSignalSpy>

#include "playerx/window/model/UpdateBatcher.h"
#include "tests/unit/window/Films.h"

namespace playerx::window {
namespace {

class UpdateBatcherTest : public testing::Test {
 protected:
  QueueUpdate passedOn(int number) const { return spy_.at(number).at(0).value<QueueUpdate>(); }

  UpdateBatcher batcher_;
  QSignalSpy spy_{&batcher_, &UpdateBatcher::ready};
};

TEST_F(UpdateBatcherTest, PassesTheFirstUpdateOnAtOnce) {
  batcher_.add(queueOf({film(1)}));
  EXPECT_EQ(spy_.size(), 1);
}

TEST_F(UpdateBatcherTest, MergesWhatComesMeanwhile) {
  batcher_.add(queueOf({film(1), film(2)}));
  for (int percent = 1; percent <= 40; ++percent) {
    QueueUpdate update;
    update.films = {arriving(1, percent)};
    batcher_.add(update);
  }
  EXPECT_EQ(spy_.size(), 1);
  batcher_.flush();
  ASSERT_EQ(spy_.size(), 2);
  ASSERT_EQ(passedOn(1).films.size(), 1);
  EXPECT_EQ(passedOn(1).films.first().percent, 40);
  EXPECT_FALSE(passedOn(1).order.has_value());
}

TEST_F(UpdateBatcherTest, PassesTheRestOnByItself) {
  batcher_.add(queueOf({film(1)}));
  batcher_.add(orderOf({}));
  ASSERT_TRUE(spy_.wait());
  EXPECT_EQ(passedOn(1).order, QList<FilmId>());
}

TEST_F(UpdateBatcherTest, KeepsTheLatestOrderAndPause) {
  batcher_.add(queueOf({film(1), film(2)}));
  QueueUpdate paused = orderOf({2, 1});
  paused.isPaused = true;
  batcher_.add(orderOf({1}));
  batcher_.add(paused);
  batcher_.flush();
  EXPECT_EQ(passedOn(1).order, QList<FilmId>({2, 1}));
  EXPECT_TRUE(passedOn(1).isPaused);
}

TEST_F(UpdateBatcherTest, HasNothingToFlushWithoutUpdates) {
  batcher_.flush();
  EXPECT_EQ(spy_.size(), 0);
}

}  // namespace
}  // namespace playerx::window
