#include <gtest/gtest.h>

#include <cerrno>

#include "playerx/app/reasons/ServerProbe.h"
#include "playerx/app/reasons/TransferReason.h"
#include "tests/support/ScriptedServer.h"

namespace playerx::reasons {
namespace {

using support::Script;

ProbeResult probed(const CurlEnd& end, long status = 0, std::int64_t length = -1) {
  return {"http://films.test/a.avi", end, "", status, length};
}

std::string codeOf(const ProbeResult& result) {
  const auto explanation = explainProbe(result);
  return explanation ? explanation->code() : "";
}

TEST(ServerProbeTest, EachWayToFailHasACodeOfItsOwn) {
  EXPECT_EQ(codeOf(probed({CURLE_COULDNT_RESOLVE_HOST})), "no_such_host");
  EXPECT_EQ(codeOf(probed({CURLE_COULDNT_CONNECT, 0, ECONNREFUSED})), "refused");
  EXPECT_EQ(codeOf(probed({CURLE_PEER_FAILED_VERIFICATION})), "certificate");
  EXPECT_EQ(codeOf(probed({CURLE_SSL_CONNECT_ERROR})), "tls");
  EXPECT_EQ(codeOf(probed({CURLE_OPERATION_TIMEDOUT})), "timeout");
  EXPECT_EQ(codeOf(probed({CURLE_TOO_MANY_REDIRECTS})), "redirect_loop");
  EXPECT_EQ(codeOf(probed({CURLE_FAILED_INIT})), "internal");
  EXPECT_EQ(codeOf(probed({CURLE_OK}, 404)), "http_404");
  EXPECT_EQ(codeOf(probed({CURLE_OK}, 200)), "no_length");
  EXPECT_EQ(codeOf(probed({CURLE_OK}, 200, 0)), "empty_file");
}

TEST(ServerProbeTest, AServerThatAnswersAsItShouldExplainsNothing) {
  EXPECT_EQ(explainProbe(probed({CURLE_OK}, 200, 5)), std::nullopt);
}

TEST(ServerProbeTest, AWebPageIsNoFilm) {
  ProbeResult page = probed({CURLE_OK}, 200, 5);
  page.type = "text/HTML; charset=utf-8";
  EXPECT_EQ(codeOf(page), "web_page");
}

TEST(ServerProbeTest, TheServerBehindARedirectIsNamed) {
  ProbeResult result = probed({CURLE_OK, 1}, 404);
  result.last = "http://cdn.test/b.avi";
  EXPECT_EQ(explainProbe(result)->happened, "cdn.test has no film at this address (404)");
}

TEST(ServerProbeTest, ARedirectWithoutAPlaceIsSaid) {
  EXPECT_EQ(explainProbe(probed({CURLE_OK}, 302, 0))->sentence(),
            "films.test sends the player on without saying where to (302); ask the provider.");
}

TEST(ServerProbeTest, AServerThatWantsALoginForTheSizeIsNotOneForWhichALoginHelps) {
  const auto explanation = explainProbe(probed({CURLE_OK}, 401));
  EXPECT_EQ(explanation->code(), "http_401");
  EXPECT_EQ(explanation->sentence(),
            "films.test wants a user name and password even to say how long the film is (HEAD, "
            "401), so it cannot be downloaded; ask the provider for a direct address.");
}

TEST(ServerProbeTest, AServerThatRefusesTheQuestionForTheSizeIsNamed) {
  for (const int status : {405, 501}) {
    const auto explanation = explainProbe(probed({CURLE_OK}, status));
    EXPECT_EQ(explanation->sentence(),
              "films.test does not answer the question of how long a film is (HEAD, " +
                  std::to_string(status) +
                  "), so it cannot be downloaded; ask the provider for a direct address.");
  }
}

TEST(ServerProbeTest, AProbeSaysWhatATransferThatEndedSoSays) {
  const CurlEnd ends[] = {{CURLE_SSL_CACERT_BADFILE},
                          {CURLE_TOO_MANY_REDIRECTS},
                          {CURLE_SSL_CONNECT_ERROR},
                          {CURLE_COULDNT_CONNECT, 0, ETIMEDOUT},
                          {CURLE_PROXY},
                          {CURLE_UNSUPPORTED_PROTOCOL, 1},
                          {CURLE_FAILED_INIT},
                          {CURLE_RECV_ERROR, 0, 0, 407}};
  for (const CurlEnd& end : ends) {
    TransferReport report;
    report.failure = failureOf(end);
    EXPECT_EQ(explainProbe(probed(end)), explainTransfer(report, "http://films.test/a.avi"))
        << end.code;
  }
}

TEST(ServerProbeTest, AProbeThatBreaksOffHasNoProperAnswer) {
  for (const CURLcode code : {CURLE_PARTIAL_FILE, CURLE_RECV_ERROR, CURLE_GOT_NOTHING}) {
    EXPECT_EQ(codeOf(probed({code})), "bad_answer");
  }
}

TEST(ServerProbeTest, AServerIsAskedForTheHeadOfTheFilm) {
  support::ScriptedServer server;
  server.always(Script::answer("HTTP/1.1 200 OK\r\nContent-Length: 12\r\n\r\n"));
  const ProbeResult result = serverProbe({})(server.url("/a.avi"), {});
  EXPECT_EQ(result.status, 200);
  EXPECT_EQ(result.length, 12);
  EXPECT_TRUE(server.requests().at(0).starts_with("HEAD /a.avi "));
}

TEST(ServerProbeTest, AServerThatRefusesOurCertificateIsNotBlamedForItsOwn) {
  constexpr char kExpired = 45;
  constexpr char kRequired = 116;
  for (const char alert : {kExpired, kRequired}) {
    support::ScriptedServer server;
    server.always(Script().readBytes(5).send({0x15, 3, 3, 0, 2, 2, alert}).close());
    const std::string url = "https://localhost:" + std::to_string(server.port()) + "/a.avi";
    const auto explanation = explainProbe(serverProbe({})(url, {}));
    ASSERT_TRUE(explanation);
    EXPECT_EQ(explanation->code(), "tls") << int{alert} << explanation->sentence();
  }
}

TEST(ServerProbeTest, AStopEndsAProbeOfASilentServer) {
  support::ScriptedServer server;
  server.always(Script().readRequest().stall());
  std::stop_source source;
  source.request_stop();
  const ProbeResult result = serverProbe({})(server.url("/a.avi"), source.get_token());
  EXPECT_EQ(result.end.code, CURLE_ABORTED_BY_CALLBACK);
}

TEST(ServerProbeTest, WhatIsNoWebAddressIsNotAsked) {
  for (const char* address : {"", "ftp://h/a.avi", "film.avi"}) {
    EXPECT_EQ(codeOf(serverProbe({})(address, {})), "unsupported_url") << address;
  }
}

}  // namespace
}  // namespace playerx::reasons
