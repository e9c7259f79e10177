// Whichever allocation fails: nothing is thrown, nothing is leaked, and the failure is reported.
#include <gtest/gtest.h>

#include "kvsc/OpenSsl.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/ExchangeTesting.h"
#include "tests/unit/kvsc/FailingNew.h"

namespace kvsc {
namespace {

using support::Script;
using support::ScriptedServer;

const char* const kUnknownException = "SSLConnect::setupContext() Unknown exception caught";

std::string told;

void keepText(std::string text) { told = text; }

/// Runs an operation with every allocation in turn failing, until it needs no more of them.
/// `operation` returns whether it succeeded. Returns the number of failures.
template <typename Operation>
int failEach(Operation operation) {
  for (int passed = 0;; ++passed) {
    bool failed = false;
    bool succeeded = false;
    {
      const FailingNew failing(passed);
      succeeded = operation();
      failed = failing.hasFailed();
    }
    ERR_clear_error();
    if (!failed) {
      EXPECT_TRUE(succeeded);
      return passed;
    }
  }
}

TEST(OutOfMemoryTest, AContextIsMadeOrAnErrorReported) {
  SSLConnect connect("LOCALHOST");
  SSLSession session;
  session.setCheckCertificate(true);
  connect.setErrorCallback(keepText);
  int reported = 0;
  EXPECT_GT(failEach([&] {
              told.clear();
              const bool made = connect.setupContext(&session, nullptr) == 1;
              if (!made) {
                ++reported;
                EXPECT_EQ(connect.getErrorString(), kUnknownException);
                EXPECT_EQ(told, kUnknownException);
              }
              connect.close(&session);
              return made;
            }),
            0);
  EXPECT_GT(reported, 0);
}

TEST(OutOfMemoryTest, AConnectionIsMadeWithoutAThrow) {
  EXPECT_GT(failEach([] {
              const SSLConnect connect("JTEST");
              return connect.getErrorString().empty();
            }),
            0);
}

TEST(OutOfMemoryTest, AHeaderLineIsTakenOrReported) {
  SSLConnect connect("LOCALHOST");
  std::string line = "A-name-that-is-not-short: " + std::string(100, 'v') + "\r\n";
  EXPECT_GT(failEach([&] {
              connect.setErrorString("");
              connect.parseHeaderLine(line.data(), static_cast<int>(line.size()));
              return connect.getErrorString().empty();
            }),
            0);
  EXPECT_EQ(connect.getResponseValue("A-name-that-is-not-short"), std::string(100, 'v'));
}

/// Connects to this machine under every name.
class LocalDialer : public TcpDialer {
 public:
  int dial(const std::string&, const std::string& port, Waiter& waiter) override {
    return TcpDialer::dial("127.0.0.1", port, waiter);
  }
};

class OutOfMemoryExchangeTest : public Exchange {
 protected:
  /// A GET that must not throw; what it leaves behind is checked.
  bool getFrom(const std::string& url) {
    HttpErrorIds result = HTTP_ERROR_FAILED;
    client_.httpGet(url, 0, &result, &session_, "", "", SSLV3);
    EXPECT_EQ(session_.getConnect(), nullptr);
    EXPECT_EQ(session_.getSsl(), nullptr);
    EXPECT_EQ(session_.getSslContext(), nullptr);
    EXPECT_EQ(session_.getHandshakeOwner(), nullptr);
    return result == HTTP_ERROR_NONE;
  }

  const std::string response_ = support::okResponse("film", "A: " + std::string(100, 'x') + "\r\n");
};

TEST_F(OutOfMemoryExchangeTest, APlainGetSucceedsOrFails) {
  server_.always(Script::answer(response_));
  const std::string url = server_.url("/a/path/that/is/not/short", "127.0.0.1");
  EXPECT_GT(failEach([&] { return getFrom(url); }), 5);
}

TEST_F(OutOfMemoryExchangeTest, OnlyTheContextTellsTheCallback) {
  told.clear();
  client_.setErrorCallback(keepText);
  server_.always(Script::answer(response_));
  const std::string url = server_.url("/a/path/that/is/not/short", "127.0.0.1");
  EXPECT_GT(failEach([&] { return getFrom(url); }), 5);
  EXPECT_EQ(told, "");
}

TEST_F(OutOfMemoryExchangeTest, ATlsGetSucceedsOrFails) {
  ScriptedServer secure(support::TlsSettings{.identity = support::pki::selfSigned()});
  secure.always(Script::answer(response_));
  LocalDialer dialer;
  session_.setDialer(&dialer);
  const std::string url = secure.url("/a/path/that/is/not/short", "a.host.with.a.long.name");
  // Allocates what is kept for later exchanges; otherwise each such allocation hides the next one.
  EXPECT_TRUE(getFrom(url));
  EXPECT_GT(failEach([&] { return getFrom(url); }), 5);
}

TEST_F(OutOfMemoryExchangeTest, ARedirectedGetSucceedsOrFails) {
  session_.setMaxRedirectCount(1);
  const std::string there = server_.url("/another/path/that/is/not/short", "127.0.0.1");
  server_.onPath("/here",
                 Script().send(support::bareResponse("302 Found", "Location: " + there + "\r\n")));
  server_.onPath("/another/path/that/is/not/short", Script().send(response_));
  const std::string url = server_.url("/here", "127.0.0.1");
  EXPECT_GT(failEach([&] {
              session_.setRedirectCount(0);
              return getFrom(url);
            }),
            5);
}

TEST_F(OutOfMemoryExchangeTest, AResolvedRedirectSucceedsOrFails) {
  session_.setMaxRedirectCount(1);
  const std::string there = server_.url("/another/path/that/is/not/short", "127.0.0.1");
  server_.onPath("/here",
                 Script().send(support::bareResponse("302 Found", "Location: " + there + "\r\n")));
  server_.onPath("/another/path/that/is/not/short", Script().send(response_));
  const std::string url = server_.url("/here", "127.0.0.1");
  EXPECT_GT(failEach([&] {
              HttpErrorIds result = HTTP_ERROR_FAILED;
              client_.getRedirectUrl(url, &result, &session_, SSLV3);
              EXPECT_EQ(session_.getConnect(), nullptr);
              return result == HTTP_ERROR_NONE;
            }),
            5);
}

}  // namespace
}  // namespace kvsc
