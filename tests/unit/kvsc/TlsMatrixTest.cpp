#include <gtest/gtest.h>

#include <memory>

#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_CERTIFICATE;
using kvsc::HTTP_ERROR_FAILED;
using support::CertificateSpec;
using support::kDay;
using support::ScriptedServer;
namespace pki = support::pki;

const Outcome kOtherHost{HTTP_ERROR_FAILED, "application verification failure"};

/// What the client makes of a server's certificate, over each protocol version.
class TlsMatrixTest : public testing::TestWithParam<int> {
 protected:
  Outcome meet(const support::Identity& identity, const std::string& host = "localhost") {
    server_ = std::make_unique<ScriptedServer>(support::TlsSettings{
        .identity = identity, .minVersion = GetParam(), .maxVersion = GetParam()});
    server_->always(support::Script::answer(support::okResponse("film")));
    return client_.get(server_->url("/", host));
  }

  /// The alert that the client has sent, as the server's library words it.
  std::string alert() const {
    const std::string text = server_->ended().handshakeError;
    const std::size_t at = text.find("alert ");
    return at == std::string::npos ? text : text.substr(at + 6);
  }

  bool requestArrived() const { return server_->ended().received.find("GET / HTTP/1.0") == 0; }

  CheckingClient client_;
  std::unique_ptr<ScriptedServer> server_;
};

INSTANTIATE_TEST_SUITE_P(Versions, TlsMatrixTest, testing::Values(TLS1_2_VERSION, TLS1_3_VERSION),
                         [](const auto& info) {
                           return info.param == TLS1_2_VERSION ? "Tls12" : "Tls13";
                         });

TEST_P(TlsMatrixTest, AValidCertificateIsAccepted) {
  EXPECT_EQ(meet(serverOf()), kSuccess);
  EXPECT_EQ(client_.body(), "film");
  EXPECT_EQ(server_->ended().protocol, GetParam() == TLS1_2_VERSION ? "TLSv1.2" : "TLSv1.3");
}

TEST_P(TlsMatrixTest, AValidRsaCertificateIsAccepted) {
  EXPECT_EQ(meet(serverOf({.key = support::KeyKind::kRsa})), kSuccess);
}

TEST_P(TlsMatrixTest, AnExpiredCertificateIsACertificateError) {
  EXPECT_EQ(meet(serverOf({.notBefore = -10 * kDay, .notAfter = -kDay})), kRefused);
  EXPECT_EQ(alert(), "certificate expired");
}

TEST_P(TlsMatrixTest, ACertificateThatIsNotYetValidIsACertificateError) {
  EXPECT_EQ(meet(serverOf({.notBefore = kDay, .notAfter = 10 * kDay})), kRefused);
  EXPECT_EQ(alert(), "bad certificate");
}

TEST_P(TlsMatrixTest, ASelfSignedCertificateIsACertificateError) {
  EXPECT_EQ(meet(pki::selfSigned()), kRefused);
  EXPECT_EQ(alert(), "unknown ca");
}

TEST_P(TlsMatrixTest, ACertificateOfAnUnknownAuthorityIsACertificateError) {
  EXPECT_EQ(meet(pki::issue(pki::authority("Stranger"))), kRefused);
  EXPECT_EQ(alert(), "unknown ca");
}

TEST_P(TlsMatrixTest, ACertificateOfAnotherEnvironmentsAuthorityIsACertificateError) {
  EXPECT_EQ(meet(serverOf({}, "PRODUCTION")), kRefused);
  EXPECT_EQ(alert(), "unknown ca");
}

// What the signature check leaves varies with the forger's key; it comes before the refusal, and
// the first error decides.
TEST_P(TlsMatrixTest, AForgedSignatureIsAPlainFailureAsItsOwnErrorsComeFirst) {
  const Outcome outcome = meet(pki::issue(pki::forgerOf(serverAuthority())));
  EXPECT_EQ(outcome.result, HTTP_ERROR_FAILED);
  EXPECT_TRUE(outcome.text.starts_with("SSL_ERROR_SSL\n  error:02")) << outcome;
  EXPECT_TRUE(
      outcome.text.ends_with("\n  error:0A000086:SSL routines::certificate verify failed\n"))
      << outcome;
  EXPECT_EQ(alert(), "decrypt error");
}

TEST_P(TlsMatrixTest, AChainWithAnIntermediateIsACertificateErrorAsOnlyOneIssuerIsAllowed) {
  EXPECT_EQ(meet(pki::issue(pki::intermediate(serverAuthority(), "Between"))), kRefused);
  EXPECT_EQ(alert(), "unknown ca");
}

