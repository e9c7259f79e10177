// When a connection is closed, and by whom; and servers that are gone.
#include <sys/socket.h>

#include <chrono>

#include "kvsc/OpenSsl.h"
#include "tests/support/DevelopmentPki.h"
#include "tests/unit/kvsc/ExchangeTesting.h"

namespace {

using kvsc::HTTP_ERROR_CERTIFICATE;
using kvsc::HTTP_ERROR_FAILED;
using support::Script;
using support::ScriptedServer;
using support::TlsSettings;

class HttpConnectionTest : public Exchange {
 protected:
  kvsc::HttpErrorIds send(const std::string& url) {
    return client_.sendRequest(url, 0, "GET", &session_, "", "", "");
  }

  /// Sends until the system takes no more.
  static void fill(int fd) {
    const std::string bytes(1 << 20, 'x');
    while (::send(fd, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL) > 0) {
    }
  }

  void expectClosed() {
    EXPECT_EQ(session_.getConnect(), nullptr);
    EXPECT_EQ(session_.getSsl(), nullptr);
    EXPECT_EQ(session_.getSslContext(), nullptr);
  }
};

TEST_F(HttpConnectionTest, AFailedConnectClosesTheSession) {
  ScriptedServer stranger(TlsSettings{.identity = support::pki::selfSigned()});
  session_.setCheckCertificate(true);
  EXPECT_EQ(send(stranger.url()), HTTP_ERROR_CERTIFICATE);
  expectClosed();
}

TEST_F(HttpConnectionTest, ACallbackThatThrowsClosesTheSession) {
  answer(support::okResponse("film"));
  client_.setHeaderCallback([](void*, std::size_t, std::size_t, void*) -> std::size_t { throw 1; });
  EXPECT_EQ(send(server_.url("/", "127.0.0.1")), HTTP_ERROR_FAILED);
  expectClosed();
}

TEST_F(HttpConnectionTest, AnotherHostLeavesTheConnectionToTheCallersClose) {
  ScriptedServer other(
      TlsSettings{.identity = support::pki::issue(support::development::authorityOf("LOCALHOST"),
                                                  {.commonName = "other.example"})});
  session_.setCheckCertificate(true);
  testing::internal::CaptureStdout();
  EXPECT_EQ(send(other.url()), HTTP_ERROR_FAILED);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "application verification failure\n");
  EXPECT_NE(session_.getConnect(), nullptr);
  EXPECT_NE(session_.getSsl(), nullptr);
  client_.close(&session_);
  expectClosed();
}

TEST_F(HttpConnectionTest, AClosingMessageThatDoesNotFitIsDropped) {
  ScriptedServer deaf(TlsSettings{.identity = support::pki::selfSigned()});
  deaf.next(Script().readRequest().send(support::okResponse("film")).stall());
  ASSERT_EQ(send(deaf.url()), kvsc::HTTP_ERROR_NONE);
  fill(static_cast<int>(BIO_get_fd(session_.getConnect(), nullptr)));
  const auto begin = std::chrono::steady_clock::now();
  client_.close(&session_);
  EXPECT_LT(std::chrono::steady_clock::now() - begin,
            std::chrono::milliseconds(session_.getWaitTimeout() / 2));
}

TEST_F(HttpConnectionTest, AGoneServerIsTriedTenTimesThenReported) {
  GoneDialer dialer;
  session_.setDialer(&dialer);
  const auto begin = std::chrono::steady_clock::now();
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_NONE;
  client_.httpGet("http://films.example/", 0, &result, &session_, "", "", kvsc::SSLV3);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(900));
  EXPECT_EQ(result, HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), "SSLClient::writeData failed.");
  expectClosed();
}

TEST_F(HttpConnectionTest, AFailedTunnelRequestAddsNoErrorToThoseOfTheHandshake) {
  GoneDialer dialer;
  session_.setDialer(&dialer);
  session_.setProxyURL("proxy.example");
  EXPECT_EQ(send("https://films.example/"), HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), "SSL_ERROR_SYSCALL\n writing error:80000020:system library::Broken pipe\n");
}

TEST_F(HttpConnectionTest, WithChecksGetAndHeadVerifyThePeer) {
  ScriptedServer stranger(TlsSettings{.identity = support::pki::selfSigned()});
  session_.setCheckCertificate(true);
  const std::string url = stranger.url();
  EXPECT_EQ(client_.httpGet(url, 0, nullptr, &session_, "", "", kvsc::SSLV3),
            HTTP_ERROR_CERTIFICATE);
  EXPECT_EQ(session_.getVerifyMode(), SSL_VERIFY_PEER);
  session_.setVerifyMode(SSL_VERIFY_NONE);
  EXPECT_EQ(client_.httpHead(url, 0, nullptr, &session_, "", "", kvsc::SSLV3),
            HTTP_ERROR_CERTIFICATE);
  EXPECT_EQ(session_.getVerifyMode(), SSL_VERIFY_PEER);
}

}  // namespace
