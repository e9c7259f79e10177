#include <gtest/gtest.h>

#include "playerx/app/reasons/Certificates.h"

namespace playerx::reasons {
namespace {

Explanation of(const std::string& words) { return explainCertificate(words, "films.test"); }

TEST(CertificatesTest, EachFaultIsToldFromTheOthers) {
  const std::pair<const char*, Reason> cases[] = {
      {"SSL certificate problem: certificate has expired", Reason::kExpired},
      {"SSL certificate problem: certificate is not yet valid", Reason::kNotYetValid},
      {"SSL certificate problem: self-signed certificate", Reason::kSelfSigned},
      {"SSL certificate problem: self-signed certificate in certificate chain",
       Reason::kUnknownAuthority},
      {"SSL certificate problem: unable to get local issuer certificate",
       Reason::kUnknownAuthority},
      {"something else", reasonOf(TransferFailure::kCertificate)}};
  for (const auto& [words, reason] : cases) {
    EXPECT_EQ(of(words).reason, reason) << words;
    EXPECT_EQ(of(words).code(), "certificate") << words;
    EXPECT_NE(of(words).happened.find("films.test"), std::string::npos) << words;
  }
}

TEST(CertificatesTest, AServerThatRefusesOursIsNotBlamedForItsOwn) {
  EXPECT_EQ(of("SSL certificate verification failed").sentence(),
            "No secure connection to films.test could be made; the server may be too old, ask for "
            "a certificate, or speak http only.");
}

TEST(CertificatesTest, TheHostThatWasAskedIsNamed) {
  EXPECT_EQ(of("SSL: no alternative certificate subject name matches target host name 'cdn.test'")
                .sentence(),
            "The certificate that was shown does not belong to cdn.test; check the address.");
  EXPECT_EQ(
      of("SSL: certificate subject name 'a' does not match target host name 'b.test'").happened,
      "The certificate that was shown does not belong to b.test");
}

}  // namespace
}  // namespace playerx::reasons
