#include <gtest/gtest.h>

#include "kvsc/CertificateCheck.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLSession.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"

namespace kvsc {
namespace {

namespace pki = support::pki;
using support::CertificateSpec;
using support::CrlSpec;
using support::Identity;
using support::kDay;

const std::string kNulName("localhost\0.evil.example", 23);

X509* certificateOf(const Identity& identity) { return identity.certificate.get(); }

Identity namedBy(const std::optional<std::string>& commonName,
                 const std::vector<std::string>& dnsNames = {}) {
  return pki::selfSigned({.commonName = commonName, .dnsNames = dnsNames});
}

TEST(DnsNameTest, OneOfSeveralIsEnough) {
  const Identity server = namedBy("x", {"one.example", "two.example"});
  EXPECT_TRUE(hasDnsName(certificateOf(server), "one.example"));
  EXPECT_TRUE(hasDnsName(certificateOf(server), "two.example"));
  EXPECT_FALSE(hasDnsName(certificateOf(server), "three.example"));
}

TEST(DnsNameTest, EveryExtensionOfAlternativeNamesIsRead) {
  const Identity server = namedBy("x", {"one.example"});
  const CertificatePtr twice(X509_dup(certificateOf(server)));
  X509_EXTENSION* second =
      X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "DNS:two.example");
  ASSERT_EQ(X509_add_ext(twice.get(), second, -1), 1);
  X509_EXTENSION_free(second);
  EXPECT_TRUE(hasDnsName(twice.get(), "one.example"));
  EXPECT_TRUE(hasDnsName(twice.get(), "two.example"));
  EXPECT_FALSE(hasDnsName(twice.get(), "three.example"));
}

TEST(DnsNameTest, ItIsComparedByteForByte) {
  const Identity server = namedBy("x", {"*.example", "films.example"});
  for (const char* host : {"Films.example", "films.example.", "a.example", "films.exampl", ""}) {
    EXPECT_FALSE(hasDnsName(certificateOf(server), host)) << host;
  }
  EXPECT_TRUE(hasDnsName(certificateOf(server), "*.example"));
}

TEST(DnsNameTest, AZeroByteDoesNotEndTheName) {
  const Identity server = namedBy("x", {kNulName});
  EXPECT_FALSE(hasDnsName(certificateOf(server), "localhost"));
}

TEST(DnsNameTest, AnAddressIsNoDnsName) {
  const Identity server = pki::selfSigned({.addresses = {"127.0.0.1"}});
  EXPECT_FALSE(hasDnsName(certificateOf(server), "127.0.0.1"));
}

TEST(DnsNameTest, OtherKindsOfAlternativeNamesAreNotDnsNames) {
  const Identity server = namedBy("x");
  const CertificatePtr certificate(X509_dup(certificateOf(server)));
  X509_EXTENSION* names = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name,
                                              "email:films.example,URI:films.example");
  ASSERT_EQ(X509_add_ext(certificate.get(), names, -1), 1);
  X509_EXTENSION_free(names);
  EXPECT_FALSE(hasDnsName(certificate.get(), "films.example"));
}

TEST(DnsNameTest, ACertificateWithoutAlternativeNamesHasNoDnsName) {
  EXPECT_FALSE(hasDnsName(certificateOf(namedBy("localhost")), "localhost"));
}

TEST(CommonNameTest, TheSameNameIsNotAnother) {
  EXPECT_FALSE(hasOtherCommonName(certificateOf(namedBy("example")), "example"));
}

TEST(CommonNameTest, ItIsComparedByteForByte) {
  const Identity server = namedBy("Example");
  for (const char* host : {"example", "Example.", "Exampl", "Example2", ""}) {
    EXPECT_TRUE(hasOtherCommonName(certificateOf(server), host)) << host;
  }
}

TEST(CommonNameTest, AZeroByteDoesNotEndTheName) {
  EXPECT_TRUE(hasOtherCommonName(certificateOf(namedBy(kNulName)), "localhost"));
}

