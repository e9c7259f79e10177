// The TLS context that a session gets.
#include <gtest/gtest.h>

#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"
#include "tests/support/DevelopmentPki.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"

namespace kvsc {
namespace {

namespace pki = support::pki;
using support::KeyKind;

class SSLConnectContextTest : public testing::Test {
 protected:
  ~SSLConnectContextTest() override {
    connect_.close(&session_);
    ERR_clear_error();
  }

  int setUp(std::string* password = nullptr) { return connect_.setupContext(&session_, password); }

  void expectFailure(const std::string& text) {
    EXPECT_EQ(setUp(), 0);
    EXPECT_EQ(connect_.getErrorString(), text);
    EXPECT_EQ(session_.getSslContext(), nullptr);
  }

  SSL_CTX* context() { return session_.getSslContext(); }

  std::size_t trusted() {
    return static_cast<std::size_t>(
        sk_X509_OBJECT_num(X509_STORE_get0_objects(SSL_CTX_get_cert_store(context()))));
  }

  std::string ciphers() {
    std::string all;
    STACK_OF(SSL_CIPHER)* list = SSL_CTX_get_ciphers(context());
    for (int i = 0; i < sk_SSL_CIPHER_num(list); ++i) {
      all += std::string(SSL_CIPHER_get_name(sk_SSL_CIPHER_value(list, i))) + " ";
    }
    return all;
  }

