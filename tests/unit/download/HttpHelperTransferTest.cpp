#include "tests/unit/download/HttpHelperFixture.h"

namespace {

using support::bareResponse;
using support::Gate;
using support::okResponse;
using support::RecordingCallback;
using support::Script;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class HttpHelperGet : public support::HttpHelperTest {};

TEST_F(HttpHelperGet, WithoutAddressOrReceiverFailsAtOnce) {
  EXPECT_EQ(Result(helper_.get(""))->getResult(), HTTP_RESULT_FAILED);
  helper_.setup("", "");
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(server_.connectionCount(), 0u);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(HttpHelperGet, StreamsHeadersBodyAndOutcome) {
  server_.always(Script::answer(okResponse("the body")));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  ASSERT_TRUE(log_.waitFor("complete 1"));
  EXPECT_EQ(receiver_.body(), "the body");
  EXPECT_TRUE(log_.has("header Content-Length: 8\r\n"));
  EXPECT_THAT(log_.lines("broke"), IsEmpty());
}

TEST_F(HttpHelperGet, KnowsTheLengthWhenItReturns) {
  server_.always(Script::answer(okResponse("the body")));
  const Result result = get();
  EXPECT_EQ(result->getContentLength(), 8u);
  EXPECT_EQ(result->getHttpCallbacks(), &receiver_);
}

TEST_F(HttpHelperGet, ReturnsAtTheFirstPieceOfTheBody) {
  Gate& rest = gate();
  server_.always(Script()
                     .readRequest()
                     .send("HTTP/1.0 200 OK\r\nContent-Length: 6\r\n\r\nabc")
                     .stallUntil(rest)
                     .send("def"));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(receiver_.body(), "abc");
  EXPECT_FALSE(log_.has("complete 1"));
  rest.open();
  ASSERT_TRUE(log_.waitFor("complete 1"));
  EXPECT_EQ(receiver_.body(), "abcdef");
}

TEST_F(HttpHelperGet, SendsItsNameAndTheRequestData) {
  server_.always(Script::answer(okResponse("the body")));
  get("X-Extra: 1");
  ASSERT_TRUE(log_.waitFor("complete 1"));
  const std::string request = server_.requests().at(0);
  EXPECT_THAT(request, testing::StartsWith("GET /film.avi HTTP/1.0\r\n"));
  EXPECT_THAT(request, HasSubstr("User-Agent: Vesk Player 2.0\r\n"));
  EXPECT_THAT(request, HasSubstr("X-Extra: 1\r\n"));
}

TEST_F(HttpHelperGet, ReturnsWhenTheBodyIsEmpty) {
  server_.always(Script::answer(okResponse("")));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  ASSERT_TRUE(log_.waitFor("complete 1"));
}

TEST_F(HttpHelperGet, OfAnErrorStatusFails) {
  server_.always(Script::answer(bareResponse("500 Oops")));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_FAILED);
  EXPECT_TRUE(log_.waitFor("broke -1"));
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
}

TEST_F(HttpHelperGet, FollowsOneRedirectAndNoMore) {
  const std::string away = "Location: " + server_.url("/b") + "\r\n";
  server_.next(Script::answer(bareResponse("302 Found", away)));
  server_.next(Script::answer(okResponse("the body")));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  ASSERT_TRUE(log_.waitFor("complete 1"));
  server_.always(Script::answer(bareResponse("302 Found", away)));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_FAILED);
}

TEST_F(HttpHelperGet, EndsWhenTheReceiverTakesLessThanItWasGiven) {
  receiver_.takeAtMost(2);
  server_.always(
      Script().readRequest().send("HTTP/1.0 200 OK\r\nContent-Length: 9999\r\n\r\nabc").stall());
  get();
  EXPECT_TRUE(log_.waitFor("broke -1"));
}

TEST_F(HttpHelperGet, IsSilentAboutACancelledTransfer) {
  server_.always(
      Script().readRequest().send("HTTP/1.0 200 OK\r\nContent-Length: 9\r\n\r\nabc").stall());
  get();
  helper_.cancelDownload();
  helper_.abort();
  EXPECT_THAT(log_.lines("broke"), IsEmpty());
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
}

TEST_F(HttpHelperGet, TakesBackAnEarlierCancel) {
  helper_.cancelDownload();
  EXPECT_EQ(HttpHelper::sDownloadCancelled, -1);
  server_.always(Script::answer(okResponse("the body")));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(HttpHelper::sDownloadCancelled, 0);
  EXPECT_TRUE(log_.waitFor("complete 1"));
}

TEST_F(HttpHelperGet, FailsWhenCancelledBeforeTheFirstPiece) {
  Gate& asked = gate();
  server_.always(Script().readRequest().announce(asked).stall());
  auto result = std::async(std::launch::async, [this] { return get(); });
  ASSERT_TRUE(asked.wait());
  const auto before = Clock::now();
  helper_.cancelDownload();
  EXPECT_EQ(result.get()->getResult(), HTTP_RESULT_FAILED);
  EXPECT_LT(Clock::now() - before, kPrompt);
}

TEST_F(HttpHelperGet, IsCancelledThroughAnyOtherHelper) {
  Gate& asked = gate();
  server_.always(Script().readRequest().announce(asked).stall());
  auto result = std::async(std::launch::async, [this] { return get(); });
  ASSERT_TRUE(asked.wait());
  HttpHelper other;
  const auto before = Clock::now();
  other.cancelDownload();
  EXPECT_EQ(result.get()->getResult(), HTTP_RESULT_FAILED);
  EXPECT_LT(Clock::now() - before, kPrompt);
  EXPECT_THAT(log_.lines("broke"), IsEmpty());
}

