#include <gtest/gtest.h>

#include "tests/support/Promptness.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_FAILED;
using std::chrono::milliseconds;
using support::Script;
using support::ScriptedServer;

constexpr int kLimit = 150;
constexpr milliseconds kInTime = milliseconds(kLimit) + support::kPromptly;

/// A server that leaves the client waiting, and limits that are short.
class DeadlinesTest : public testing::Test {
 protected:
  DeadlinesTest() {
    client_.session().setWaitTimeout(kLimit);
    plainClient_.session().setWaitTimeout(kLimit);
  }

  /// The outcome of an exchange that never ends before the limit, nor long after it.
  Outcome getInTime(CheckingClient& client, const std::string& url) {
    Outcome outcome;
    const auto attempt = [&] {
      const milliseconds took = support::timeOf([&] { outcome = client.get(url); });
      EXPECT_GE(took, milliseconds(kLimit));
      return took;
    };
    EXPECT_LT(support::bestTime(attempt, kInTime), kInTime);
    return outcome;
  }

  static std::string url(const std::string& scheme, std::uint16_t port) {
    return scheme + "://127.0.0.1:" + std::to_string(port) + "/";
  }

  static Outcome timedOut(const std::string& text, const std::string& what) {
    return {HTTP_ERROR_FAILED,
            text + "\n " + what + " error:8000006E:system library::Connection timed out\n"};
  }

  ScriptedServer plain_;
  CheckingClient client_;
  PlainClient plainClient_;
};

TEST_F(DeadlinesTest, AConnectThatNobodyAnswersEnds) {
  const support::SilentPort silent;
  const std::string where = "connecting to 127.0.0.1:" + std::to_string(silent.port());
  EXPECT_EQ(getInTime(plainClient_, url("http", silent.port())), timedOut("", where));
}

TEST_F(DeadlinesTest, AHandshakeThatNobodyAnswersEnds) {
  plain_.always(Script().stall());
  EXPECT_EQ(getInTime(client_, url("https", plain_.port())),
            timedOut("SSL_ERROR_SYSCALL", "reading"));
}

TEST_F(DeadlinesTest, AProxyThatDoesNotAnswerEnds) {
  plain_.always(Script().readRequest().stall());
  client_.session().setProxyURL("127.0.0.1");
  client_.session().setProxyPort(plain_.port());
  EXPECT_EQ(getInTime(client_, "https://films.example/"), timedOut("", "reading"));
}

TEST_F(DeadlinesTest, ARequestThatNobodyAnswersEnds) {
  plain_.always(Script().readRequest().stall());
  EXPECT_EQ(getInTime(plainClient_, url("http", plain_.port())), timedOut("", "reading"));
}

TEST_F(DeadlinesTest, ARequestThatNobodyAnswersUnderTlsEnds) {
  ScriptedServer server(support::TlsSettings{.identity = serverOf()});
  server.always(Script().readRequest().stall());
  EXPECT_EQ(getInTime(client_, server.url()), timedOut("", "reading"));
}

TEST_F(DeadlinesTest, ABodyThatStopsComingIsAFailure) {
  plain_.always(Script().readRequest().send(support::okResponse("begin")).stall());
  EXPECT_EQ(getInTime(plainClient_, url("http", plain_.port())).result, HTTP_ERROR_FAILED);
  EXPECT_EQ(plainClient_.body(), "begin");
}

TEST_F(DeadlinesTest, ABodyThatStopsComingUnderTlsIsAFailure) {
  ScriptedServer server(support::TlsSettings{.identity = serverOf()});
  server.always(Script().readRequest().send(support::okResponse("begin")).stall());
  EXPECT_EQ(getInTime(client_, server.url()).result, HTTP_ERROR_FAILED);
  EXPECT_EQ(client_.body(), "begin");
}

TEST_F(DeadlinesTest, ADrippingHandshakeEndsAtTheTotalLimit) {
  const std::string record = std::string("\x16\x03\x03\x10\x00", 5) + std::string(4096, '\0');
  plain_.always(Script().readBytes(1).drip(record, milliseconds(20)));
  client_.session().setWaitTimeout(0);
  client_.session().setExchangeTimeout(kLimit);
  EXPECT_EQ(getInTime(client_, url("https", plain_.port())),
            timedOut("SSL_ERROR_SYSCALL", "reading"));
}

TEST_F(DeadlinesTest, AServerThatTakesNoBytesEnds) {
  const std::string data(64 << 20, 'x');
  plain_.next(Script().stall());
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_NONE;
  plainClient_.client().httpPost(url("http", plain_.port()), data, &result, &plainClient_.session(),
                                 "", "", kvsc::SSLV3, true);
  EXPECT_EQ(result, HTTP_ERROR_FAILED);
  EXPECT_EQ(plainClient_.client().getErrorString(), "SSLClient::writeData failed.");
}

TEST_F(DeadlinesTest, AServerThatIsMerelySlowIsWaitedFor) {
  plain_.next(Script().readRequest().drip(support::okResponse("0123456789"), milliseconds(5)));
  plainClient_.session().setWaitTimeout(5000);
  EXPECT_EQ(plainClient_.get(url("http", plain_.port())), kSuccess);
}

TEST_F(DeadlinesTest, TheTotalLimitStartsAgainWithEachReadOfTheBody) {
  const std::string headers = support::okResponse("");
  const std::string body(60, 'x');  // takes longer than the limit
  plain_.next(
      Script().readRequest().sendPieces(headers, headers.size()).drip(body, milliseconds(25)));
  plainClient_.session().setWaitTimeout(5000);
  plainClient_.session().setExchangeTimeout(1000);
  EXPECT_EQ(plainClient_.get(url("http", plain_.port())), kSuccess);
  EXPECT_EQ(plainClient_.body(), body);
}

}  // namespace