TEST(CommonNameTest, ACertificateWithoutACommonNameHasNoOther) {
  EXPECT_FALSE(hasOtherCommonName(certificateOf(namedBy(std::nullopt)), "example"));
}

TEST(NameLineTest, ALongNameIsCutOff) {
  const Identity server =
      pki::selfSigned({.commonName = std::string(60, 'n'), .organization = std::string(60, 'o')});
  const std::string line = nameLine(X509_get_subject_name(certificateOf(server)));
  EXPECT_NE(line.find("/CN=" + std::string(60, 'n')), std::string::npos);
  EXPECT_LT(line.size(), 256U);
}

/// An authority, a certificate of it, and a store with lists.
class CrlTest : public testing::Test {
 protected:
  X509_STORE* storeWith(const std::string& lists) {
    session_.setCrlFile(folder_.write("crl.pem", lists));
    return session_.getCrlStore();
  }

  X509_STORE* storeWith(const CrlSpec& spec) { return storeWith(pki::revocationList(spec)); }

  CrlVerdict check(const Identity& identity, X509_STORE* store) {
    return checkAgainstCrls(certificateOf(identity), store);
  }

  void expectAccepted(const CrlVerdict& verdict) {
    EXPECT_TRUE(verdict.accepted);
    EXPECT_EQ(verdict.text, "");
    EXPECT_EQ(verdict.storeError, 0);
  }

  void expectRefused(const CrlVerdict& verdict, const std::string& text, int storeError) {
    EXPECT_FALSE(verdict.accepted);
    EXPECT_EQ(verdict.text, text);
    EXPECT_EQ(verdict.storeError, storeError);
  }

  const Identity authority_ = pki::authority("Authority");
  const Identity server_ = pki::issue(authority_, {.commonName = "films.example"});
  const std::string issuer_ = nameLine(X509_get_subject_name(certificateOf(authority_)));
  const std::string subject_ = nameLine(X509_get_subject_name(certificateOf(server_)));
  support::TempDir folder_;
  SSLSession session_;
};

TEST_F(CrlTest, AListThatRevokesNothingAcceptsBoth) {
  X509_STORE* store = storeWith({.issuer = authority_});
  expectAccepted(check(authority_, store));
  expectAccepted(check(server_, store));
}

TEST_F(CrlTest, WithoutAListNothingIsRefused) {
  X509_STORE* store = storeWith("");
  expectAccepted(check(authority_, store));
  expectAccepted(check(server_, store));
}

TEST_F(CrlTest, ARevokedCertificateIsRefused) {
  X509_STORE* store = storeWith({.issuer = authority_, .revoked = {server_.serial()}});
  expectAccepted(check(authority_, store));
  expectRefused(check(server_, store), subject_ + " was revoked by " + issuer_,
                X509_V_ERR_CERT_REVOKED);
}

TEST_F(CrlTest, AnIssuerOfAListIsLookedUpInThatOfItsOwnIssuerToo) {
  const CrlSpec ofItself{.issuer = authority_, .revoked = {authority_.serial()}};
  expectRefused(check(authority_, storeWith(ofItself)), issuer_ + " was revoked by " + issuer_,
                X509_V_ERR_CERT_REVOKED);
}

TEST_F(CrlTest, OtherRevokedCertificatesDoNotMatter) {
  expectAccepted(
      check(server_, storeWith({.issuer = authority_, .revoked = {server_.serial() + 1, 7}})));
}

TEST_F(CrlTest, AListOfAnotherIssuerDoesNotMatter) {
  const CrlSpec foreign{.issuer = pki::authority("Other"), .revoked = {server_.serial()}};
  expectAccepted(check(authority_, storeWith(foreign)));
  expectAccepted(check(server_, storeWith(foreign)));
}