TEST_P(TlsMatrixTest, ATooShortKeyIsACertificateError) {
  EXPECT_EQ(meet(serverOf({.key = support::KeyKind::kWeakRsa})), kRefused);
}

TEST_P(TlsMatrixTest, AnotherHostFailsOnceConnectedWithoutARequest) {
  EXPECT_EQ(meet(serverOf(), "127.0.0.1"), kOtherHost);
  EXPECT_TRUE(server_->ended().handshakeDone);
  EXPECT_EQ(server_->ended().received, "");
}

TEST_P(TlsMatrixTest, TheNameIsComparedLetterByLetter) {
  EXPECT_EQ(meet(serverOf({.commonName = "Localhost"})), kOtherHost);
}

TEST_P(TlsMatrixTest, AStarIsNoWildcard) {
  EXPECT_EQ(meet(serverOf({.commonName = "*", .dnsNames = {"*", "local*"}})), kOtherHost);
}

TEST_P(TlsMatrixTest, AMatchingCommonNameIsEnoughBesideAnotherAlternativeName) {
  EXPECT_EQ(meet(serverOf({.dnsNames = {"elsewhere.example"}})), kSuccess);
}

TEST_P(TlsMatrixTest, AMatchingAlternativeNameIsEnoughBesideAnotherCommonName) {
  EXPECT_EQ(meet(serverOf({.commonName = "elsewhere", .dnsNames = {"first.example", "localhost"}})),
            kSuccess);
}

TEST_P(TlsMatrixTest, NeitherNameMatchingFails) {
  EXPECT_EQ(meet(serverOf({.commonName = "elsewhere", .dnsNames = {"elsewhere.example"}})),
            kOtherHost);
}

TEST_P(TlsMatrixTest, AnAlternativeNameMatchesWithoutACommonName) {
  EXPECT_EQ(meet(serverOf({.commonName = std::nullopt, .dnsNames = {"localhost"}})), kSuccess);
}

TEST_P(TlsMatrixTest, KeptQuirkWithoutACommonNameAnyHostWillDo) {
  EXPECT_EQ(meet(serverOf({.commonName = std::nullopt})), kSuccess);
  EXPECT_EQ(meet(serverOf({.commonName = std::nullopt, .dnsNames = {"elsewhere"}})), kSuccess);
}

TEST_P(TlsMatrixTest, AnAddressIsFoundInTheCommonName) {
  EXPECT_EQ(meet(serverOf({.commonName = "127.0.0.1"}), "127.0.0.1"), kSuccess);
}

TEST_P(TlsMatrixTest, AnAddressAmongTheAlternativeNamesIsNoDnsName) {
  EXPECT_EQ(meet(serverOf({.addresses = {"127.0.0.1"}}), "127.0.0.1"), kOtherHost);
}

TEST_P(TlsMatrixTest, ANulInTheCommonNameNeverMatches) {
  EXPECT_EQ(meet(serverOf({.commonName = std::string("localhost\0.evil.example", 23)})),
            kOtherHost);
  EXPECT_EQ(meet(serverOf({.commonName = std::string("localhost\0", 10)})), kOtherHost);
}

TEST_P(TlsMatrixTest, ANulInAnAlternativeNameNeverMatches) {
  EXPECT_EQ(meet(serverOf({.commonName = "elsewhere",
                           .dnsNames = {std::string("localhost\0.evil.example", 23)}})),
            kOtherHost);
}

TEST_P(TlsMatrixTest, AServerWithoutCheckedCertificateMayHaveAnyCertificate) {
  client_.session().setCheckCertificate(false);
  EXPECT_EQ(meet(pki::selfSigned({.commonName = "elsewhere", .notAfter = -kDay / 2})), kSuccess);
  EXPECT_TRUE(requestArrived());
}

TEST(AnonymousServerTest, AServerWithoutAnyCertificateFails) {
  ScriptedServer server(
      support::TlsSettings{.maxVersion = TLS1_2_VERSION, .cipherList = "aNULL@SECLEVEL=0"});
  server.always(support::Script::answer(support::okResponse("film")));
  CheckingClient client;
  client.session().setCipherList("aNULL@SECLEVEL=0");
  EXPECT_EQ(client.get(server.url()), kOtherHost);
  EXPECT_TRUE(server.ended().handshakeDone) << server.ended().handshakeError;
  EXPECT_EQ(server.ended().received, "");
}

}  // namespace
