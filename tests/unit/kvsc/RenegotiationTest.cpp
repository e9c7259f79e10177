#include <gtest/gtest.h>

#include "kvsc/OpenSsl.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using support::Connection;
using support::Script;
using support::ScriptedServer;

/// A server of TLS 1.2 that wants another handshake once it knows the request.
class RenegotiationTest : public testing::Test {
 protected:
  /// Answers after `count` further handshakes, each begun by `before`.
  static Script answerAfter(
      int count, const Script::Step& before = [](Connection&) {}) {
    Script script;
    script.readRequest();
    for (int i = 0; i < count; ++i) {
      script.then(before).then([](Connection& connection) { connection.renegotiate(); });
    }
    return script.send(support::okResponse("film"));
  }

  Outcome getAfter(const Script& script) {
    server_.next(script);
    return client_.get(server_.url());
  }

  ScriptedServer server_{
      support::TlsSettings{.identity = serverOf(), .maxVersion = TLS1_2_VERSION}};
  CheckingClient client_;
};

TEST_F(RenegotiationTest, AVerifiedServerIsShownTheCertificateThatItAsksForLate) {
  EXPECT_EQ(getAfter(answerAfter(1)), kSuccess);
  EXPECT_EQ(client_.body(), "film");
  EXPECT_EQ(server_.ended().renegotiations, 1);
  EXPECT_NE(server_.ended().clientSubject, "");
}

TEST_F(RenegotiationTest, ItMayAskUpToTheLimit) {
  EXPECT_EQ(getAfter(answerAfter(kvsc::kMostRenegotiations)), kSuccess);
}

TEST_F(RenegotiationTest, OneMoreIsRefused) {
  EXPECT_EQ(getAfter(answerAfter(kvsc::kMostRenegotiations + 1)).result, kvsc::HTTP_ERROR_FAILED);
  EXPECT_EQ(server_.ended().renegotiations, kvsc::kMostRenegotiations);
  EXPECT_EQ(client_.body(), "");
}

TEST_F(RenegotiationTest, AnUnverifiedServerIsRefused) {
  client_.session().setCheckCertificate(false);
  EXPECT_EQ(getAfter(answerAfter(1)).result, kvsc::HTTP_ERROR_FAILED);
  EXPECT_EQ(server_.ended().renegotiations, 0);
}

TEST_F(RenegotiationTest, AServerThatTurnsIntoAnUntrustedOneIsRefused) {
  const auto turn = [](Connection& connection) { connection.present(support::pki::selfSigned()); };
  EXPECT_EQ(getAfter(answerAfter(1, turn)).result, kvsc::HTTP_ERROR_FAILED);
  EXPECT_EQ(server_.ended().renegotiations, 0);
}

TEST_F(RenegotiationTest, AServerThatTurnsIntoAnotherHostIsRefused) {
  const auto turn = [](Connection& connection) {
    connection.present(serverOf({.commonName = "elsewhere"}));
  };
  EXPECT_EQ(getAfter(answerAfter(1, turn)).result, kvsc::HTTP_ERROR_FAILED);
  EXPECT_EQ(server_.ended().renegotiations, 0);
  EXPECT_EQ(server_.ended().handshakeError,
            "error:0A000410:SSL routines::sslv3 alert handshake failure");
}

}  // namespace
