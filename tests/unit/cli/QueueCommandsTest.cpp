#include <gmock/gmock.h>

#include <sstream>

#include "playerx/cli/Options.h"
#include "playerx/cli/QueueCommands.h"
#include "playerx/cli/Reporter.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::cli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class QueueCommandsTest : public testing::Test {
 protected:
  int run(Options::Command command, int position = 0, Options::Direction direction = Options::kUp) {
    Options options;
    options.command = command;
    options.position = position;
    options.direction = direction;
    return runQueueCommand(options, module_, *reporter_);
  }

  std::string call(const std::string& operation, const DownloadItem& item) const {
    return "manager." + operation + " " + std::to_string(item.getId());
  }

  support::EventLog log_;
  FakeModule module_{log_};
  std::ostringstream out_;
  std::ostringstream notes_;
  const std::unique_ptr<Reporter> reporter_ = makeLineReporter(out_, notes_);
};

TEST_F(QueueCommandsTest, ListPrintsTheQueueInItsOrder) {
  module_.put("http://h/a.avi");
  module_.put("http://h/b.avi", DownloadStatusFailed);
  EXPECT_EQ(run(Options::kList), kExitDone);
  EXPECT_EQ(out_.str(), "1. queued 0 % film\n2. failed 0 % film\n");
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(QueueCommandsTest, AnEmptyQueueIsSaidToBeEmpty) {
  EXPECT_EQ(run(Options::kList), kExitDone);
  EXPECT_EQ(notes_.str(), "The queue is empty.\n");
}

TEST_F(QueueCommandsTest, APositionThatIsNotThereIsWrongUsage) {
  module_.put("http://h/a.avi");
  EXPECT_EQ(run(Options::kRemove, 2), kExitUsage);
  EXPECT_EQ(notes_.str(), "There is no item 2; the queue holds 1.\n");
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(QueueCommandsTest, RemoveTakesTheItemAtItsPosition) {
  module_.put("http://h/a.avi");
  const DownloadItem& second = module_.put("http://h/b.avi");
  EXPECT_EQ(run(Options::kRemove, 2), kExitDone);
  EXPECT_THAT(log_.lines(), ElementsAre(call("remove", second)));
}

TEST_F(QueueCommandsTest, OnlyAFailedItemIsRetried) {
  DownloadItem& item = module_.put("http://h/a.avi");
  EXPECT_EQ(run(Options::kRetry, 1), kExitFailed);
  EXPECT_EQ(notes_.str(), "Only a failed item can be retried; this one is queued.\n");
  item.setStatus(DownloadStatusFailed);
  EXPECT_EQ(run(Options::kRetry, 1), kExitDone);
  EXPECT_THAT(log_.lines(), ElementsAre(call("retry", item)));
}

TEST_F(QueueCommandsTest, EachDirectionIsAMoveOfItsOwn) {
  const DownloadItem& item = module_.put("http://h/a.avi");
  EXPECT_EQ(run(Options::kMove, 1, Options::kTop), kExitDone);
  EXPECT_EQ(run(Options::kMove, 1, Options::kBottom), kExitDone);
  EXPECT_EQ(run(Options::kMove, 1, Options::kUp), kExitFailed);
  EXPECT_EQ(run(Options::kMove, 1, Options::kDown), kExitFailed);
  EXPECT_EQ(notes_.str(), "The item cannot move any further.\nThe item cannot move any further.\n");
  EXPECT_THAT(log_.lines(), ElementsAre(call("moveToTop", item), call("moveToBottom", item),
                                        call("moveUp", item), call("moveDown", item)));
}

TEST_F(QueueCommandsTest, ClearDropsWhatIsComplete) {
  EXPECT_EQ(run(Options::kClear), kExitDone);
  EXPECT_THAT(log_.lines(), ElementsAre("manager.clearCompletedDownloads"));
}

}  // namespace
}  // namespace playerx::cli
