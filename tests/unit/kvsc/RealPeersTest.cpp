#include <gtest/gtest.h>

#include "tests/support/Nginx.h"
#include "tests/support/OpenSslServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_CERTIFICATE;
using kvsc::HTTP_ERROR_FAILED;
using support::kDay;
using support::Nginx;
using support::NginxOptions;
using support::OpenSslServer;
namespace pki = support::pki;

NginxOptions nginxWith(const support::Identity& identity, const std::string& protocols) {
  NginxOptions options;
  options.tls = identity;
  options.protocols = protocols;
  return options;
}

/// nginx with one protocol version.
class NginxTlsTest : public testing::TestWithParam<const char*> {
 protected:
  Outcome meet(const NginxOptions& options, const std::string& host = "localhost") {
    nginx_ = std::make_unique<Nginx>(options);
    nginx_->serve("film", "film");
    return client_.get(nginx_->url("/film", host));
  }

  NginxOptions serving(const support::Identity& identity) {
    return nginxWith(identity, GetParam());
  }

  NginxOptions askingForCertificate() {
    NginxOptions options = serving(serverOf());
    options.clientAuthority = serverAuthority();
    return options;
  }

  std::unique_ptr<Nginx> nginx_;
  CheckingClient client_;
};

INSTANTIATE_TEST_SUITE_P(Versions, NginxTlsTest, testing::Values("TLSv1.2", "TLSv1.3"),
                         [](const auto& info) {
                           return std::string(info.param) == "TLSv1.2" ? "Tls12" : "Tls13";
                         });

TEST_P(NginxTlsTest, AFilmArrives) {
  EXPECT_EQ(meet(serving(serverOf())), kSuccess);
  EXPECT_EQ(client_.body(), "film");
}

TEST_P(NginxTlsTest, ALargeFilmArrivesWhole) {
  std::string film;
  for (int number = 0; film.size() < 3'000'000; ++number) film += std::to_string(number);
  nginx_ = std::make_unique<Nginx>(serving(serverOf({.key = support::KeyKind::kRsa})));
  nginx_->serve("film", film);
  EXPECT_EQ(client_.get(nginx_->url("/film")), kSuccess);
  EXPECT_TRUE(client_.body() == film);
}

TEST_P(NginxTlsTest, AnExpiredCertificateIsACertificateError) {
  EXPECT_EQ(meet(serving(serverOf({.notBefore = -9 * kDay, .notAfter = -kDay}))), kRefused);
}

TEST_P(NginxTlsTest, AnUnknownAuthorityIsACertificateError) {
  EXPECT_EQ(meet(serving(pki::issue(pki::authority("Stranger")))), kRefused);
}

TEST_P(NginxTlsTest, AnIntermediateIsACertificateError) {
  EXPECT_EQ(meet(serving(pki::issue(pki::intermediate(serverAuthority(), "Between")))), kRefused);
}

TEST_P(NginxTlsTest, AnotherHostFails) {
  EXPECT_EQ(meet(serving(serverOf()), "127.0.0.1"),
            (Outcome{HTTP_ERROR_FAILED, "application verification failure"}));
  EXPECT_EQ(nginx_->accessLog(), "");
}

TEST_P(NginxTlsTest, TheEnvironmentsClientCertificateIsAccepted) {
  EXPECT_EQ(meet(askingForCertificate()), kSuccess);
}

TEST_P(NginxTlsTest, AMissingClientCertificateIsARefusedRequest) {
  client_.session().setCheckCertificate(false);
  EXPECT_EQ(meet(askingForCertificate()), (Outcome{HTTP_ERROR_FAILED, ""}));
  EXPECT_EQ(client_.client().getResponseCode(), 400);
}

TEST_P(NginxTlsTest, AClientCertificateOfAnotherEnvironmentIsARefusedRequest) {
  NginxOptions options = askingForCertificate();
  options.clientAuthority = pki::authority("Stranger");
  EXPECT_EQ(meet(options), (Outcome{HTTP_ERROR_FAILED, ""}));
  EXPECT_EQ(client_.client().getResponseCode(), 400);
}

TEST_P(NginxTlsTest, AnExpiredClientCertificateIsARefusedRequest) {
  const support::TempDir folder;
  const support::Identity old = serverOf({.notBefore = -9 * kDay, .notAfter = -kDay});
  client_.session().setCertFile(folder.write("client.pem", old.certificatePem() + old.keyPem()));
  EXPECT_EQ(meet(askingForCertificate()), (Outcome{HTTP_ERROR_FAILED, ""}));
  EXPECT_EQ(client_.client().getResponseCode(), 400);
}

/// `openssl s_server`, which answers a request with a page about the connection.
class OpenSslServerTest : public testing::TestWithParam<const char*> {
 protected:
  CheckingClient client_;
};

INSTANTIATE_TEST_SUITE_P(Versions, OpenSslServerTest, testing::Values("-tls1_2", "-tls1_3"),
                         [](const auto& info) {
                           return std::string(info.param) == "-tls1_2" ? "Tls12" : "Tls13";
                         });

TEST_P(OpenSslServerTest, ItsPageArrives) {
  OpenSslServer server(serverOf(), {GetParam()});
  EXPECT_EQ(client_.get(server.url()), kSuccess);
  EXPECT_NE(client_.body().find(std::string(GetParam()) == "-tls1_2" ? "TLSv1.2" : "TLSv1.3"),
            std::string::npos);
}

TEST_P(OpenSslServerTest, ASelfSignedCertificateIsACertificateError) {
  OpenSslServer server(pki::selfSigned(), {GetParam()});
  EXPECT_EQ(client_.get(server.url()), kRefused);
}

TEST_P(OpenSslServerTest, ACertificateThatIsNotYetValidIsACertificateError) {
  OpenSslServer server(serverOf({.notBefore = kDay}), {GetParam()});
  EXPECT_EQ(client_.get(server.url()), kRefused);
}

TEST_P(OpenSslServerTest, TheClientCertificateIsShownWhenDemanded) {
  const support::TempDir folder;
  const auto authority = folder.write("ca.pem", serverAuthority().certificatePem());
  OpenSslServer server(serverOf(), {GetParam(), "-Verify", "1", "-verify_return_error", "-CAfile",
                                    authority.string()});
  EXPECT_EQ(client_.get(server.url()), kSuccess);
}

TEST_P(OpenSslServerTest, AMissingClientCertificateFails) {
  OpenSslServer server(serverOf(), {GetParam(), "-Verify", "1"});
  client_.session().setCheckCertificate(false);
  EXPECT_EQ(client_.get(server.url()).result, HTTP_ERROR_FAILED);
}

}  // namespace
