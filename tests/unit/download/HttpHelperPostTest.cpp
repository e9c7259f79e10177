#include "tests/unit/download/HttpHelperFixture.h"

namespace {

using support::bareResponse;
using support::Gate;
using support::okResponse;
using support::Script;
using testing::IsEmpty;

class HttpHelperPost : public support::HttpHelperTest {
 protected:
  Result post() { return Result(helper_.post()); }
};

TEST_F(HttpHelperPost, StreamsTheAnswerWithoutReportingTheEnd) {
  Gate& rest = gate();
  server_.always(inTwoPieces(rest));
  helper_.setCallbacks(&receiver_);
  EXPECT_EQ(post()->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(receiver_.body(), "abc");
  rest.open();
  helper_.setup("", "");  // waits for the transfer
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
  EXPECT_THAT(log_.lines("header"), IsEmpty());
}

TEST_F(HttpHelperPost, IsOkWhateverTheOutcome) {
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
  EXPECT_THAT(server_.requests().at(0), testing::StartsWith("GET /film.avi HTTP/1.0\r\n"));
}

TEST_F(HttpHelperPost, DoesNotTakeBackAnEarlierCancel) {
  helper_.cancelDownload();
  server_.always(Script::answer(okResponse("abc")));
  helper_.setCallbacks(&receiver_);
  post();
  EXPECT_EQ(receiver_.body(), "abc");
  EXPECT_EQ(HttpHelper::sDownloadCancelled, -1);
}

TEST_F(HttpHelperPost, IsNotCancelledByTheSharedFlagAlone) {
  Gate& rest = gate();
  server_.always(inTwoPieces(rest));
  helper_.setCallbacks(&receiver_);
  post();
  HttpHelper::sDownloadCancelled = -1;
  rest.open();
  ASSERT_TRUE(log_.waitFor("body 3", 2));
  EXPECT_EQ(receiver_.body(), "abcdef");
}

TEST_F(HttpHelperPost, SendsTheRequestDataOfAnEarlierGetAsResponseType) {
  server_.always(Script::answer(okResponse("abc")));
  get("X-Extra: 1");
  ASSERT_TRUE(log_.waitFor("complete 1"));
  helper_.setup(server_.url("/film.avi"), "");
  post();
  EXPECT_EQ(server_.requests().at(1),
            "GET /film.avi HTTP/1.0\r\nHost: localhost\r\nresponseType: X-Extra: 1\r\n"
            "User-Agent: Vesk Player 2.0\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpHelperPost, FollowsOneRedirectAndNoMore) {
  const std::string away = "Location: " + server_.url("/b") + "\r\n";
  helper_.setCallbacks(&receiver_);
  server_.next(Script::answer(bareResponse("302 Found", away)));
  server_.next(Script::answer(okResponse("abc")));
  post();
  EXPECT_EQ(receiver_.body(), "abc");
  helper_.setup(server_.url("/film.avi"), "");
  server_.next(Script::answer(bareResponse("302 Found", away)));
  server_.next(Script::answer(bareResponse("302 Found", away)));
  server_.always(Script::answer(okResponse("too far")));
  post();
  EXPECT_EQ(server_.connectionCount(), 4u);
  EXPECT_EQ(receiver_.body(), "abc");
}

TEST_F(HttpHelperPost, NamesNoReceiverButKnowsTheLength) {
  server_.always(Script::answer(okResponse("abcdef")));
  helper_.setCallbacks(&receiver_);
  const Result result = post();
  EXPECT_EQ(result->getHttpCallbacks(), nullptr);
  EXPECT_EQ(result->getContentLength(), 6u);
}

}  // namespace
