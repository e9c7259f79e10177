#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "kvsc/CertificateCache.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"
#include "tests/support/TestPki.h"

namespace kvsc {
namespace {

namespace pki = support::pki;

CertificatePtr read(const std::string& pem) {
  const BioPtr bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  return CertificatePtr(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
}

TEST(CertificateCacheTest, ATextThatWasNotCachedIsUnknown) {
  EXPECT_EQ(cachedCertificate(pki::selfSigned().certificatePem()), nullptr);
  EXPECT_EQ(cachedCertificate(""), nullptr);
}

TEST(CertificateCacheTest, EachTextHasItsOwnCertificate) {
  const std::string one = pki::selfSigned({.commonName = "one"}).certificatePem();
  const std::string two = pki::selfSigned({.commonName = "two"}).certificatePem();
  const CertificatePtr first = read(one);
  const CertificatePtr second = read(two);
  cacheCertificate(one, first);
  cacheCertificate(two, second);
  EXPECT_EQ(cachedCertificate(one).get(), first.get());
  EXPECT_EQ(cachedCertificate(two).get(), second.get());
  EXPECT_EQ(cachedCertificate(one + "\n"), nullptr);
}

TEST(CertificateCacheTest, ACertificateOutlivesTheClientThatCachedIt) {
  const std::string pem = pki::selfSigned({.commonName = "kept"}).certificatePem();
  cacheCertificate(pem, read(pem));
  const CertificatePtr known = cachedCertificate(pem);
  ASSERT_NE(known, nullptr);
  EXPECT_EQ(X509_cmp(known.get(), read(pem).get()), 0);
}

// Counted by the allocator, of which sanitizers bring one of their own that keeps no account.
TEST(CertificateCacheTest, TheTextItselfIsNotKept) {
  const std::string pem = pki::selfSigned({.commonName = "long"}).certificatePem();
  const CertificatePtr certificate = read(pem);
  const std::string text = pem + std::string(8 << 20, '\n');
  const auto inUse = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
  const std::size_t before = inUse();
  cacheCertificate(text, certificate);
  EXPECT_LT(inUse(), before + text.size() / 2);
  EXPECT_EQ(cachedCertificate(text).get(), certificate.get());
}

// In a process of its own, as a full cache has no room for the other tests.
TEST(CertificateCacheTest, TheCacheHasALimit) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto run = [] {
    const CertificatePtr certificate = read(pki::selfSigned().certificatePem());
    for (int i = 0; i < 1000; ++i) cacheCertificate("text " + std::to_string(i), certificate);
    std::_Exit(
        cachedCertificate("text 0") != nullptr && cachedCertificate("text 999") == nullptr ? 0 : 1);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(CertificateCacheTest, ManyThreadsShareTheSameCredentials) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([i] {
      SSLConnect connect(i % 2 == 0 ? "LOCALHOST" : "JTEST");
      SSLSession session;
      session.setCheckCertificate(true);
      EXPECT_EQ(connect.setupContext(&session, nullptr), 1);
      connect.close(&session);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace kvsc
