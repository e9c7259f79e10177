// The development set of credentials: what its files are, and that they fit each other.
#include <gtest/gtest.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>

#include "tests/support/TempDir.h"

namespace {

template <auto free>
struct With {
  template <class T>
  void operator()(T* object) const {
    free(object);
  }
};
using Bio = std::unique_ptr<BIO, With<BIO_free>>;
using Certificate = std::unique_ptr<X509, With<X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, With<EVP_PKEY_free>>;
using Store = std::unique_ptr<X509_STORE, With<X509_STORE_free>>;
using StoreContext = std::unique_ptr<X509_STORE_CTX, With<X509_STORE_CTX_free>>;

std::string textOf(const std::string& stem) {
  return support::readFile(std::filesystem::path(VESK_DEVELOPMENT_SET) / (stem + ".pem"));
}

Bio bioOf(const std::string& text) {
  return Bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

Certificate certificateOf(const std::string& stem) {
  const std::string text = textOf(stem);
  return Certificate(PEM_read_bio_X509_AUX(bioOf(text).get(), nullptr, nullptr, nullptr));
}

Key keyOf(const std::string& stem) {
  const std::string text = textOf(stem);
  char noPassPhrase[] = "";
  return Key(PEM_read_bio_PrivateKey(bioOf(text).get(), nullptr, nullptr, noPassPhrase));
}

/// The verification's result for a chain of one issuer.
int verify(X509* certificate, X509* authority, int purpose) {
  const Store store(X509_STORE_new());
  X509_STORE_add_cert(store.get(), authority);
  const StoreContext context(X509_STORE_CTX_new());
  X509_STORE_CTX_init(context.get(), store.get(), certificate, nullptr);
  X509_STORE_CTX_set_purpose(context.get(), purpose);
  X509_verify_cert(context.get());
  return X509_STORE_CTX_get_error(context.get());
}

/// Full years between two points in time of a certificate.
int yearsOf(X509* certificate) {
  int days = 0;
  int seconds = 0;
  EXPECT_EQ(ASN1_TIME_diff(&days, &seconds, X509_get0_notBefore(certificate),
                           X509_get0_notAfter(certificate)),
            1);
  return days / 366;
}

void expectModern(X509* certificate) {
  ASSERT_NE(certificate, nullptr);
  EXPECT_EQ(X509_get_signature_nid(certificate), NID_sha256WithRSAEncryption);
  EXPECT_EQ(EVP_PKEY_get_bits(X509_get0_pubkey(certificate)), 2048);
  EXPECT_GE(yearsOf(certificate), 20);
  EXPECT_LT(X509_cmp_time(X509_get0_notBefore(certificate), nullptr), 0);
  EXPECT_GT(X509_cmp_time(X509_get0_notAfter(certificate), nullptr), 0);
}

struct AuthorityCase {
  const char* stem;
  std::size_t length;
};

void PrintTo(const AuthorityCase& c, std::ostream* out) { *out << c.stem; }

class Authority : public testing::TestWithParam<AuthorityCase> {};

TEST_P(Authority, SignsItselfAndOthers) {
  const std::string stem = GetParam().stem;
  const Certificate authority = certificateOf(stem);
  expectModern(authority.get());
  EXPECT_EQ(textOf(stem).size(), GetParam().length);
  EXPECT_EQ(X509_check_ca(authority.get()), 1);
  EXPECT_EQ(X509_verify(authority.get(), X509_get0_pubkey(authority.get())), 1);
  const Key key = keyOf("authority-keys/" + stem + "-key");
  EXPECT_EQ(X509_check_private_key(authority.get(), key.get()), 1);
}

INSTANTIATE_TEST_SUITE_P(Files, Authority,
                         testing::Values(AuthorityCase{"production-ca", 1509},
                                         AuthorityCase{"test-ca", 1359}));

struct ClientCase {
  const char* stem;
  const char* authority;
  const char* stranger;
  std::size_t certificateLength;
  std::size_t keyLength;
};

void PrintTo(const ClientCase& c, std::ostream* out) { *out << c.stem; }

class Client : public testing::TestWithParam<ClientCase> {
 protected:
  const std::string stem_ = GetParam().stem;
};

TEST_P(Client, HasTextsOfTheExpectedLengths) {
  EXPECT_EQ(textOf(stem_ + "-client").size(), GetParam().certificateLength);
  EXPECT_EQ(textOf(stem_ + "-key").size(), GetParam().keyLength);
}

TEST_P(Client, HasAModernCertificateForItsRsaKey) {
  const Certificate certificate = certificateOf(stem_ + "-client");
  const Key key = keyOf(stem_ + "-key");
  expectModern(certificate.get());
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(EVP_PKEY_get_base_id(key.get()), EVP_PKEY_RSA);
  EXPECT_EQ(X509_check_private_key(certificate.get(), key.get()), 1);
}

TEST_P(Client, IsSignedByItsOwnAuthorityOnly) {
  const Certificate certificate = certificateOf(stem_ + "-client");
  EXPECT_EQ(
      verify(certificate.get(), certificateOf(GetParam().authority).get(), X509_PURPOSE_SSL_CLIENT),
      X509_V_OK);
  EXPECT_NE(
      verify(certificate.get(), certificateOf(GetParam().stranger).get(), X509_PURPOSE_SSL_CLIENT),
      X509_V_OK);
}

TEST_P(Client, IsNoServerAndNoAuthority) {
  const Certificate certificate = certificateOf(stem_ + "-client");
  EXPECT_NE(
      verify(certificate.get(), certificateOf(GetParam().authority).get(), X509_PURPOSE_SSL_SERVER),
      X509_V_OK);
  EXPECT_EQ(X509_check_ca(certificate.get()), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Files, Client,
    testing::Values(ClientCase{"production-linux", "production-ca", "test-ca", 1367, 1674},
                    ClientCase{"production-other", "production-ca", "test-ca", 1367, 1674},
                    ClientCase{"jtest", "production-ca", "test-ca", 1375, 1675},
                    ClientCase{"itest", "production-ca", "test-ca", 1375, 1675},
                    ClientCase{"etest", "production-ca", "test-ca", 1375, 1675},
                    ClientCase{"localhost", "test-ca", "production-ca", 1379, 1679}));

}  // namespace
