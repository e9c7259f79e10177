#include <gtest/gtest.h>

#include <memory>

#include "tests/support/Loopback.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TempDir.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_CERTIFICATE;
using support::CrlSpec;
using support::kDay;
using support::ScriptedServer;
namespace pki = support::pki;

/// What the client makes of revocation lists, over each protocol version.
class RevocationTest : public testing::TestWithParam<int> {
 protected:
  RevocationTest()
      : identity_(serverOf()),
        server_(support::TlsSettings{
            .identity = identity_, .minVersion = GetParam(), .maxVersion = GetParam()}) {
    server_.always(support::Script::answer(support::okResponse("film")));
  }

  Outcome getWithLists(const std::string& pem) {
    client_.session().setCrlFile(folder_.write("lists.pem", pem));
    return client_.get(server_.url());
  }

  Outcome getWithList(const CrlSpec& spec) { return getWithLists(pki::revocationList(spec)); }

  /// A text of the list check, followed by the handshake's own.
  static Outcome refusedFor(const std::string& text) {
    return {HTTP_ERROR_CERTIFICATE,
            text + "\n  error:0A000086:SSL routines::certificate verify failed\n"};
  }

  std::string alert() const {
    const std::string text = server_.ended().handshakeError;
    const std::size_t at = text.find("alert ");
    return at == std::string::npos ? text : text.substr(at + 6);
  }

  const support::Identity authority_ = serverAuthority();
  const std::string issuer_ = authority_.subject();
  const support::Identity identity_;
  support::TempDir folder_;
  ScriptedServer server_;
  CheckingClient client_;
};

INSTANTIATE_TEST_SUITE_P(Versions, RevocationTest, testing::Values(TLS1_2_VERSION, TLS1_3_VERSION),
                         [](const auto& info) {
                           return info.param == TLS1_2_VERSION ? "Tls12" : "Tls13";
                         });

TEST_P(RevocationTest, AListThatDoesNotNameTheCertificateLetsItPass) {
  EXPECT_EQ(getWithList({.issuer = authority_, .revoked = {identity_.serial() + 1}}), kSuccess);
}

TEST_P(RevocationTest, ARevokedCertificateIsACertificateError) {
  EXPECT_EQ(getWithList({.issuer = authority_, .revoked = {7, identity_.serial(), 9}}),
            refusedFor(identity_.subject() + " was revoked by " + issuer_));
  EXPECT_EQ(alert(), "certificate revoked");
}

TEST_P(RevocationTest, AnExpiredListIsACertificateError) {
  EXPECT_EQ(getWithList({.issuer = authority_, .lastUpdate = -9 * kDay, .nextUpdate = -kDay}),
            refusedFor("Expired CRL issued by " + issuer_));
  EXPECT_EQ(alert(), "certificate expired");
}

TEST_P(RevocationTest, AListWithoutNextUpdateIsACertificateError) {
  EXPECT_EQ(getWithList({.issuer = authority_, .nextUpdate = std::nullopt}),
            refusedFor("Unable to get the next CRL update for CRL issued by " + issuer_));
  EXPECT_EQ(alert(), "bad certificate");
}

// The text varies with the forger's key: it holds what the signature check left, then the refusal.
TEST_P(RevocationTest, AForgedListIsACertificateError) {
  const Outcome outcome =
      getWithList({.issuer = authority_, .signedBy = pki::forgerOf(authority_).key});
  EXPECT_EQ(outcome.result, HTTP_ERROR_CERTIFICATE);
  EXPECT_TRUE(outcome.text.starts_with("Unable to verify signature on CRL issued by " + issuer_ +
                                       "\n  error:02"))
      << outcome;
  EXPECT_TRUE(
      outcome.text.ends_with("\n  error:0A000086:SSL routines::certificate verify failed\n"))
      << outcome;
  EXPECT_FALSE(server_.ended().handshakeDone);
}

TEST_P(RevocationTest, AForgedListIsForgottenByTheNextConnection) {
  getWithList({.issuer = authority_, .signedBy = pki::forgerOf(authority_).key});
  client_.session().setCrlFile("");
  const support::RefusingPort refusing;
  EXPECT_EQ(client_.get("https://localhost:" + std::to_string(refusing.port()) + "/").result,
            kvsc::HTTP_ERROR_FAILED);
}

TEST_P(RevocationTest, AListOfAnotherIssuerIsNotAsked) {
  const support::Identity stranger = pki::authority("Stranger");
  EXPECT_EQ(getWithList({.issuer = stranger, .revoked = {identity_.serial()}}), kSuccess);
}

TEST_P(RevocationTest, TheListOfTheIssuerIsFoundAmongOthers) {
  const CrlSpec other{.issuer = pki::authority("Stranger")};
  const CrlSpec own{.issuer = authority_, .revoked = {identity_.serial()}};
  EXPECT_EQ(getWithLists(pki::revocationList(other) + pki::revocationList(own)),
            refusedFor(identity_.subject() + " was revoked by " + issuer_));
}

TEST_P(RevocationTest, AMissingFileLetsEveryCertificatePass) {
  client_.session().setCrlFile(folder_ / "missing.pem");
  EXPECT_EQ(client_.get(server_.url()), kSuccess);
}

TEST_P(RevocationTest, AFileWithoutListsLetsEveryCertificatePass) {
  EXPECT_EQ(getWithLists("no list at all\n"), kSuccess);
}

TEST_P(RevocationTest, AListIsNotAskedWhenCertificatesAreNotChecked) {
  client_.session().setCheckCertificate(false);
  EXPECT_EQ(getWithList({.issuer = authority_, .revoked = {identity_.serial()}}), kSuccess);
}

TEST_P(RevocationTest, TheNextExchangeDoesNotKeepTheEarlierText) {
  EXPECT_EQ(getWithList({.issuer = authority_, .revoked = {identity_.serial()}}).result,
            HTTP_ERROR_CERTIFICATE);
  client_.session().setCrlFile("");
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
  client_.client().httpGet(server_.url(), 0, &result, &client_.session(), "", "",
                           client_.session().getSslMethod());
  EXPECT_EQ(result, kvsc::HTTP_ERROR_NONE);
  EXPECT_EQ(client_.client().getErrorString(), "");
}

}  // namespace
