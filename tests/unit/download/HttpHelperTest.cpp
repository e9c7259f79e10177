#include "tests/unit/download/HttpHelperFixture.h"

namespace {

using support::bareResponse;
using support::Gate;
using support::Script;
using testing::HasSubstr;

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

}  // namespace