TEST_F(HttpHelperGet, IsCancelledThroughAnyOtherHelperWhileBytesFlow) {
  server_.always(Script()
                     .readRequest()
                     .send("HTTP/1.0 200 OK\r\nContent-Length: 99999\r\n\r\n")
                     .drip(std::string(99999, 'x'), std::chrono::milliseconds(1)));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  HttpHelper other;
  other.cancelDownload();
  helper_.abort();
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
}

TEST_F(HttpHelperGet, EndsPromptlyWhenAborted) {
  server_.always(
      Script().readRequest().send("HTTP/1.0 200 OK\r\nContent-Length: 9\r\n\r\nabc").stall());
  get();
  const auto before = Clock::now();
  helper_.abort();
  EXPECT_LT(Clock::now() - before, kPrompt);
  EXPECT_EQ(HttpHelper::sDownloadCancelled, -1);
}

TEST_F(HttpHelperGet, NeedsASetupAfterAnAbort) {
  helper_.abort();
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_FAILED);
  helper_.setup(server_.url("/film.avi"), "");
  server_.always(Script::answer(okResponse("the body")));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  EXPECT_TRUE(log_.waitFor("complete 1"));
}

TEST_F(HttpHelperGet, MayBeAbortedFromItsOwnThread) {
  struct Aborting : RecordingCallback {
    Aborting(support::EventLog& log, HttpHelper& helper)
        : RecordingCallback(log), helper_(helper) {}
    size_t bodyReceived(const char* data, size_t length) override {
      helper_.abort();
      return RecordingCallback::bodyReceived(data, length);
    }
    HttpHelper& helper_;
  };
  Aborting aborting(log_, helper_);
  server_.always(
      Script().readRequest().send("HTTP/1.0 200 OK\r\nContent-Length: 9\r\n\r\nabc").stall());
  helper_.setCallbacks(&aborting);
  EXPECT_EQ(Result(helper_.get(""))->getResult(), HTTP_RESULT_FAILED);
  helper_.abort();  // the receiver is about to go
}

TEST_F(HttpHelperGet, MayBeUsedAgain) {
  server_.always(Script::answer(okResponse("abc")));
  for (int time = 1; time <= 3; ++time) {
    helper_.setup(server_.url("/film.avi"), "");
    EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
    ASSERT_TRUE(log_.waitFor("complete 1", static_cast<std::size_t>(time)));
  }
  EXPECT_EQ(receiver_.body(), "abcabcabc");
}

class HttpHelperPost : public support::HttpHelperTest {
 protected:
  Result post() { return Result(helper_.post()); }
};

TEST_F(HttpHelperPost, StreamsTheAnswerWithoutReportingTheEnd) {
  Gate& rest = gate();
  server_.always(Script()
                     .readRequest()
                     .send("HTTP/1.0 200 OK\r\nContent-Length: 6\r\n\r\nabc")
                     .stallUntil(rest)
                     .send("def"));
  helper_.setCallbacks(&receiver_);
  EXPECT_EQ(post()->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(receiver_.body(), "abc");
  rest.open();
  helper_.setup("", "");  // waits for the transfer
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
  EXPECT_THAT(log_.lines("header"), IsEmpty());
}

TEST_F(HttpHelperPost, IsOkWhateverComesOfIt) {
  server_.always(Script::answer(bareResponse("500 Oops")));
  helper_.setCallbacks(&receiver_);
  EXPECT_EQ(post()->getResult(), HTTP_RESULT_OK);
  EXPECT_THAT(log_.lines("broke"), IsEmpty());
}

TEST_F(HttpHelperPost, NeedsNeitherAddressNorReceiver) {
  server_.always(Script::answer(okResponse("abc")));
  EXPECT_EQ(post()->getResult(), HTTP_RESULT_OK);
  helper_.setup("", "");
  EXPECT_EQ(post()->getResult(), HTTP_RESULT_OK);
}

TEST_F(HttpHelperPost, SendsAnEmptyQuery) {
  server_.always(Script::answer(okResponse("abc")));
  post();
  EXPECT_THAT(server_.requests().at(0), testing::StartsWith("GET /film.avi"));
  EXPECT_THAT(server_.requests().at(0), Not(HasSubstr("abc")));
}

TEST_F(HttpHelperPost, DoesNotTakeBackAnEarlierCancel) {
  helper_.cancelDownload();
  server_.always(Script::answer(okResponse("abc")));
  post();
  EXPECT_EQ(HttpHelper::sDownloadCancelled, -1);
  HttpHelper::sDownloadCancelled = 0;
}

TEST_F(HttpHelperPost, ReturnsPromptlyWhenCancelled) {
  Gate& asked = gate();
  server_.always(Script().readRequest().announce(asked).stall());
  auto result = std::async(std::launch::async, [this] { return post(); });
  ASSERT_TRUE(asked.wait());
  const auto before = Clock::now();
  helper_.cancelDownload();
  EXPECT_EQ(result.get()->getResult(), HTTP_RESULT_OK);
  EXPECT_LT(Clock::now() - before, kPrompt);
}

}  // namespace
