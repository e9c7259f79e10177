#include <gtest/gtest.h>

#include "kvsc/OpenSsl.h"
#include "kvsc/SSLSession.h"
#include "kvsc/Tunnel.h"

namespace kvsc {
namespace {

class TunnelTest : public testing::Test {
 protected:
  TunnelTest() {
    session_.setHost("example");
    session_.setPort("https");
    session_.setUserAgent("Vesk Player 2.0");
  }

  SSLSession session_;
};

TEST_F(TunnelTest, TheRequestIsByteForByteThis) {
  EXPECT_EQ(tunnelRequest(session_),
            "CONNECT example:https HTTP/1.0\r\n"
            "User-Agent: Vesk Player 2.0\r\n"
            "Host: example\r\n"
            "Content-Length: 0\r\n"
            "Proxy-Connection: Keep-Alive\r\n"
            "Pragma: no-cache\r\n\r\n");
}

TEST_F(TunnelTest, ThePortIsTheSessionsTextAsItStands) {
  session_.setPort("");
  EXPECT_EQ(tunnelRequest(session_).substr(0, 26), "CONNECT example: HTTP/1.0\r");
  session_.setPort("08443");
  EXPECT_EQ(tunnelRequest(session_).substr(0, 31), "CONNECT example:08443 HTTP/1.0\r");
}

TEST_F(TunnelTest, TheUserAgentLineIsThereWithoutAUserAgent) {
  session_.setUserAgent("");
  EXPECT_NE(tunnelRequest(session_).find("\r\nUser-Agent: \r\nHost:"), std::string::npos);
}

TEST_F(TunnelTest, TheAnswerIsReadOnceAndUpTo4096Bytes) {
  BIO* near = nullptr;
  BIO* far = nullptr;
  ASSERT_EQ(BIO_new_bio_pair(&near, 8192, &far, 8192), 1);
  const BioPtr nearOwner(near);
  const BioPtr farOwner(far);
  const std::string answer(5000, 'x');
  BIO_write(far, answer.data(), static_cast<int>(answer.size()));
  EXPECT_TRUE(openTunnel(near, session_));
  EXPECT_EQ(BIO_ctrl_pending(near), 5000 - 4096);
  std::string sent(8192, '\0');
  sent.resize(static_cast<std::size_t>(BIO_read(far, sent.data(), 8192)));
  EXPECT_EQ(sent, tunnelRequest(session_));
}

TEST_F(TunnelTest, NoAnswerIsNoFailure) {
  const BioPtr nobody(BIO_new(BIO_s_null()));
  EXPECT_TRUE(openTunnel(nobody.get(), session_));
}

}  // namespace
}  // namespace kvsc
