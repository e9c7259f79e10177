#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/sslerr.h>

#include "tests/support/Loopback.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_CERTIFICATE;
using kvsc::HTTP_ERROR_FAILED;
using support::ScriptedServer;
using support::TlsSettings;

/// A server of the versions from `min` to `max` that answers everybody.
class TlsProtocolsTest : public testing::Test {
 protected:
  Outcome meet(kvsc::SSLMethodProtocolType method, int min, int max) {
    server_ = std::make_unique<ScriptedServer>(
        TlsSettings{.identity = serverOf(), .minVersion = min, .maxVersion = max});
    server_->always(support::Script::answer(support::okResponse("film")));
    client_.session().setSslMethod(method);
    return client_.get(server_->url());
  }

  CheckingClient client_;
  std::unique_ptr<ScriptedServer> server_;
};

TEST_F(TlsProtocolsTest, Sslv3StandsForTodaysTls) {
  EXPECT_EQ(meet(kvsc::SSLV3, TLS1_2_VERSION, TLS1_3_VERSION), kSuccess);
  EXPECT_EQ(server_->ended().protocol, "TLSv1.3");
  EXPECT_EQ(meet(kvsc::SSLV3, TLS1_VERSION, TLS1_2_VERSION), kSuccess);
  EXPECT_EQ(server_->ended().protocol, "TLSv1.2");
}

TEST_F(TlsProtocolsTest, Sslv23StandsForTodaysTls) {
  EXPECT_EQ(meet(kvsc::SSLV23, TLS1_2_VERSION, TLS1_3_VERSION), kSuccess);
  EXPECT_EQ(server_->ended().protocol, "TLSv1.3");
  EXPECT_EQ(meet(kvsc::SSLV23, TLS1_VERSION, TLS1_2_VERSION), kSuccess);
  EXPECT_EQ(server_->ended().protocol, "TLSv1.2");
}

TEST_F(TlsProtocolsTest, NeitherSpeaksAnythingOlder) {
  for (const auto method : {kvsc::SSLV23, kvsc::SSLV3})
    EXPECT_EQ(meet(method, TLS1_VERSION, TLS1_1_VERSION).result, HTTP_ERROR_FAILED);
}

TEST_F(TlsProtocolsTest, Tlsv1SpeaksTls10) {
  EXPECT_EQ(meet(kvsc::TLSV1, TLS1_VERSION, TLS1_3_VERSION), kSuccess);
  EXPECT_EQ(server_->ended().protocol, "TLSv1");
}

TEST_F(TlsProtocolsTest, Tlsv1ChecksTheCertificateAllTheSame) {
  ScriptedServer server(TlsSettings{.identity = support::pki::selfSigned(),
                                    .minVersion = TLS1_VERSION,
                                    .maxVersion = TLS1_VERSION});
  client_.session().setSslMethod(kvsc::TLSV1);
  EXPECT_EQ(client_.get(server.url()), (Outcome{HTTP_ERROR_CERTIFICATE, kVerifyFailed}));
}

TEST_F(TlsProtocolsTest, Tlsv1FailsWithTodaysServers) {
  EXPECT_EQ(meet(kvsc::TLSV1, TLS1_2_VERSION, TLS1_3_VERSION),
            (Outcome{HTTP_ERROR_FAILED,
                     "SSL_ERROR_SSL\n SSL alert number 70 error:0A00042E:SSL routines::tlsv1 alert "
                     "protocol version\n"}));
}

TEST_F(TlsProtocolsTest, Sslv2FailsBeforeAnythingIsSent) {
  const Outcome outcome = meet(kvsc::SSLV2, TLS1_2_VERSION, TLS1_3_VERSION);
  EXPECT_EQ(outcome.result, HTTP_ERROR_FAILED);
  EXPECT_NE(outcome.text, "");
  EXPECT_EQ(server_->connectionCount(), 0u);
}

TEST_F(TlsProtocolsTest, AnUnknownMethodFailsBeforeAnythingIsSent) {
  const Outcome outcome =
      meet(static_cast<kvsc::SSLMethodProtocolType>(4), TLS1_2_VERSION, TLS1_3_VERSION);
  EXPECT_EQ(outcome.result, HTTP_ERROR_FAILED);
  EXPECT_EQ(server_->connectionCount(), 0u);
}

