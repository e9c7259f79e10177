#include <gmock/gmock.h>

#include <sstream>

#include "playerx/app/reasons/ReasonFile.h"
#include "playerx/cli/Options.h"
#include "playerx/cli/Presentation.h"
#include "playerx/cli/Reporter.h"
#include "tests/support/TempDir.h"

namespace playerx::cli {
namespace {

using session::Reply;
using testing::HasSubstr;

class PresentationTest : public testing::Test {
 protected:
  int tell(const Reply& reply) { return present(reply, *reporter_); }

  void printQueue(const std::vector<model::ItemState>& queue) {
    const session::Places places{folder_.path(), folder_.path()};
    QueuePrint print(places, false, *reporter_);
    for (const model::ItemState& item : queue) print.add(item);
    print.end();
  }

  static model::ItemState film(DownloadStatusEnumType status) {
    model::ItemState item;
    item.title = "film";
    item.status = status;
    return item;
  }

  support::TempDir folder_;
  std::ostringstream out_;
  std::ostringstream notes_;
  const std::unique_ptr<Reporter> reporter_ = makeLineReporter(out_, notes_);
};

TEST_F(PresentationTest, AQueueIsPrintedInItsOrder) {
  printQueue({film(DownloadStatusQueued), film(DownloadStatusFailed)});
  EXPECT_EQ(out_.str(),
            "1. queued 0 % film\n2. failed 0 % film\n"
            "0 of 2 complete, 2 films of unknown size\n");
}

TEST_F(PresentationTest, AFailedItemIsPrintedWithItsReason) {
  const model::ItemState failed = film(DownloadStatusFailed);
  const reasons::Explanation reason = reasons::explain(reasons::Reason::kUnsupportedType);
  reasons::ReasonFile file(folder_.path());
  file.note(failed, reason);
  file.save({failed});
  printQueue({failed});
  EXPECT_THAT(out_.str(), HasSubstr(reason.sentence()));
}

TEST_F(PresentationTest, AnEmptyQueueIsSaidToBeEmpty) {
  printQueue({});
  EXPECT_EQ(notes_.str(), "The queue is empty.\n");
}

TEST_F(PresentationTest, WhatIsLeftIsNamedWithItsRemedy) {
  std::vector<model::ItemState> queue = {film(DownloadStatusCompleted), film(DownloadStatusFailed),
                                         film(DownloadStatusStopped), film(DownloadStatusStopped)};
  for (unsigned int i = 0; i < queue.size(); ++i) queue[i].id = i + 1;
  noteWhatIsLeft(
      queue, [](unsigned int) { return true; }, *reporter_);
  EXPECT_EQ(notes_.str(),
            "2 films stay paused; `resume` lets them go on.\n"
            "One film has failed before; `retry all` queues it again.\n");
  notes_.str("");
  noteWhatIsLeft(
      queue, [](unsigned int id) { return id == 4; }, *reporter_);
  EXPECT_EQ(notes_.str(), "One film stays paused; `resume` lets it go on.\n");
}

TEST_F(PresentationTest, TheItemsOfAReplyAreNotPrinted) {
  Reply reply;
  reply.items = {film(DownloadStatusQueued)};
  EXPECT_EQ(tell(reply), kExitDone);
  EXPECT_EQ(out_.str(), "");
}

TEST_F(PresentationTest, AFailedRequestHasItsSentenceWithItsStatus) {
  EXPECT_EQ(tell({Reply::Outcome::kFailed, {"It cannot."}}), kExitFailed);
  EXPECT_EQ(notes_.str(), "It cannot.\n");
}

TEST_F(PresentationTest, WhatWasDoneIsTheOutput) {
  Reply reply;
  reply.results = {"Removed: film."};
  EXPECT_EQ(tell(reply), kExitDone);
  EXPECT_EQ(out_.str(), "Removed: film.\n");
  EXPECT_EQ(notes_.str(), "");
}

TEST_F(PresentationTest, ARefusedInputIsWrongUse) {
  const reasons::Explanation reason = reasons::explain(reasons::Reason::kUnsupportedType);
  const Reply reply{Reply::Outcome::kWrongUse, {}, {{"http://h/a.txt", reason}}};
  EXPECT_EQ(tell(reply), kExitUsage);
  EXPECT_THAT(notes_.str(), HasSubstr("http://h/a.txt: "));
}

}  // namespace
}  // namespace playerx::cli
