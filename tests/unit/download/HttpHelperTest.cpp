#include <gmock/gmock.h>

#include <deque>
#include <future>
#include <memory>

#include "download/HttpHelper.h"
#include "tests/support/Gate.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/download/RecordingCallback.h"

namespace {

using support::bareResponse;
using support::Gate;
using support::okResponse;
using support::RecordingCallback;
using support::Script;
using support::ScriptedServer;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Result = std::unique_ptr<HttpResult>;
using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPrompt{250};

class HttpHelperTest : public testing::Test {
 protected:
  HttpHelperTest() { helper_.setup(server_.url("/film.avi"), ""); }

  /// A gate that outlives the server.
  Gate& gate() { return gates_.emplace_back(); }

  Result infoOf(const std::string& response) {
    server_.always(Script::answer(response));
    return Result(helper_.getInfo());
  }

  Result get(const std::string& requestData = "") {
    helper_.setCallbacks(&receiver_);
    return Result(helper_.get(requestData));
  }

  std::size_t header(const std::string& line) {
    std::string bytes = line;
    return HttpHelper::downloadHeaderFunc(bytes.data(), 1, bytes.size(), &helper_);
  }

  std::deque<Gate> gates_;
  ScriptedServer server_;
  support::EventLog log_;
  RecordingCallback receiver_{log_};
  HttpHelper helper_;
};

using HttpHelperInfo = HttpHelperTest;

TEST_F(HttpHelperInfo, FindsTheLength) {
  const Result info = infoOf(bareResponse("200 OK", "Content-Length: 42\r\n"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(info->getContentLength(), 42u);
  EXPECT_EQ(info->getReturnCode(), 200u);
  EXPECT_EQ(info->getErrorDescription(), "");
}

TEST_F(HttpHelperInfo, FindsTheLengthInUpperCase) {
  const Result info = infoOf(bareResponse("200 OK", "CONTENT-LENGTH: 42\r\n"));
  EXPECT_EQ(info->getContentLength(), 42u);
}

TEST_F(HttpHelperInfo, PrefersTheLengthThatTheClientKnowsByOneSpelling) {
  const Result info = infoOf(bareResponse("200 OK", "Content-length: 7\r\nContent-Length: 42\r\n"));
  EXPECT_EQ(info->getContentLength(), 7u);
}

TEST_F(HttpHelperInfo, IsARedirectWithALocationAndNoLength) {
  const Result info = infoOf(bareResponse("200 OK", "Location: http://h/a\r\n"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_REDIRECT);
  EXPECT_EQ(info->getRedirection(), "http://h/a\r\n");
}

TEST_F(HttpHelperInfo, IsARedirectWithALocationAndALengthOfZero) {
  const Result info =
      infoOf(bareResponse("200 OK", "Location: http://h/a\r\nContent-Length: 0\r\n"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_REDIRECT);
}

TEST_F(HttpHelperInfo, IsNoRedirectWithALocationInLowerCase) {
  const Result info = infoOf(bareResponse("200 OK", "location: http://h/a\r\n"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(info->getRedirection(), "");
}

TEST_F(HttpHelperInfo, IsNoRedirectWithALocationAndALength) {
  const Result info =
      infoOf(bareResponse("200 OK", "Location: http://h/a\r\nContent-Length: 42\r\n"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_OK);
}

TEST_F(HttpHelperInfo, OfAnAnswerWithNeitherFails) {
  const Result info = infoOf(bareResponse("200 OK"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(info->getErrorDescription(), "Empty response from server.");
  EXPECT_EQ(info->getReturnCode(), 200u);
}

TEST_F(HttpHelperInfo, OfAnErrorStatusFails) {
  const Result info = infoOf(bareResponse("404 Not Found", "Content-Length: 42\r\n"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(info->getReturnCode(), 404u);
}

TEST_F(HttpHelperInfo, FollowsTenRedirectsAndNoMore) {
  for (const int redirects : {10, 11}) {
    for (int step = 0; step < redirects; ++step)
      server_.next(Script::answer(
          bareResponse("302 Found", "Location: " + server_.url("/film.avi") + "\r\n")));
    server_.next(Script::answer(bareResponse("200 OK", "Content-Length: 42\r\n")));
    helper_.setup(server_.url("/film.avi"), "");
    const Result info(helper_.getInfo());
    EXPECT_EQ(info->getResult(), redirects == 10 ? HTTP_RESULT_OK : HTTP_RESULT_FAILED);
    if (redirects == 11) {
      EXPECT_EQ(info->getErrorDescription(),
                "Redirection url is not defined or redirect count exceeded.");
    }
  }
}

TEST_F(HttpHelperInfo, AsksWithHeadForXml) {
  infoOf(bareResponse("200 OK", "Content-Length: 42\r\n"));
  EXPECT_THAT(server_.requests().at(0), testing::StartsWith("HEAD /film.avi HTTP/1.0\r\n"));
  EXPECT_THAT(server_.requests().at(0), HasSubstr("responseType: text/xml\r\n"));
}

TEST_F(HttpHelperInfo, PassesHeaderLinesToTheReceiver) {
  helper_.setCallbacks(&receiver_);
  const Result info = infoOf(bareResponse("200 OK", "Content-Length: 42\r\n"));
  EXPECT_EQ(info->getHttpCallbacks(), &receiver_);
  EXPECT_TRUE(log_.has("header Content-Length: 42\r\n"));
  EXPECT_TRUE(log_.has("header HTTP/1.0 200 OK\r\n"));
}

TEST_F(HttpHelperInfo, OfAnAddressThatDoesNotParseFails) {
  helper_.setup("no address", "");
  const Result info(helper_.getInfo());
  EXPECT_EQ(info->getResult(), HTTP_RESULT_FAILED);
}

TEST_F(HttpHelperInfo, WithoutASetupFails) {
  HttpHelper helper;
  const Result info(helper.getInfo());
  EXPECT_EQ(info->getResult(), HTTP_RESULT_FAILED);
}

TEST_F(HttpHelperInfo, OutlivesTheHelper) {
  Result info;
  {
    HttpHelper helper;
    helper.setup(server_.url("/film.avi"), "");
    server_.always(Script::answer(bareResponse("200 OK", "Content-Length: 42\r\n")));
    info.reset(helper.getInfo());
  }
  EXPECT_EQ(info->getContentLength(), 42u);
}

TEST_F(HttpHelperInfo, EndsPromptlyWhenCancelledFromOutside) {
  Gate& asked = gate();
  server_.always(Script().readRequest().announce(asked).stall());
  auto info = std::async(std::launch::async, [this] { return Result(helper_.getInfo()); });
  ASSERT_TRUE(asked.wait());
  const auto before = Clock::now();
  helper_.cancelDownload();
  EXPECT_EQ(info.get()->getResult(), HTTP_RESULT_FAILED);
  EXPECT_LT(Clock::now() - before, kPrompt);
}

TEST_F(HttpHelperInfo, IsNotHinderedByAnEarlierCancel) {
  helper_.cancelDownload();
  EXPECT_EQ(infoOf(bareResponse("200 OK", "Content-Length: 42\r\n"))->getResult(), HTTP_RESULT_OK);
}

TEST_F(HttpHelperTest, SetupAlwaysAnswersTrue) {
  EXPECT_TRUE(helper_.setup("", ""));
  EXPECT_TRUE(helper_.setup("nonsense", "nowhere"));
}

TEST_F(HttpHelperTest, HeaderLinesNeedAResultInProgress) {
  EXPECT_EQ(header("Content-Length: 42\r\n"), 0u);
  const Result info = infoOf(bareResponse("200 OK"));
  EXPECT_EQ(header("CONTENT-LENGTH: 42\r\n"), 20u);
  EXPECT_EQ(info->getContentLength(), 42u);
  EXPECT_EQ(header("location: http://h/\r\n"), 21u);
  EXPECT_EQ(info->getRedirection(), "");
  EXPECT_EQ(header("Location: http://h/\r\n"), 21u);
  EXPECT_EQ(info->getRedirection(), "http://h/\r\n");
}

TEST_F(HttpHelperTest, BodyFunctionNeedsAReceiver) {
  std::string body = "body";
  EXPECT_EQ(HttpHelper::downloadBodyFunc(body.data(), 1, 4, &helper_), 0u);
  helper_.setCallbacks(&receiver_);
  EXPECT_EQ(HttpHelper::downloadBodyFunc(body.data(), 2, 2, &helper_), 4u);
  receiver_.takeAtMost(3);
  EXPECT_EQ(HttpHelper::downloadBodyFunc(body.data(), 1, 4, &helper_), 3u);
}

TEST_F(HttpHelperTest, DirectBodyFunctionCollectsTextUpToAZeroByte) {
  std::string first("ab\0cd", 5);
  std::string second = "ef";
  EXPECT_EQ(HttpHelper::downloadDirectBodyFunc(first.data(), 1, 5, &helper_), 5u);
  EXPECT_EQ(HttpHelper::downloadDirectBodyFunc(second.data(), 2, 1, &helper_), 2u);
  EXPECT_EQ(helper_.getScratchText(), "abef");
  EXPECT_EQ(HttpHelper::downloadDirectBodyFunc(second.data(), 2, 1, nullptr), 0u);
}

TEST_F(HttpHelperTest, DummyBodyFunctionRefusesEverything) {
  std::string body = "body";
  EXPECT_EQ(HttpHelper::downloadDummyBodyFunc(body.data(), 1, 4, &helper_), 0u);
}

TEST_F(HttpHelperTest, ProgressFunctionAnswersWithTheSharedFlag) {
  HttpHelper other;
  HttpHelper::sDownloadCancelled = 0;
  EXPECT_EQ(HttpHelper::progressFunc(&helper_, 0, 1, 0, 0), 0);
  other.cancelDownload();
  EXPECT_EQ(HttpHelper::progressFunc(&helper_, 0, 1, 0, 0), -1);
  HttpHelper::sDownloadCancelled = 0;
}

class HttpHelperGet : public HttpHelperTest {};

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

class HttpHelperPost : public HttpHelperTest {
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