  support::TempDir folder_;
  SSLConnect connect_{"LOCALHOST"};
  SSLSession session_;
};

TEST_F(SSLConnectContextTest, WithoutChecksItHasNoCredentials) {
  session_.setVerifyMode(1);
  session_.setCipherList("ECDHE-RSA-AES128-GCM-SHA256");
  session_.setCertFile("/no/such/file");
  ASSERT_EQ(setUp(), 1);
  EXPECT_EQ(trusted(), 0U);
  EXPECT_EQ(SSL_CTX_get0_certificate(context()), nullptr);
  EXPECT_EQ(SSL_CTX_get_verify_mode(context()), SSL_VERIFY_NONE);
  EXPECT_NE(ciphers().find("CHACHA20"), std::string::npos);
}

TEST_F(SSLConnectContextTest, WithChecksItHasTheEnvironmentsCredentials) {
  session_.setCheckCertificate(true);
  session_.setVerifyMode(SSL_VERIFY_PEER);
  ASSERT_EQ(setUp(), 1);
  const support::Identity client = support::development::clientOf("LOCALHOST");
  EXPECT_EQ(trusted(), 1U);
  EXPECT_EQ(X509_cmp(SSL_CTX_get0_certificate(context()), client.certificate.get()), 0);
  EXPECT_EQ(EVP_PKEY_eq(SSL_CTX_get0_privatekey(context()), client.key.get()), 1);
  EXPECT_EQ(SSL_CTX_get_verify_mode(context()), SSL_VERIFY_PEER);
  EXPECT_EQ(SSL_CTX_get_verify_callback(context()), &SSLConnect::verifyCallback);
}

TEST_F(SSLConnectContextTest, NoIntermediateIsAllowed) {
  session_.setCheckCertificate(true);
  ASSERT_EQ(setUp(), 1);
  EXPECT_EQ(SSL_CTX_get_verify_depth(context()), 0);
}

TEST_F(SSLConnectContextTest, TheVerifyModeIsTheSessions) {
  session_.setCheckCertificate(true);
  ASSERT_EQ(setUp(), 1);
  EXPECT_EQ(SSL_CTX_get_verify_mode(context()), SSL_VERIFY_NONE);
}

TEST_F(SSLConnectContextTest, NoSessionIsKeptForAnother) {
  ASSERT_EQ(setUp(), 1);
  EXPECT_EQ(SSL_CTX_get_session_cache_mode(context()), SSL_SESS_CACHE_OFF);
  EXPECT_NE(SSL_CTX_get_options(context()) & SSL_OP_NO_TICKET, 0U);
  EXPECT_NE(SSL_CTX_get_options(context()) & SSL_OP_NO_RENEGOTIATION, 0U);
}

TEST_F(SSLConnectContextTest, EachFamilyHasItsVersions) {
  for (const auto family : {SSLV23, SSLV3}) {
    session_.setSslMethod(family);
    ASSERT_EQ(setUp(), 1);
    EXPECT_EQ(SSL_CTX_get_min_proto_version(context()), TLS1_2_VERSION);
    EXPECT_EQ(SSL_CTX_get_max_proto_version(context()), 0);
  }
  session_.setSslMethod(TLSV1);
  ASSERT_EQ(setUp(), 1);
  EXPECT_EQ(SSL_CTX_get_min_proto_version(context()), TLS1_VERSION);
  EXPECT_EQ(SSL_CTX_get_max_proto_version(context()), TLS1_VERSION);
}

TEST_F(SSLConnectContextTest, OtherFamiliesHaveNoContext) {
  for (const int family : {0, -1, 4, 1000}) {
    session_.setSslMethod(static_cast<SSLMethodProtocolType>(family));
    expectFailure("Unable to create an SSL context for this protocol");
  }
}

// The leak checker finds a context that is not freed.
TEST_F(SSLConnectContextTest, AContextThatWasLeftBehindIsFreed) {
  ASSERT_EQ(setUp(), 1);
  ASSERT_EQ(setUp(), 1);
  EXPECT_NE(context(), nullptr);
}

TEST_F(SSLConnectContextTest, ACipherListIsApplied) {
  session_.setCheckCertificate(true);
  session_.setCipherList("ECDHE-RSA-AES128-GCM-SHA256");
  ASSERT_EQ(setUp(), 1);
  EXPECT_NE(ciphers().find("ECDHE-RSA-AES128-GCM-SHA256"), std::string::npos);
  EXPECT_EQ(ciphers().find("ECDHE-RSA-CHACHA20"), std::string::npos);
}

TEST_F(SSLConnectContextTest, ACipherListThatMatchesNothingFailsWithoutAText) {
  session_.setCheckCertificate(true);
  session_.setCipherList("NO-SUCH-CIPHER");
  expectFailure("");
}

TEST_F(SSLConnectContextTest, APassPhraseStaysWithTheContext) {
  session_.setCheckCertificate(true);
  std::string password = "secret";
  ASSERT_EQ(setUp(&password), 1);
  EXPECT_EQ(SSL_CTX_get_default_passwd_cb(context()), &SSLConnect::pem_passwd_cb);
  EXPECT_STREQ(static_cast<char*>(SSL_CTX_get_default_passwd_cb_userdata(context())), "secret");
}

TEST_F(SSLConnectContextTest, WithoutAPassPhraseNothingOfOneStaysWithTheContext) {
  session_.setCheckCertificate(true);
  ASSERT_EQ(setUp(), 1);
  EXPECT_EQ(SSL_CTX_get_default_passwd_cb(context()), nullptr);
  EXPECT_EQ(SSL_CTX_get_default_passwd_cb_userdata(context()), nullptr);
}

TEST_F(SSLConnectContextTest, ACertificateFileTakesTheEnvironmentsPlace) {
  const support::Identity own = pki::selfSigned({.key = KeyKind::kRsa});
  session_.setCheckCertificate(true);
  session_.setCertFile(folder_.write("own.pem", own.certificatePem() + own.keyPem()));
  ASSERT_EQ(setUp(), 1);
  EXPECT_EQ(X509_cmp(SSL_CTX_get0_certificate(context()), own.certificate.get()), 0);
}

TEST_F(SSLConnectContextTest, AnUnusableCertificateFileLeavesAText) {
  session_.setCheckCertificate(true);
  session_.setCertFile("/no/such/file");
  expectFailure("Unable to load certificate file");
  session_.setCertFile(folder_.write("own.pem", "no certificate"));
  expectFailure("Unable to load certificate file");
}

TEST_F(SSLConnectContextTest, ACertificateFileWithoutItsKeyLeavesAText) {
  const support::Identity own = pki::selfSigned({.key = KeyKind::kRsa});
  session_.setCheckCertificate(true);
  session_.setCertFile(folder_.write("own.pem", own.certificatePem()));
  expectFailure("Error loading private key from file");
  const support::Identity other = pki::selfSigned({.key = KeyKind::kRsa, .keyName = "other"});
  session_.setCertFile(folder_.write("own.pem", own.certificatePem() + other.keyPem()));
  expectFailure("Error loading private key from file");
}

}  // namespace
}  // namespace kvsc
