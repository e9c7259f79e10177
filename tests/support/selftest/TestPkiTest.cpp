#include <gtest/gtest.h>
#include <openssl/x509v3.h>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"

namespace support {
namespace {

std::string printed(const std::string& pem, const std::string& kind = "x509") {
  Process openssl(ProcessOptions{{"openssl", kind, "-noout", "-text"}, {}, {}, {}, pem});
  EXPECT_EQ(openssl.wait(), 0) << openssl.errors();
  return openssl.output();
}

std::string verdict(const TempDir& dir, const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {"openssl", "verify", "-CAfile", (dir / "ca.pem").string()};
  all.insert(all.end(), arguments.begin(), arguments.end());
  all.push_back((dir / "leaf.pem").string());
  Process openssl(all);
  openssl.wait();
  return openssl.output() + openssl.errors();
}

TEST(TestPkiTest, AnIssuedCertificateVerifiesAgainstItsAuthority) {
  const TempDir dir;
  const Identity authority = pki::authority("Tests");
  dir.write("ca.pem", authority.certificatePem());
  dir.write("leaf.pem", pki::issue(authority).certificatePem());
  EXPECT_NE(verdict(dir, {}).find("leaf.pem: OK"), std::string::npos);
}

TEST(TestPkiTest, AnExpiredCertificateDoesNot) {
  const TempDir dir;
  const Identity authority = pki::authority("Tests");
  dir.write("ca.pem", authority.certificatePem());
  CertificateSpec spec;
  spec.notBefore = -10 * kDay;
  spec.notAfter = -kDay;
  dir.write("leaf.pem", pki::issue(authority, spec).certificatePem());
  EXPECT_NE(verdict(dir, {}).find("certificate has expired"), std::string::npos);
}

TEST(TestPkiTest, NamesAppearAsGiven) {
  CertificateSpec spec;
  spec.commonName = std::nullopt;
  spec.dnsNames = {"a.example"};
  spec.addresses = {"127.0.0.1"};
  const std::string text = printed(pki::selfSigned(spec).certificatePem());
  EXPECT_NE(text.find("DNS:a.example"), std::string::npos);
  EXPECT_NE(text.find("IP Address:127.0.0.1"), std::string::npos);
  EXPECT_EQ(text.find("CN = "), std::string::npos);
}

TEST(TestPkiTest, ANulStaysInTheCommonName) {
  CertificateSpec spec;
  spec.commonName = std::string("localhost\0.evil", 15);
  const Identity made = pki::selfSigned(spec);
  char name[64] = {};
  EXPECT_EQ(X509_NAME_get_text_by_NID(X509_get_subject_name(made.certificate.get()), NID_commonName,
                                      name, sizeof name),
            15);
  EXPECT_EQ(std::string(name, 15), *spec.commonName);
}

TEST(TestPkiTest, ANulStaysInAnAlternativeName) {
  const std::string name("localhost\0.evil", 15);
  const Identity made = pki::selfSigned({.dnsNames = {name}});
  const std::unique_ptr<GENERAL_NAMES, decltype(&GENERAL_NAMES_free)> names(
      static_cast<GENERAL_NAMES*>(
          X509_get_ext_d2i(made.certificate.get(), NID_subject_alt_name, nullptr, nullptr)),
      &GENERAL_NAMES_free);
  ASSERT_EQ(sk_GENERAL_NAME_num(names.get()), 1);
  const ASN1_STRING* value = sk_GENERAL_NAME_value(names.get(), 0)->d.dNSName;
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(ASN1_STRING_get0_data(value)),
                        static_cast<std::size_t>(ASN1_STRING_length(value))),
            name);
}

TEST(TestPkiTest, ARevokedSerialIsInTheList) {
  const TempDir dir;
  const Identity authority = pki::authority("Tests");
  const Identity leaf = pki::issue(authority);
  dir.write("ca.pem", authority.certificatePem());
  dir.write("leaf.pem", leaf.certificatePem());
  CrlSpec spec{authority, {leaf.serial()}};
  const auto list = dir.write("list.pem", pki::revocationList(spec));
  EXPECT_NE(verdict(dir, {"-crl_check", "-CRLfile", list.string()}).find("certificate revoked"),
            std::string::npos);
}

TEST(TestPkiTest, AListWithoutNextUpdateSaysSo) {
  CrlSpec spec{pki::authority("Tests"), {}};
  spec.nextUpdate = std::nullopt;
  EXPECT_NE(printed(pki::revocationList(spec), "crl").find("Next Update: NONE"), std::string::npos);
}

TEST(TestPkiTest, AnEncryptedKeyNeedsItsPassPhrase) {
  const Identity made = pki::selfSigned();
  const auto readWith = [&](const std::string& phrase) {
    Process openssl(ProcessOptions{{"openssl", "pkey", "-noout", "-passin", "pass:" + phrase},
                                   {},
                                   {},
                                   {},
                                   made.encryptedKeyPem("right")});
    return openssl.wait();
  };
  EXPECT_EQ(readWith("right"), 0);
  EXPECT_NE(readWith("wrong"), 0);
}

TEST(TestPkiTest, IdentitiesSurviveTheirPemText) {
  const Identity made = pki::selfSigned();
  const Identity read = pki::fromPem(made.certificatePem(), made.keyPem());
  EXPECT_EQ(read.serial(), made.serial());
  EXPECT_EQ(X509_check_private_key(read.certificate.get(), read.key.get()), 1);
}

}  // namespace
}  // namespace support
