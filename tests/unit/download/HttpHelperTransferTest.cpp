#include "tests/support/Promptness.h"
#include "tests/unit/download/HttpHelperFixture.h"

namespace {

using support::bareResponse;
using support::Gate;
using support::okResponse;
using support::Script;
using testing::IsEmpty;

using HttpHelperGet = support::HttpHelperTest;

TEST_F(HttpHelperGet, WithoutAddressOrReceiverFailsAtOnce) {
  EXPECT_EQ(Result(helper_.get(""))->getResult(), HTTP_RESULT_FAILED);
  helper_.setup("", "");
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(server_.connectionCount(), 0u);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(HttpHelperGet, WithoutAddressOrReceiverStillTakesBackACancel) {
  helper_.cancelDownload();
  EXPECT_EQ(Result(helper_.get(""))->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(HttpHelper::sDownloadCancelled, 0);
  helper_.setup("", "");
  helper_.cancelDownload();
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(HttpHelper::sDownloadCancelled, 0);
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
  server_.always(inTwoPieces(rest));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(receiver_.body(), "abc");
  EXPECT_FALSE(log_.has("complete 1"));
  rest.open();
  ASSERT_TRUE(log_.waitFor("complete 1"));
  EXPECT_EQ(receiver_.body(), "abcdef");
}

// A busy machine may take longer for the answer than the helper waits before it looks.
TEST_F(HttpHelperGet, HasPassedOnAShortBodyWhenItReturns) {
  server_.always(Script::answer(okResponse("the body")));
  bool isWhole = false;
  for (int tries = 0; !isWhole && tries < 10; ++tries) {
    log_.clear();
    get();
    isWhole = log_.has("complete 1");
    ASSERT_TRUE(log_.waitFor("complete 1"));
  }
  EXPECT_TRUE(isWhole);
}

TEST_F(HttpHelperGet, SendsItsNameAndTheRequestData) {
  server_.always(Script::answer(okResponse("the body")));
  get("X-Extra: 1");
  ASSERT_TRUE(log_.waitFor("complete 1"));
  EXPECT_EQ(server_.requests().at(0),
            "GET /film.avi HTTP/1.0\r\nHost: localhost\r\nUser-Agent: Vesk Player 2.0\r\n"
            "X-Extra: 1\r\nConnection: close\r\n\r\n");
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

TEST_F(HttpHelperGet, OfAnErrorStatusWithABodyFails) {
  const std::string statuses[] = {"404 Not Found", "304 Not Modified", "503 Busy"};
  for (std::size_t time = 1; time <= 50; ++time) {
    const std::string headers = "Content-Length: 4\r\n";
    server_.always(Script::answer(bareResponse(statuses[time % 3], headers) + "body"));
    helper_.setup(server_.url("/film.avi"), "");
    EXPECT_EQ(get()->getResult(), HTTP_RESULT_FAILED);
    ASSERT_TRUE(log_.waitFor("broke -1", time));
  }
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
}

TEST_F(HttpHelperGet, DoesNotWaitForTheTargetOfARedirectWithABody) {
  const std::string away = "Location: " + server_.url("/b") + "\r\n";
  server_.next(Script::answer(bareResponse("307 Temporary Redirect", away) + "moved"));
  server_.always(Script().readRequest().stall());
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(receiver_.body(), "moved");
}

TEST_F(HttpHelperGet, FailsWhenTheReceiverRefusesTheFirstPiece) {
  receiver_.takeAtMost(2);
  server_.always(silentAfterThePiece());
  for (std::size_t time = 1; time <= 50; ++time) {
    helper_.setup(server_.url("/film.avi"), "");
    EXPECT_EQ(get()->getResult(), HTTP_RESULT_FAILED);
    ASSERT_TRUE(log_.waitFor("broke -1", time));
  }
}

TEST_F(HttpHelperGet, PausesAMillisecondAfterEveryRead) {
  server_.always(Script::answer(okResponse(std::string(1 << 20, 'x'))));
  const auto elapsed = support::timeOf([this] {
    EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
    EXPECT_TRUE(log_.waitFor("complete 1"));
  });
  const auto pieces = static_cast<int>(log_.lines("body ").size());
  EXPECT_GT(pieces, 200);
  EXPECT_GE(elapsed, std::chrono::milliseconds(pieces - 1));
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
  server_.always(silentAfterThePiece());
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

TEST_F(HttpHelperGet, IsCancelledThroughAnyOtherHelperWhileBytesFlow) {
  server_.always(withoutEnd());
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  HttpHelper other;
  other.cancelDownload();
  EXPECT_TRUE(server_.ended(0).lost);  // the helper has hung up
  helper_.setup("", "");               // waits for its thread
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
  EXPECT_THAT(log_.lines("broke"), IsEmpty());
}

TEST_F(HttpHelperGet, IsCancelledByTheSharedFlagAlone) {
  server_.always(withoutEnd());
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  HttpHelper::sDownloadCancelled = -1;
  EXPECT_TRUE(server_.ended(0).lost);
  helper_.setup("", "");
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
  EXPECT_THAT(log_.lines("broke"), IsEmpty());
}

TEST_F(HttpHelperGet, EndsPromptlyWhenAborted) {
  server_.always(silentAfterThePiece());
  const auto aborted = [this] {
    helper_.setup(server_.url("/film.avi"), "");
    get();
    return support::timeOf([this] { helper_.abort(); });
  };
  EXPECT_LT(support::bestTime(aborted), support::kPromptly);
  EXPECT_EQ(HttpHelper::sDownloadCancelled, -1);
}

TEST_F(HttpHelperGet, AbortOfAnIdleHelperLeavesTheFlag) {
  helper_.abort();
  EXPECT_EQ(HttpHelper::sDownloadCancelled, 0);
}

TEST_F(HttpHelperGet, IsAbortedByTheDestructor) {
  auto helper = std::make_unique<HttpHelper>();
  helper->setup(server_.url("/film.avi"), "");
  helper->setCallbacks(&receiver_);
  server_.always(silentAfterThePiece());
  EXPECT_EQ(Result(helper->get(""))->getResult(), HTTP_RESULT_OK);
  helper.reset();
  EXPECT_TRUE(server_.ended(0).ended);
  EXPECT_EQ(HttpHelper::sDownloadCancelled, -1);
  EXPECT_THAT(log_.lines("complete"), IsEmpty());
}

TEST_F(HttpHelperGet, NeedsASetupAfterAnAbort) {
  helper_.abort();
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_FAILED);
  helper_.setup(server_.url("/film.avi"), "");
  server_.always(Script::answer(okResponse("the body")));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  EXPECT_TRUE(log_.waitFor("complete 1"));
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

TEST_F(HttpHelperGet, MayBeUsedAgainRightAfterTheEnd) {
  server_.always(Script::answer(okResponse("abc")));
  for (std::size_t time = 1; time <= 50; ++time) {
    EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
    ASSERT_TRUE(log_.waitFor("complete 1", time));
    EXPECT_EQ(server_.connectionCount(), time);
  }
}

TEST_F(HttpHelperGet, AgainWhileRunningNamesTheReceiverAndStartsNothing) {
  server_.always(silentAfterThePiece());
  get();
  const Result again = get();
  EXPECT_EQ(again->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(again->getHttpCallbacks(), &receiver_);
  EXPECT_EQ(server_.connectionCount(), 1u);
}

}  // namespace
