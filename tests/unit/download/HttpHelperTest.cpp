#include "tests/unit/download/HttpHelperFixture.h"

namespace {

using support::bareResponse;
using support::Gate;
using support::Script;

using HttpHelperTest = support::HttpHelperTest;
using HttpHelperInfo = support::HttpHelperTest;

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

TEST_F(HttpHelperInfo, JudgesTheLengthThatTheClientKnows) {
  struct Row {
    const char* headers;
    HttpResultType result;
    unsigned long long length;
  };
  const Row rows[] = {{"Content-Length: 42\r\nContent-length: 0\r\n", HTTP_RESULT_FAILED, 0},
                      {"Content-length:42\r\n", HTTP_RESULT_OK, 2},
                      {"Content-length: none\r\n", HTTP_RESULT_FAILED, 0}};
  for (const Row& row : rows) {
    const Result info = infoOf(bareResponse("200 OK", row.headers));
    EXPECT_EQ(info->getResult(), row.result) << row.headers;
    EXPECT_EQ(info->getContentLength(), row.length) << row.headers;
    EXPECT_EQ(info->getErrorDescription(),
              row.length == 0 ? "Empty response from server." : std::string());
  }
}

TEST_F(HttpHelperInfo, TakesANegativeLengthForAHugeOne) {
  const Result info = infoOf(bareResponse("200 OK", "Content-Length: -5\r\n"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(info->getContentLength(), 18446744073709551611ull);
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

TEST_F(HttpHelperInfo, IsARedirectWithALocationInCapitals) {
  const Result info = infoOf(bareResponse("200 OK", "Location: HTTP://h/a\r\n"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_REDIRECT);
  EXPECT_EQ(info->getRedirection(), "HTTP://h/a\r\n");
  EXPECT_EQ(info->getReturnCode(), 200u);
}

TEST_F(HttpHelperInfo, RemembersTheHeadersOfA307OnTheWay) {
  server_.next(Script::answer(
      bareResponse("307 Temporary Redirect", "Location: " + server_.url("/b") + "\r\n")));
  const Result info = infoOf(bareResponse("200 OK", "Content-Length: 42\r\n"));
  EXPECT_EQ(info->getResult(), HTTP_RESULT_OK);
  EXPECT_EQ(info->getRedirection(), server_.url("/b") + "\r\n");
  EXPECT_EQ(server_.connectionCount(), 2u);
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
  EXPECT_EQ(info->getContentLength(), 42u);
  EXPECT_EQ(info->getHttpCallbacks(), nullptr);
}

TEST_F(HttpHelperInfo, OfAnEmptyAnswerFails) {
  const Result info = infoOf("");
  EXPECT_EQ(info->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(info->getErrorDescription(), "Empty response from server.");
  EXPECT_EQ(info->getReturnCode(), 0u);
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

TEST_F(HttpHelperInfo, AsksWithExactlyThisRequest) {
  infoOf(bareResponse("200 OK", "Content-Length: 42\r\n"));
  EXPECT_EQ(server_.requests().at(0),
            "HEAD /film.avi HTTP/1.0\r\nHost: localhost\r\nresponseType: text/xml\r\n"
            "Connection: close\r\n\r\n");
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

TEST_F(HttpHelperInfo, IsNotHinderedByAnEarlierCancel) {
  helper_.cancelDownload();
  EXPECT_EQ(infoOf(bareResponse("200 OK", "Content-Length: 42\r\n"))->getResult(), HTTP_RESULT_OK);
}

TEST_F(HttpHelperInfo, KeepsTheLastReturnCodeOnATransportFailure) {
  infoOf(bareResponse("200 OK", "Content-Length: 42\r\n"));
  server_.always(Script().readRequest().reset());
  const Result info(helper_.getInfo());
  EXPECT_EQ(info->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(info->getReturnCode(), 200u);
  helper_.setup(server_.url("/film.avi"), "");
  EXPECT_EQ(Result(helper_.getInfo())->getReturnCode(), 0u);
}

TEST(HttpHelper, HoldsNothingAtFirst) {
  HttpHelper fresh;
  EXPECT_EQ(fresh.getSession(), nullptr);
  EXPECT_EQ(fresh.getScratchText(), "");
  const std::unique_ptr<HttpResult> info(fresh.getInfo());
  EXPECT_EQ(info->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(info->getReturnCode(), 0u);
  EXPECT_EQ(info->getHttpCallbacks(), nullptr);
  EXPECT_EQ(std::unique_ptr<HttpResult>(fresh.get(""))->getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(std::unique_ptr<HttpResult>(fresh.post())->getResult(), HTTP_RESULT_OK);
}

TEST(HttpHelper, RunsNothingWithoutASetup) {
  HttpHelper fresh;
  fresh.runThread(nullptr);
  EXPECT_EQ(fresh.getSession(), nullptr);
}

TEST_F(HttpHelperTest, RunsNothingThatWasNotAskedFor) {
  helper_.runThread(nullptr);
  EXPECT_EQ(server_.connectionCount(), 0u);
}

TEST_F(HttpHelperTest, SetupPreparesItsSession) {
  const auto isAsSetUp = [this] {
    const kvsc::SSLSession& session = *helper_.getSession();
    EXPECT_EQ(session.getMaxRedirectCount(), 10);
    EXPECT_EQ(session.getRedirectCount(), 0);
    EXPECT_EQ(session.getDownloadLoopSleep(), 1);
    EXPECT_EQ(session.getUserAgent(), "");
  };
  isAsSetUp();
  server_.next(
      Script::answer(bareResponse("302 Found", "Location: " + server_.url("/b") + "\r\n")));
  EXPECT_EQ(infoOf(bareResponse("200 OK", "Content-Length: 42\r\n"))->getResult(), HTTP_RESULT_OK);
  isAsSetUp();
}

TEST_F(HttpHelperTest, GetPreparesItsSession) {
  server_.always(Script::answer(support::okResponse("the body")));
  EXPECT_EQ(get()->getResult(), HTTP_RESULT_OK);
  ASSERT_TRUE(log_.waitFor("complete 1"));
  EXPECT_EQ(helper_.getSession()->getMaxRedirectCount(), 1);
  EXPECT_EQ(helper_.getSession()->getDownloadLoopSleep(), 1);
  EXPECT_EQ(helper_.getSession()->getUserAgent(), "Vesk Player 2.0");
  EXPECT_FALSE(helper_.getSession()->getCheckCertificate());
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

TEST_F(HttpHelperTest, HeaderLinesHaveCountTimesSizeBytes) {
  const Result info = infoOf(bareResponse("200 OK"));
  std::string line = "Content-Length: 4299";
  EXPECT_EQ(HttpHelper::downloadHeaderFunc(line.data(), 3, 6, &helper_), 18u);
  EXPECT_EQ(info->getContentLength(), 42u);
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

}  // namespace
