#include <gtest/gtest.h>

#include <memory>

#include "tests/support/DevelopmentPki.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TempDir.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_FAILED;
using support::CertificateSpec;
using support::Identity;
using support::kDay;
using support::KeyKind;
using support::ScriptedServer;
using ClientAuth = support::TlsSettings::ClientCertificate;
namespace pki = support::pki;

/// A server that asks for a client certificate, and what the client shows it.
class ClientCertificatesTest : public testing::TestWithParam<int> {
 protected:
  /// Answers every client whose certificate `authority` has signed, and any at all without one.
  void listen(ClientAuth clientAuth, std::optional<Identity> authority = std::nullopt,
              const std::string& environment = "LOCALHOST") {
    server_ = std::make_unique<ScriptedServer>(
        support::TlsSettings{.identity = serverOf({}, environment),
                             .minVersion = GetParam(),
                             .maxVersion = GetParam(),
                             .clientCertificate = clientAuth,
                             .clientAuthority = std::move(authority)});
    server_->always(support::Script::answer(support::okResponse("film")));
  }

  Outcome get() { return client_.get(server_->url()); }

  Outcome getWith(const Identity& identity) {
    client_.session().setCertFile(
        folder_.write("client.pem", identity.certificatePem() + identity.keyPem()));
    return get();
  }

  /// What a server's alert leaves: before TLS 1.3 the handshake fails, since then the first read.
  static Outcome endedByAlert(int number, const std::string& error) {
    return {HTTP_ERROR_FAILED, std::string(GetParam() == TLS1_2_VERSION ? "SSL_ERROR_SSL" : "") +
                                   "\n SSL alert number " + std::to_string(number) +
                                   " error:" + error + "\n"};
  }

  support::TempDir folder_;
  std::unique_ptr<ScriptedServer> server_;
  CheckingClient client_;
};

INSTANTIATE_TEST_SUITE_P(Versions, ClientCertificatesTest,
                         testing::Values(TLS1_2_VERSION, TLS1_3_VERSION), [](const auto& info) {
                           return info.param == TLS1_2_VERSION ? "Tls12" : "Tls13";
                         });

TEST_P(ClientCertificatesTest, EachEnvironmentShowsItsOwnCertificate) {
  for (const char* environment : {"PRODUCTION", "JTEST", "ITEST", "ETEST", "LOCALHOST"}) {
    listen(ClientAuth::kRequired, support::development::authorityOf(environment), environment);
    CheckingClient client(environment);
    EXPECT_EQ(client.get(server_->url()), kSuccess) << environment;
    EXPECT_EQ(server_->ended().clientSubject,
              support::development::clientOf(environment).subject());
  }
}

TEST_P(ClientCertificatesTest, NoCertificateIsShownToAServerOfAnotherEnvironment) {
  listen(ClientAuth::kAsked, std::nullopt, "PRODUCTION");
  EXPECT_EQ(get(), (Outcome{kvsc::HTTP_ERROR_CERTIFICATE, kVerifyFailed}));
  EXPECT_EQ(server_->ended().clientSubject, "");
}

TEST_P(ClientCertificatesTest, NoCertificateIsShownThroughABareSendRequest) {
  listen(ClientAuth::kAsked, std::nullopt, "PRODUCTION");
  EXPECT_EQ(client_.client().sendRequest(server_->url(), 0, "GET", &client_.session(), "", "", ""),
            kvsc::HTTP_ERROR_CERTIFICATE);
  EXPECT_EQ(client_.client().getErrorString(), kVerifyFailed);
  EXPECT_EQ(server_->ended().clientSubject, "");
}

TEST_P(ClientCertificatesTest, NoCertificateIsShownWhenCertificatesAreNotChecked) {
  listen(ClientAuth::kAsked);
  client_.session().setCheckCertificate(false);
  EXPECT_EQ(get(), kSuccess);
  EXPECT_EQ(server_->ended().clientSubject, "");
}

TEST_P(ClientCertificatesTest, AMissingCertificateFails) {
  listen(ClientAuth::kRequired, serverAuthority());
  client_.session().setCheckCertificate(false);
  EXPECT_EQ(get(),
            GetParam() == TLS1_2_VERSION
                ? endedByAlert(40, "0A000410:SSL routines::sslv3 alert handshake failure")
                : endedByAlert(116, "0A00045C:SSL routines::tlsv13 alert certificate required"));
}

TEST_P(ClientCertificatesTest, ACertificateOfAnotherEnvironmentFails) {
  listen(ClientAuth::kRequired, serverAuthority());
  EXPECT_EQ(getWith(support::development::clientOf("JTEST")),
            endedByAlert(48, "0A000418:SSL routines::tlsv1 alert unknown ca"));
}

TEST_P(ClientCertificatesTest, AnExpiredCertificateFails) {
  listen(ClientAuth::kRequired, serverAuthority());
  EXPECT_EQ(getWith(serverOf({.notBefore = -9 * kDay, .notAfter = -kDay})),
            endedByAlert(45, "0A000415:SSL routines::sslv3 alert certificate expired"));
}

TEST_P(ClientCertificatesTest, ACertificateFileTakesTheEnvironmentsPlace) {
  listen(ClientAuth::kRequired, serverAuthority());
  const Identity own = serverOf({.commonName = "my own", .key = KeyKind::kRsa});
  EXPECT_EQ(getWith(own), kSuccess);
  EXPECT_EQ(server_->ended().clientSubject, own.subject());
}

TEST_P(ClientCertificatesTest, ACertificateFileMayContainAnEllipticCurveKey) {
  listen(ClientAuth::kRequired, serverAuthority());
  EXPECT_EQ(getWith(serverOf({.commonName = "my own"})), kSuccess);
}

TEST_P(ClientCertificatesTest, AnEncryptedKeyOpensWithItsPassPhrase) {
  listen(ClientAuth::kRequired, serverAuthority());
  const Identity own = serverOf({.commonName = "my own", .key = KeyKind::kRsa});
  client_.session().setCertFile(
      folder_.write("client.pem", own.certificatePem() + own.encryptedKeyPem("right")));
  client_.session().setPassword("right");
  EXPECT_EQ(get(), kSuccess);
  EXPECT_EQ(server_->ended().clientSubject, own.subject());
}

}  // namespace
