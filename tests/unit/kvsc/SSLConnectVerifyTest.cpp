// Who the peer is, decided on real handshakes in memory.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>

#include "kvsc/CertificateCheck.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"
#include "tests/support/TlsChannel.h"

namespace kvsc {
namespace {

namespace pki = support::pki;
using support::CrlSpec;
using support::Identity;
using support::kDay;

/// A client whose handshake with a server of the given identity is over.
class ShakenHands {
 public:
  explicit ShakenHands(const Identity& server)
      : serverContext_(support::makeServerContext({.identity = server})),
        server_(SSL_new(serverContext_.get())),
        client_(SSL_new(clientContext_.get())) {
    BIO* near = nullptr;
    BIO* far = nullptr;
    BIO_new_bio_pair(&near, 0, &far, 0);
    SSL_set_bio(client_.get(), near, near);
    SSL_set_bio(server_.get(), far, far);
    SSL_set_connect_state(client_.get());
    SSL_set_accept_state(server_.get());
    for (int step = 0; step < 10 && !SSL_is_init_finished(client_.get()); ++step) {
      SSL_do_handshake(client_.get());
      SSL_do_handshake(server_.get());
    }
    EXPECT_TRUE(SSL_is_init_finished(client_.get()));
    ERR_clear_error();
  }

  SSL* client() const { return client_.get(); }

 private:
  const SslContextPtr clientContext_ = newClientContext(SSLV3);
  const support::TlsContext serverContext_;
  const SslPtr server_;
  const SslPtr client_;
};

class PostConnectionCheckTest : public testing::Test {
 protected:
  // These certificates are untrusted, which is the only fault that the library finds.
  static constexpr long kUnknown = X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT;
  static constexpr long kWrongHost = X509_V_ERR_APPLICATION_VERIFICATION;

  long check(const std::optional<std::string>& commonName, const std::vector<std::string>& dnsNames,
             const std::string& host) {
    const ShakenHands hands(pki::selfSigned({.commonName = commonName, .dnsNames = dnsNames}));
    return connect_.postConnectionCheck(hands.client(), host);
  }

  SSLConnect connect_{"LOCALHOST"};
};

TEST_F(PostConnectionCheckTest, WithoutAPeerItFails) {
  EXPECT_EQ(connect_.postConnectionCheck(nullptr, "example"), kWrongHost);
  const SslContextPtr context = newClientContext(SSLV3);
  const SslPtr unconnected(SSL_new(context.get()));
  EXPECT_EQ(connect_.postConnectionCheck(unconnected.get(), "example"), kWrongHost);
}

TEST_F(PostConnectionCheckTest, ForTheRightHostTheLibrarysResultCounts) {
  EXPECT_EQ(check("example", {}, "example"), kUnknown);
  const ShakenHands hands(pki::selfSigned({.commonName = "example"}));
  SSL_set_verify_result(hands.client(), X509_V_OK);
  EXPECT_EQ(connect_.postConnectionCheck(hands.client(), "example"), X509_V_OK);
}

TEST_F(PostConnectionCheckTest, ACommonNameOfOtherCaseIsAnotherHost) {
  EXPECT_EQ(check("Example", {}, "example"), kWrongHost);
}

TEST_F(PostConnectionCheckTest, AnAlternativeNameIsEnough) {
  EXPECT_EQ(check("other", {"first", "example"}, "example"), kUnknown);
}

TEST_F(PostConnectionCheckTest, TheCommonNameIsEnoughToo) {
  EXPECT_EQ(check("example", {"first", "second"}, "example"), kUnknown);
}

TEST_F(PostConnectionCheckTest, NoMatchingNameIsAnotherHost) {
  EXPECT_EQ(check("other", {"first", "second"}, "example"), kWrongHost);
}

TEST_F(PostConnectionCheckTest, KeptQuirkWithoutACommonNameAnyHostWillDo) {
  EXPECT_EQ(check(std::nullopt, {}, "example"), kUnknown);
  EXPECT_EQ(check(std::nullopt, {"first"}, "example"), kUnknown);
}

TEST_F(PostConnectionCheckTest, AZeroByteDoesNotEndAName) {
  const std::string name("example\0.evil", 13);
  EXPECT_EQ(check(name, {}, "example"), kWrongHost);
  EXPECT_EQ(check("other", {name}, "example"), kWrongHost);
}

TEST_F(PostConnectionCheckTest, ThereAreNoWildcards) {
  EXPECT_EQ(check("*.example", {"*.example"}, "films.example"), kWrongHost);
}

/// A store context at a certificate, with the TLS object and the session that belong to it.
class VerifyCallbackTest : public testing::Test {
 protected:
  VerifyCallbackTest() {
    X509_STORE_CTX_init(context_.get(), store_.get(), server_.certificate.get(), nullptr);
    X509_STORE_CTX_set_current_cert(context_.get(), server_.certificate.get());
    X509_STORE_CTX_set_error(context_.get(), X509_V_OK);
    attach(ssl_.get());
    SSL_set_app_data(ssl_.get(), &session_);
    session_.setHandshakeOwner(&owner_);
    owner_.setErrorString("before");
  }

