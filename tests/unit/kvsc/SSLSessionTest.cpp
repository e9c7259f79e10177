#include <gtest/gtest.h>

#include <utility>

#include "kvsc/CancelToken.h"
#include "kvsc/Dialer.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"
#include "kvsc/SSLSession.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"

namespace kvsc {
namespace {

namespace pki = support::pki;

void expectDefaults(const SSLSession& session) {
  EXPECT_EQ(session.getSslContext(), nullptr);
  EXPECT_EQ(session.getCertFile(), "");
  EXPECT_EQ(session.getConnect(), nullptr);
  EXPECT_EQ(session.getSsl(), nullptr);
  EXPECT_EQ(session.getRandomFile(), "");
  EXPECT_EQ(session.getCaFile(), "");
  EXPECT_EQ(session.getVerifyMode(), 0);
  EXPECT_FALSE(session.getCheckCertificate());
  EXPECT_EQ(session.getDownloadLoopSleep(), 0);
  EXPECT_EQ(session.getSslMethod(), SSLV3);
  EXPECT_EQ(session.getHost(), "");
  EXPECT_EQ(session.getPort(), "");
  EXPECT_EQ(session.getPassword(), "");
  EXPECT_EQ(session.getCipherList(), "");
  EXPECT_EQ(session.getProxyURL(), "");
  EXPECT_EQ(session.getProxyPort(), 443);
  EXPECT_FALSE(session.getUseSSL());
  EXPECT_EQ(session.getDownloadSize(), 4096U);
  EXPECT_EQ(session.getUserAgent(), "");
  EXPECT_EQ(session.getMaxRedirectCount(), 0);
  EXPECT_EQ(session.getRedirectCount(), 0);
  EXPECT_EQ(session.getCrlFile(), "");
  EXPECT_EQ(session.getCrlStore(), nullptr);
  EXPECT_EQ(session.getHandshakeOwner(), nullptr);
  EXPECT_EQ(session.getWaitTimeout(), 30'000);
  EXPECT_EQ(session.getExchangeTimeout(), 120'000);
  EXPECT_EQ(session.getCancelToken(), nullptr);
  EXPECT_EQ(session.getDialer(), nullptr);
}

/// A session whose every field was set to something else.
class SSLSessionTest : public testing::Test {
 protected:
  void setEverything() {
    session_.setSslContext(context_.get());
    session_.setCertFile("cert.pem");
    session_.setConnect(bio_.get());
    session_.setSsl(ssl_.get());
    session_.setRandomFile("random");
    session_.setCaFile("ca.pem");
    session_.setVerifyMode(1);
    session_.setCheckCertificate(true);
    session_.setDownloadLoopSleep(1);
    session_.setSslMethod(TLSV1);
    session_.setHost("host");
    session_.setPort("8443");
    session_.setPassword("secret");
    session_.setCipherList("HIGH");
    session_.setProxyURL("proxy");
    session_.setProxyPort(3128);
    session_.setUseSSL(true);
    session_.setDownloadSize(65'536);
    session_.setUserAgent("agent");
    session_.setMaxRedirectCount(10);
    session_.setRedirectCount(2);
    session_.setCrlFile("/no/such/crl.pem");
    session_.setHandshakeOwner(&connect_);
    session_.setWaitTimeout(1000);
    session_.setExchangeTimeout(2000);
    session_.setCancelToken(&token_);
    session_.setDialer(&dialer_);
  }

  const SslContextPtr context_ = newClientContext(SSLV3);
  const SslPtr ssl_{SSL_new(context_.get())};
  const BioPtr bio_{BIO_new(BIO_s_mem())};
  SSLConnect connect_{"LOCALHOST"};
  CancelToken token_;
  TcpDialer dialer_;
  SSLSession session_;
};

TEST_F(SSLSessionTest, AFreshSessionHasTheDefaults) { expectDefaults(session_); }

TEST_F(SSLSessionTest, EveryFieldIsKept) {
  setEverything();
  EXPECT_EQ(session_.getSslContext(), context_.get());
  EXPECT_EQ(session_.getCertFile(), "cert.pem");
  EXPECT_EQ(session_.getConnect(), bio_.get());
  EXPECT_EQ(session_.getSsl(), ssl_.get());
  EXPECT_EQ(session_.getRandomFile(), "random");
  EXPECT_EQ(session_.getCaFile(), "ca.pem");
  EXPECT_EQ(session_.getVerifyMode(), 1);
  EXPECT_TRUE(session_.getCheckCertificate());
  EXPECT_EQ(session_.getDownloadLoopSleep(), 1);
  EXPECT_EQ(session_.getSslMethod(), TLSV1);
  EXPECT_EQ(session_.getHost(), "host");
  EXPECT_EQ(session_.getPort(), "8443");
  EXPECT_EQ(session_.getPassword(), "secret");
  EXPECT_EQ(*session_.getPasswordAddress(), "secret");
  EXPECT_EQ(session_.getCipherList(), "HIGH");
  EXPECT_EQ(session_.getProxyURL(), "proxy");
  EXPECT_EQ(session_.getProxyPort(), 3128);
  EXPECT_TRUE(session_.getUseSSL());
  EXPECT_EQ(session_.getDownloadSize(), 65'536U);
  EXPECT_EQ(session_.getUserAgent(), "agent");
  EXPECT_EQ(session_.getMaxRedirectCount(), 10);
  EXPECT_EQ(session_.getRedirectCount(), 2);
  EXPECT_EQ(session_.getCrlFile(), "/no/such/crl.pem");
  EXPECT_NE(session_.getCrlStore(), nullptr);
  EXPECT_EQ(session_.getHandshakeOwner(), &connect_);
  EXPECT_EQ(session_.getWaitTimeout(), 1000);
  EXPECT_EQ(session_.getExchangeTimeout(), 2000);
  EXPECT_EQ(session_.getCancelToken(), &token_);
  EXPECT_EQ(session_.getDialer(), &dialer_);
}

TEST_F(SSLSessionTest, ClearBringsTheDefaultsBack) {
  setEverything();
  session_.clear();
  expectDefaults(session_);
}

TEST_F(SSLSessionTest, TheProtocolFamiliesHaveTheirNumbers) {
  EXPECT_EQ(SSLV2, 0);
  EXPECT_EQ(SSLV23, 1);
  EXPECT_EQ(SSLV3, 2);
  EXPECT_EQ(TLSV1, 3);
}

TEST_F(SSLSessionTest, TheHandlesOfAConnectionAreNotTheSessionsToFree) {
  auto session = std::make_unique<SSLSession>();
  session->setSslContext(context_.get());
  session->setConnect(bio_.get());
  session->setSsl(ssl_.get());
  session.reset();
  EXPECT_EQ(SSL_get_SSL_CTX(ssl_.get()), context_.get());
  EXPECT_EQ(BIO_ctrl_pending(bio_.get()), 0U);
}

class CrlStoreTest : public testing::Test {
 protected:
  std::size_t listsIn(X509_STORE* store) {
    return static_cast<std::size_t>(sk_X509_OBJECT_num(X509_STORE_get0_objects(store)));
  }

  support::TempDir folder_;
  SSLSession session_;
};

TEST_F(CrlStoreTest, TheListsOfTheFileAreInTheStore) {
  const auto crls = pki::revocationList({.issuer = pki::authority("One")}) +
                    pki::revocationList({.issuer = pki::authority("Two")});
  session_.setCrlFile(folder_.write("crl.pem", crls));
  ASSERT_NE(session_.getCrlStore(), nullptr);
  EXPECT_EQ(listsIn(session_.getCrlStore()), 2U);
}

TEST_F(CrlStoreTest, AFileThatDoesNotExistLeavesAnEmptyStore) {
  session_.setCrlFile("/no/such/crl.pem");
  ASSERT_NE(session_.getCrlStore(), nullptr);
  EXPECT_EQ(listsIn(session_.getCrlStore()), 0U);
}

TEST_F(CrlStoreTest, AFileThatHoldsNoListLeavesAnEmptyStore) {
  session_.setCrlFile(folder_.write("crl.pem", "no list at all"));
  ASSERT_NE(session_.getCrlStore(), nullptr);
  EXPECT_EQ(listsIn(session_.getCrlStore()), 0U);
}

TEST_F(CrlStoreTest, AnEmptyPathTakesTheStoreAway) {
  session_.setCrlFile("/no/such/crl.pem");
  session_.setCrlFile("");
  EXPECT_EQ(session_.getCrlStore(), nullptr);
}

TEST_F(CrlStoreTest, AnotherFileReplacesTheStore) {
  const auto crl = pki::revocationList({.issuer = pki::authority("One")});
  session_.setCrlFile(folder_.write("crl.pem", crl));
  session_.setCrlFile("/no/such/crl.pem");
  EXPECT_EQ(listsIn(session_.getCrlStore()), 0U);
}

TEST_F(CrlStoreTest, AStoreThatIsSetBelongsToTheSession) {
  X509_STORE* store = X509_STORE_new();
  session_.setCrlStore(store);
  session_.setCrlStore(store);
  EXPECT_EQ(session_.getCrlStore(), store);
}

TEST_F(CrlStoreTest, AStoreThatIsTakenOutBelongsToTheCaller) {
  const StorePtr store(X509_STORE_new());
  session_.setCrlStore(store.get());
  session_.setCrlStore(nullptr);
  EXPECT_EQ(session_.getCrlStore(), nullptr);
  EXPECT_EQ(listsIn(store.get()), 0U);
}

}  // namespace
}  // namespace kvsc
