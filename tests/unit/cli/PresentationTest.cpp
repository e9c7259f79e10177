#include <gmock/gmock.h>

#include <sstream>

#include "playerx/cli/Options.h"
#include "playerx/cli/Presentation.h"
#include "playerx/cli/Reporter.h"

namespace playerx::cli {
namespace {

using session::Reply;
using session::Request;
using testing::HasSubstr;

class PresentationTest : public testing::Test {
 protected:
  int tell(Request::Action action, const Reply& reply) {
    return present(Request{.action = action}, reply, *reporter_);
  }

  static model::ItemState film(DownloadStatusEnumType status) {
    model::ItemState item;
    item.title = "film";
    item.status = status;
    return item;
  }

  std::ostringstream out_;
  std::ostringstream notes_;
  const std::unique_ptr<Reporter> reporter_ = makeLineReporter(out_, notes_);
};

TEST_F(PresentationTest, AQueueIsPrintedInItsOrder) {
  Reply reply;
  reply.items = {film(DownloadStatusQueued), film(DownloadStatusFailed)};
  EXPECT_EQ(tell(Request::Action::kList, reply), kExitDone);
  EXPECT_EQ(out_.str(), "1. queued 0 % film\n2. failed 0 % film\n");
}

TEST_F(PresentationTest, AnEmptyQueueIsSaidToBeEmpty) {
  EXPECT_EQ(tell(Request::Action::kList, {}), kExitDone);
  EXPECT_EQ(notes_.str(), "The queue is empty.\n");
}

TEST_F(PresentationTest, TheItemsOfAnotherRequestAreNotPrinted) {
  Reply reply;
  reply.items = {film(DownloadStatusQueued)};
  EXPECT_EQ(tell(Request::Action::kAdd, reply), kExitDone);
  EXPECT_EQ(out_.str(), "");
}

TEST_F(PresentationTest, AFailedRequestHasItsSentenceWithItsStatus) {
  EXPECT_EQ(tell(Request::Action::kRetry, {Reply::Outcome::kFailed, {"It cannot."}}), kExitFailed);
  EXPECT_EQ(notes_.str(), "It cannot.\n");
}

TEST_F(PresentationTest, ARefusedInputIsWrongUse) {
  const reasons::Explanation reason = reasons::explain(reasons::Reason::kUnsupportedType);
  const Reply reply{Reply::Outcome::kWrongUse, {}, {{"http://h/a.mp4", reason}}};
  EXPECT_EQ(tell(Request::Action::kAdd, reply), kExitUsage);
  EXPECT_THAT(notes_.str(), HasSubstr("http://h/a.mp4: "));
}

}  // namespace
}  // namespace playerx::cli
