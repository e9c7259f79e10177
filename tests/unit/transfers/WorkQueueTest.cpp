#include <gtest/gtest.h>

#include <vector>

#include "playerx/transfers/WorkQueue.h"
#include "tests/support/Gate.h"
#include "tests/support/WaitFor.h"

namespace playerx::transfers {
namespace {

TEST(WorkQueueTest, WorkIsDoneInTheOrderInWhichItCame) {
  std::vector<int> done;
  {
    WorkQueue queue;
    for (int i = 0; i < 100; ++i) queue.post([&done, i] { done.push_back(i); });
  }
  ASSERT_EQ(done.size(), 100u) << "the end does what is left";
  for (int i = 0; i < 100; ++i) EXPECT_EQ(done[i], i);
}

TEST(WorkQueueTest, IsIdleOnceEverythingIsDone) {
  WorkQueue queue;
  support::Gate isWorking, goOn;
  EXPECT_TRUE(support::waitFor([&] { return queue.isIdle(); }));
  queue.post([&] {
    isWorking.open();
    goOn.wait();
  });
  ASSERT_TRUE(isWorking.wait());
  EXPECT_FALSE(queue.isIdle());
  goOn.open();
  EXPECT_TRUE(support::waitFor([&] { return queue.isIdle(); }));
}

TEST(WorkQueueTest, WorkMayPostMore) {
  std::vector<int> done;
  {
    WorkQueue queue;
    support::Gate isPosted;
    queue.post([&] {
      queue.post([&] { done.push_back(2); });
      done.push_back(1);
      isPosted.open();
    });
    isPosted.wait();
  }
  EXPECT_EQ(done, (std::vector<int>{1, 2}));
}

}  // namespace
}  // namespace playerx::transfers
