#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>

#include "playerx/transfers/CurlFailure.h"

namespace playerx {
namespace {

using enum TransferFailure;

TEST(CurlFailureTest, EachEndStandsForOneFailure) {
  const std::pair<CURLcode, TransferFailure> kTable[] = {
      {CURLE_OK, kNone},
      {CURLE_COULDNT_RESOLVE_HOST, kNoSuchHost},
      {CURLE_COULDNT_RESOLVE_PROXY, kNoSuchProxy},
      {CURLE_OPERATION_TIMEDOUT, kTimeout},
      {CURLE_PROXY, kNetwork},
      {CURLE_PEER_FAILED_VERIFICATION, kCertificate},
      {CURLE_SSL_CACERT_BADFILE, kTrustFile},
      {CURLE_SSL_CONNECT_ERROR, kTls},
      {CURLE_SSL_CLIENTCERT, kTls},
      {CURLE_SSL_CERTPROBLEM, kTls},
      {CURLE_TOO_MANY_REDIRECTS, kRedirectLoop},
      {CURLE_PARTIAL_FILE, kDropped},
      {CURLE_GOT_NOTHING, kDropped},
      {CURLE_RECV_ERROR, kDropped},
      {CURLE_HTTP2_STREAM, kDropped},
      {CURLE_WEIRD_SERVER_REPLY, kBadAnswer},
      {CURLE_OUT_OF_MEMORY, kBadAnswer},
      {CURLE_FAILED_INIT, kInternal},
  };
  for (const auto& [code, failure] : kTable) {
    EXPECT_EQ(failureOf({.code = code}), failure) << curl_easy_strerror(code);
  }
}

TEST(CurlFailureTest, TheWordsOnAProxyLoseItsPassword) {
  EXPECT_EQ(wordsOf(CURLE_UNSUPPORTED_PROTOCOL,
                    "Unsupported proxy scheme for 'foo://u:pass'w@rd@proxy.test:1'"),
            "Unsupported proxy scheme for 'proxy.test:1'");
  EXPECT_EQ(wordsOf(CURLE_COULDNT_CONNECT, ""), curl_easy_strerror(CURLE_COULDNT_CONNECT));
}

TEST(CurlFailureTest, TheSystemSaysWhyThereIsNoConnection) {
  const auto failureWith = [](long error) {
    return failureOf({.code = CURLE_COULDNT_CONNECT, .systemError = error});
  };
  EXPECT_EQ(failureWith(ECONNREFUSED), kRefused);
  EXPECT_EQ(failureWith(ETIMEDOUT), kTimeout);
  EXPECT_EQ(failureWith(ENETUNREACH), kNetwork);
  EXPECT_EQ(failureWith(0), kNetwork);
}

TEST(CurlFailureTest, WhereTheServerSentThePlayerIsNotWhatTheUserAskedFor) {
  for (const CURLcode code : {CURLE_UNSUPPORTED_PROTOCOL, CURLE_URL_MALFORMAT}) {
    EXPECT_EQ(failureOf({.code = code, .redirects = 1}), kBadRedirect);
  }
  EXPECT_EQ(failureOf({.code = CURLE_UNSUPPORTED_PROTOCOL}), kBadAnswer);
  EXPECT_EQ(failureOf({.code = CURLE_URL_MALFORMAT}), kUnsupportedAddress);
}

TEST(CurlFailureTest, AProxyThatRefusesTheTunnelIsNamedByItsStatus) {
  EXPECT_EQ(failureOf({.code = CURLE_RECV_ERROR, .proxyStatus = 407}), failureOfStatus(407));
  EXPECT_EQ(failureOf({.code = CURLE_RECV_ERROR, .proxyStatus = 200}), kDropped);
}

TEST(CurlFailureTest, ThePeerIsTheOneThatTheWordsName) {
  EXPECT_EQ(peerOf("", "h").name, "h");
  EXPECT_EQ(peerOf("Failed to connect to proxy.test port 8080 after 1 ms: No", "h").name,
            "proxy.test:8080");
  EXPECT_EQ(peerOf("Failed to connect to films.test port 443 after 1 ms: No", "h").name,
            "films.test");
}

TEST(CurlFailureTest, AProxyIsKnownByTheEnvironment) {
  const std::string words = "Failed to connect to proxy.test port 8080 after 1 ms: No";
  EXPECT_FALSE(peerOf(words, "h").isProxy);
  for (const char* proxy : {"http://proxy.test:8080/", "anna:word@proxy.test:8080"}) {
    ::setenv("all_proxy", proxy, 1);
    EXPECT_TRUE(peerOf(words, "h").isProxy) << proxy;
  }
  ::unsetenv("all_proxy");
}

TEST(CurlFailureTest, TheWordsOfARequestGoBeforeThoseOfItsCode) {
  EXPECT_EQ(wordsOf(CURLE_COULDNT_CONNECT, "Failed to connect"), "Failed to connect");
  EXPECT_EQ(wordsOf(CURLE_COULDNT_CONNECT, ""), curl_easy_strerror(CURLE_COULDNT_CONNECT));
}

}  // namespace
}  // namespace playerx