TEST_F(CrlTest, AForgedListIsRefusedWithItsIssuer) {
  const CrlSpec forged{.issuer = authority_,
                       .signedBy = pki::keyNamed(support::KeyKind::kEc, "forger")};
  expectRefused(check(authority_, storeWith(forged)),
                "Unable to verify signature on CRL issued by " + issuer_, X509_V_OK);
  ERR_clear_error();
}

TEST_F(CrlTest, AListWithoutANextUpdateIsRefusedWithItsIssuer) {
  expectRefused(check(authority_, storeWith({.issuer = authority_, .nextUpdate = std::nullopt})),
                "Unable to get the next CRL update for CRL issued by " + issuer_,
                X509_V_ERR_ERROR_IN_CRL_NEXT_UPDATE_FIELD);
}

TEST_F(CrlTest, AnExpiredListIsRefusedWithItsIssuer) {
  const CrlSpec expired{.issuer = authority_, .lastUpdate = -9 * kDay, .nextUpdate = -kDay};
  expectRefused(check(authority_, storeWith(expired)), "Expired CRL issued by " + issuer_,
                X509_V_ERR_CRL_HAS_EXPIRED);
}

TEST_F(CrlTest, AFaultyListRefusesOnlyItsIssuer) {
  expectAccepted(check(server_, storeWith({.issuer = authority_, .nextUpdate = std::nullopt})));
}

TEST_F(CrlTest, TheNewestOfSeveralListsCountsInAnyOrder) {
  const std::string old =
      pki::revocationList({.issuer = authority_, .lastUpdate = -9 * kDay, .nextUpdate = -kDay});
  const std::string fresh = pki::revocationList(
      {.issuer = authority_, .revoked = {server_.serial()}, .lastUpdate = -kDay});
  for (const std::string& lists : {old + fresh, fresh + old}) {
    X509_STORE* store = storeWith(lists);
    expectAccepted(check(authority_, store));
    EXPECT_FALSE(check(server_, store).accepted);
  }
}

TEST_F(CrlTest, AMissingCertificateIsAcceptedWithAText) {
  const CrlVerdict verdict = checkAgainstCrls(nullptr, storeWith({.issuer = authority_}));
  EXPECT_TRUE(verdict.accepted);
  EXPECT_EQ(verdict.text, "Current Certificate, subject or issuer is NULL in crlCheck");
}

/// A store context that stands at a certificate, as the library hands it to a callback.
class RefusalTest : public testing::Test {
 protected:
  RefusalTest() {
    X509_STORE_CTX_init(context_.get(), store_.get(), certificateOf(server_), nullptr);
    X509_STORE_CTX_set_current_cert(context_.get(), certificateOf(server_));
    X509_STORE_CTX_set_error_depth(context_.get(), 1);
    X509_STORE_CTX_set_error(context_.get(), X509_V_ERR_CERT_HAS_EXPIRED);
  }

  struct ContextFree {
    void operator()(X509_STORE_CTX* context) const { X509_STORE_CTX_free(context); }
  };

  const Identity authority_ = pki::authority("Authority");
  const Identity server_ = pki::issue(authority_, {.commonName = "films.example"});
  const StorePtr store_{X509_STORE_new()};
  const std::unique_ptr<X509_STORE_CTX, ContextFree> context_{X509_STORE_CTX_new()};
};

TEST_F(RefusalTest, TheTextNamesEverything) {
  EXPECT_EQ(refusalText(context_.get()),
            "-Error with certificate at depth: 1 issuer = " +
                nameLine(X509_get_subject_name(certificateOf(authority_))) +
                " subject = " + nameLine(X509_get_subject_name(certificateOf(server_))) +
                " err: 10 certificate has expired");
}

TEST_F(RefusalTest, WithoutACertificateTheNamesAreEmpty) {
  X509_STORE_CTX_set_current_cert(context_.get(), nullptr);
  EXPECT_EQ(refusalText(context_.get()),
            "-Error with certificate at depth: 1 issuer =  subject =  err: 10 certificate has "
            "expired");
}

}  // namespace
}  // namespace kvsc