  void attach(SSL* ssl) {
    X509_STORE_CTX_set_ex_data(context_.get(), SSL_get_ex_data_X509_STORE_CTX_idx(), ssl);
  }

  void revoke() {
    session_.setCrlFile(folder_.write(
        "crl.pem", pki::revocationList({.issuer = authority_, .revoked = {server_.serial()}})));
  }

  int verify(int ok) { return SSLConnect::verifyCallback(ok, context_.get()); }
  int error() { return X509_STORE_CTX_get_error(context_.get()); }

  std::string revokedText() {
    return nameLine(X509_get_subject_name(server_.certificate.get())) + " was revoked by " +
           nameLine(X509_get_subject_name(authority_.certificate.get()));
  }

  struct ContextFree {
    void operator()(X509_STORE_CTX* context) const { X509_STORE_CTX_free(context); }
  };

  const Identity authority_ = pki::authority("Authority");
  const Identity server_ = pki::issue(authority_);
  const StorePtr store_{X509_STORE_new()};
  const std::unique_ptr<X509_STORE_CTX, ContextFree> context_{X509_STORE_CTX_new()};
  const SslContextPtr sslContext_ = newClientContext(SSLV3);
  const SslPtr ssl_{SSL_new(sslContext_.get())};
  support::TempDir folder_;
  SSLSession session_;
  SSLConnect owner_{"LOCALHOST"};
};

TEST_F(VerifyCallbackTest, WhatTheLibraryAcceptsStaysAccepted) {
  EXPECT_EQ(verify(1), 1);
  EXPECT_EQ(owner_.getErrorString(), "before");
}

TEST_F(VerifyCallbackTest, WhatTheLibraryRefusesStaysRefusedWithoutAText) {
  X509_STORE_CTX_set_error(context_.get(), X509_V_ERR_CERT_HAS_EXPIRED);
  testing::internal::CaptureStdout();
  EXPECT_EQ(verify(0), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(owner_.getErrorString(), "before");
  EXPECT_EQ(error(), X509_V_ERR_CERT_HAS_EXPIRED);
}

TEST_F(VerifyCallbackTest, ARevokedCertificateIsRefused) {
  revoke();
  EXPECT_EQ(verify(1), 0);
  EXPECT_EQ(owner_.getErrorString(), revokedText());
  EXPECT_EQ(error(), X509_V_ERR_CERT_REVOKED);
}

TEST_F(VerifyCallbackTest, TheTlsObjectMayAlsoBeTheContextsApplicationData) {
  revoke();
  attach(nullptr);
  X509_STORE_CTX_set_app_data(context_.get(), ssl_.get());
  EXPECT_EQ(verify(1), 0);
  EXPECT_EQ(error(), X509_V_ERR_CERT_REVOKED);
}

TEST_F(VerifyCallbackTest, ACertificateThatTheLibraryRefusesIsLookedUpToo) {
  revoke();
  X509_STORE_CTX_set_error(context_.get(), X509_V_ERR_CERT_HAS_EXPIRED);
  EXPECT_EQ(verify(0), 0);
  EXPECT_EQ(owner_.getErrorString(), revokedText());
  EXPECT_EQ(error(), X509_V_ERR_CERT_REVOKED);
}

/// A list that speaks against a certificate, and the error that it leaves.
struct ListCase {
  const char* name;
  bool ofAuthority;  // against the issuer of the list, or else against the server
  CrlSpec list;
  int error;
};

void PrintTo(const ListCase& c, std::ostream* out) { *out << c.name; }

// What was there before any list was asked.
constexpr int kFormerError = X509_V_ERR_CERT_NOT_YET_VALID;

class RefusingListTest : public VerifyCallbackTest, public testing::WithParamInterface<ListCase> {
 protected:
  RefusingListTest() {
    CrlSpec list = GetParam().list;
    list.issuer = authority_;
    if (!GetParam().ofAuthority) list.revoked = {server_.serial()};
    session_.setCrlFile(folder_.write("crl.pem", pki::revocationList(list)));
    X509_STORE_CTX_set_current_cert(
        context_.get(), (GetParam().ofAuthority ? authority_ : server_).certificate.get());
    X509_STORE_CTX_set_error(context_.get(), kFormerError);
  }
  ~RefusingListTest() override { ERR_clear_error(); }
};

TEST_P(RefusingListTest, LeavesItsErrorAndAText) {
  EXPECT_EQ(verify(1), 0);
  EXPECT_NE(owner_.getErrorString(), "before");
  EXPECT_EQ(error(), GetParam().error);
}

TEST_P(RefusingListTest, LeavesItsErrorWithoutAnOwnerToo) {
  session_.setHandshakeOwner(nullptr);
  EXPECT_EQ(verify(1), 0);
  EXPECT_EQ(owner_.getErrorString(), "before");
  EXPECT_EQ(error(), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(Lists, RefusingListTest,
                         testing::Values(ListCase{"expired",
                                                  true,
                                                  {.lastUpdate = -9 * kDay, .nextUpdate = -kDay},
                                                  X509_V_ERR_CRL_HAS_EXPIRED},
                                         ListCase{"no next update",
                                                  true,
                                                  {.nextUpdate = std::nullopt},
                                                  X509_V_ERR_ERROR_IN_CRL_NEXT_UPDATE_FIELD},
                                         ListCase{"forged",
                                                  true,
                                                  {.signedBy = pki::keyNamed(support::KeyKind::kEc,
                                                                             "forger")},
                                                  kFormerError},
                                         ListCase{"revoked", false, {}, X509_V_ERR_CERT_REVOKED}));

TEST_F(VerifyCallbackTest, WithoutASessionThereAreNoLists) {
  revoke();
  SSL_set_app_data(ssl_.get(), nullptr);
  EXPECT_EQ(verify(1), 1);
  EXPECT_EQ(verify(0), 0);
}

TEST_F(VerifyCallbackTest, OutsideAHandshakeThereAreNoLists) {
  revoke();
  attach(nullptr);
  EXPECT_EQ(verify(1), 1);
  EXPECT_EQ(verify(0), 0);
}

TEST_F(VerifyCallbackTest, WithoutAStoreNoListIsAsked) {
  EXPECT_EQ(SSLConnect::crlCheck(1, context_.get(), &session_), 1);
  EXPECT_EQ(SSLConnect::crlCheck(0, context_.get(), &session_), 0);
  EXPECT_EQ(SSLConnect::crlCheck(7, context_.get(), nullptr), 7);
}

TEST_F(VerifyCallbackTest, AListThatIsSilentKeepsTheVerdict) {
  session_.setCrlFile("/no/such/crl.pem");
  EXPECT_EQ(SSLConnect::crlCheck(1, context_.get(), &session_), 1);
  EXPECT_EQ(SSLConnect::crlCheck(0, context_.get(), &session_), 0);
  EXPECT_EQ(owner_.getErrorString(), "before");
}

TEST_F(VerifyCallbackTest, AMissingCertificateKeepsTheVerdictAndLeavesAText) {
  session_.setCrlFile("/no/such/crl.pem");
  X509_STORE_CTX_set_current_cert(context_.get(), nullptr);
  EXPECT_EQ(SSLConnect::crlCheck(1, context_.get(), &session_), 1);
  EXPECT_EQ(owner_.getErrorString(), "Current Certificate, subject or issuer is NULL in crlCheck");
}

}  // namespace
}  // namespace kvsc