TEST_F(TlsProtocolsTest, ACipherListChoosesTheSuite) {
  client_.session().setCipherList("ECDHE-ECDSA-CHACHA20-POLY1305");
  EXPECT_EQ(meet(kvsc::SSLV3, TLS1_2_VERSION, TLS1_2_VERSION), kSuccess);
  EXPECT_EQ(server_->ended().cipher, "ECDHE-ECDSA-CHACHA20-POLY1305");
}

TEST_F(TlsProtocolsTest, ACipherListThatMatchesNothingFailsWithoutATextOfItsOwn) {
  client_.session().setCipherList("NO-SUCH-SUITE");
  EXPECT_EQ(meet(kvsc::SSLV3, TLS1_2_VERSION, TLS1_3_VERSION),
            (Outcome{HTTP_ERROR_FAILED, "\n  error:0A0000B9:SSL routines::no cipher match\n"}));
  EXPECT_EQ(server_->connectionCount(), 0u);
}

TEST_F(TlsProtocolsTest, ACipherListIsNotReadWhenCertificatesAreNotChecked) {
  client_.session().setCheckCertificate(false);
  client_.session().setCipherList("NO-SUCH-SUITE");
  EXPECT_EQ(meet(kvsc::SSLV3, TLS1_2_VERSION, TLS1_3_VERSION), kSuccess);
}

TEST_F(TlsProtocolsTest, NoCommonCipherFails) {
  client_.session().setCipherList("ECDHE-RSA-AES128-GCM-SHA256");
  EXPECT_EQ(meet(kvsc::SSLV3, TLS1_2_VERSION, TLS1_2_VERSION),
            (Outcome{HTTP_ERROR_FAILED,
                     "SSL_ERROR_SSL\n SSL alert number 40 error:0A000410:SSL routines::sslv3 alert "
                     "handshake failure\n"}));
}

void leaveOldError(int reason) { ERR_raise(ERR_LIB_SSL, reason); }

TEST_F(TlsProtocolsTest, AnOldErrorInTheQueueDoesNotSpoilAConnection) {
  leaveOldError(SSL_R_CERTIFICATE_VERIFY_FAILED);
  EXPECT_EQ(meet(kvsc::SSLV3, TLS1_2_VERSION, TLS1_3_VERSION), kSuccess);
}

TEST_F(TlsProtocolsTest, AnOldCertificateErrorDoesNotTurnAnotherFailureIntoOne) {
  const support::RefusingPort refusing;
  leaveOldError(SSL_R_CERTIFICATE_VERIFY_FAILED);
  const Outcome outcome = client_.get("https://localhost:" + std::to_string(refusing.port()) + "/");
  EXPECT_EQ(outcome.result, HTTP_ERROR_FAILED);
  EXPECT_EQ(outcome.text.find("certificate verify failed"), std::string::npos) << outcome;
}

TEST_F(TlsProtocolsTest, AnOldErrorDoesNotHideACertificateError) {
  ScriptedServer server(TlsSettings{.identity = support::pki::selfSigned()});
  leaveOldError(SSL_R_BAD_LENGTH);
  EXPECT_EQ(client_.get(server.url()), (Outcome{HTTP_ERROR_CERTIFICATE, kVerifyFailed}));
}

TEST_F(TlsProtocolsTest, AServerThatSpeaksNoTlsFails) {
  ScriptedServer server;
  server.next(support::Script().send("220 mail.example ready\r\n").readToEnd());
  EXPECT_EQ(
      client_.get("https://localhost:" + std::to_string(server.port()) + "/"),
      (Outcome{HTTP_ERROR_FAILED, handshakeText("0A00010B:SSL routines::wrong version number")}));
}

TEST_F(TlsProtocolsTest, AServerThatHangsUpInTheHandshakeFails) {
  ScriptedServer server;
  server.next(support::Script().readBytes(1).close());
  EXPECT_EQ(client_.get("https://localhost:" + std::to_string(server.port()) + "/"),
            (Outcome{HTTP_ERROR_FAILED,
                     handshakeText("0A000126:SSL routines::unexpected eof while reading")}));
}

TEST_F(TlsProtocolsTest, AServerThatResetsInTheHandshakeFails) {
  ScriptedServer server;
  server.next(support::Script().readBytes(1).reset());
  const Outcome outcome = client_.get("https://localhost:" + std::to_string(server.port()) + "/");
  EXPECT_EQ(outcome.result, HTTP_ERROR_FAILED);
  EXPECT_EQ(outcome.text.substr(0, 17), "SSL_ERROR_SYSCALL") << outcome;
}

}  // namespace
