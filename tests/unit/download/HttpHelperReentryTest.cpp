// What a receiver may do to its helper, and helpers to each other.

#include <functional>
#include <utility>

#include "tests/unit/download/HttpHelperFixture.h"

namespace {

using support::Gate;
using support::okResponse;
using support::RecordingCallback;
using support::Script;
using testing::IsEmpty;

/// Does something at the first piece of the body, or at the end.
class Acting : public RecordingCallback {
 public:
  using RecordingCallback::RecordingCallback;

  size_t bodyReceived(const char* data, size_t length) override {
    if (const auto action = std::exchange(atBody, nullptr)) action();
    return RecordingCallback::bodyReceived(data, length);
  }

  void transferComplete(int code) override {
    if (atEnd) atEnd();
    RecordingCallback::transferComplete(code);
  }

  std::function<void()> atBody;
  std::function<void()> atEnd;  ///< each time
};

using HttpHelperGet = support::HttpHelperTest;

TEST_F(HttpHelperGet, MayBeAbortedFromItsOwnThread) {
  Acting receiver(log_);
  receiver.atBody = [this] { helper_.abort(); };
  server_.always(silentAfterThePiece());
  EXPECT_EQ(get(helper_, receiver)->getResult(), HTTP_RESULT_FAILED);
  helper_.abort();  // the receiver is about to go
}

TEST_F(HttpHelperGet, IsSilentWhenTheReceiverCancelsItAndRefusesThePiece) {
  Acting receiver(log_);
  receiver.takeAtMost(0);
  receiver.atBody = [this] { helper_.cancelDownload(); };
  server_.always(silentAfterThePiece());
  EXPECT_EQ(get(helper_, receiver)->getResult(), HTTP_RESULT_FAILED);
  helper_.abort();  // the thread has ended
  EXPECT_THAT(log_.lines("broke"), IsEmpty());
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
}

TEST_F(HttpHelperGet, SetupLeavesOtherHelpersAlone) {
  Gate& rest = gate();
  support::EventLog otherLog;
  RecordingCallback otherReceiver(otherLog);
  HttpHelper other;
  other.setup(server_.url("/film.avi"), "");
  server_.always(inTwoPieces(rest));
  EXPECT_EQ(get(other, otherReceiver)->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(get(helper_, receiver_)->getResult(), HTTP_RESULT_OK);
  helper_.setup(server_.url("/film.avi"), "");
  EXPECT_EQ(HttpHelper::sDownloadCancelled, 0);
  rest.open();
  ASSERT_TRUE(otherLog.waitFor("complete 1"));
  EXPECT_EQ(otherReceiver.body(), "abcdef");
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
}

TEST_F(HttpHelperGet, AbortAfterTheEndLeavesOtherHelpersAlone) {
  Acting receiver(log_);
  receiver.atEnd = [this] { helper_.abort(); };
  server_.always(Script::answer(okResponse("abc")));
  EXPECT_EQ(get(helper_, receiver)->getResult(), HTTP_RESULT_OK);
  ASSERT_TRUE(log_.waitFor("complete 1"));
  EXPECT_EQ(HttpHelper::sDownloadCancelled, 0);
  helper_.abort();
}

}  // namespace
