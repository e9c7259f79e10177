#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

#include "kvsc/Waiter.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using support::Script;
using support::ScriptedServer;

/// Hands out connections that the server has reset already, so that every write is one too many.
class ResetDialer : public kvsc::Dialer {
 public:
  explicit ResetDialer(std::uint16_t port) : live_(port) {}

  int dial(const std::string& host, const std::string& port, kvsc::Waiter& waiter) override {
    const int fd = live_.dial(host, port, waiter);
    pollfd watched{fd, POLLIN, 0};
    ::poll(&watched, 1, -1);
    // Taking the pending error leaves the bare broken pipe to the next write.
    int error = 0;
    socklen_t length = sizeof error;
    getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length);
    return fd;
  }

 private:
  LoopbackDialer live_;
};

void expectSignalsUntouched() {
  sigset_t old, now;
  sigemptyset(&now);
  pthread_sigmask(SIG_SETMASK, nullptr, &old);
  struct sigaction action {};
  sigaction(SIGPIPE, nullptr, &action);
  if (action.sa_handler != SIG_DFL || sigismember(&old, SIGPIPE) != 0) std::_Exit(3);
}

/// Each case runs in a process of its own, where a broken pipe kills.
class NoSignalTest : public testing::Test {
 protected:
  NoSignalTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  /// Exits with 0 when the exchange has failed in an orderly way.
  [[noreturn]] static void exchangeWithGonePeer(const std::string& url, bool throughProxy,
                                                const std::string& post = "") {
    signal(SIGPIPE, SIG_DFL);
    ScriptedServer server;
    server.always(Script().reset());
    ResetDialer dialer(server.port());
    CheckingClient client;
    client.session().setDialer(&dialer);
    if (throughProxy) client.session().setProxyURL("proxy.example");
    kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_NONE;
    if (post.empty()) {
      result = client.get(url).result;
    } else {
      client.client().httpPost(url, post, &result, &client.session(), "", "", kvsc::SSLV3, true);
    }
    expectSignalsUntouched();
    std::_Exit(result == kvsc::HTTP_ERROR_FAILED ? 0 : 2);
  }

  [[noreturn]] static void writeBarely() {
    signal(SIGPIPE, SIG_DFL);
    ScriptedServer server;
    server.always(Script().reset());
    kvsc::Waiter waiter(nullptr, kvsc::Waiter::Milliseconds(0), kvsc::Waiter::Milliseconds(0));
    const int fd = ResetDialer(server.port()).dial("", "", waiter);
    if (::write(fd, "x", 1) >= 0) std::_Exit(1);
    std::_Exit(0);
  }

  /// The server resets the line when the client has everything; then the client sends its
  /// close_notify.
  [[noreturn]] static void closeTowardsAGonePeer() {
    signal(SIGPIPE, SIG_DFL);
    ScriptedServer server(support::TlsSettings{.identity = serverOf()});
    server.always(Script().readRequest().sendPieces(support::okResponse("film"), 4096).reset());
    CheckingClient client;
    client.get(server.url());
    expectSignalsUntouched();
    std::_Exit(client.body() == "film" ? 0 : 2);
  }
};

TEST_F(NoSignalTest, AnUnguardedWriteWouldKillTheProcess) {
  EXPECT_EXIT(writeBarely(), testing::KilledBySignal(SIGPIPE), "");
}

TEST_F(NoSignalTest, ARequestToAGonePeerFailsQuietly) {
  EXPECT_EXIT(exchangeWithGonePeer("http://films.example/", false), testing::ExitedWithCode(0), "");
}

TEST_F(NoSignalTest, APostToAGonePeerFailsQuietly) {
  EXPECT_EXIT(exchangeWithGonePeer("http://films.example/", false, std::string(1 << 20, 'x')),
              testing::ExitedWithCode(0), "");
}

TEST_F(NoSignalTest, AHandshakeWithAGonePeerFailsQuietly) {
  EXPECT_EXIT(exchangeWithGonePeer("https://films.example/", false), testing::ExitedWithCode(0),
              "");
}

TEST_F(NoSignalTest, ATunnelRequestToAGoneProxyFailsQuietly) {
  EXPECT_EXIT(exchangeWithGonePeer("https://films.example/", true), testing::ExitedWithCode(0), "");
}

TEST_F(NoSignalTest, ACloseNotifyToAGonePeerIsQuiet) {
  EXPECT_EXIT(closeTowardsAGonePeer(), testing::ExitedWithCode(0), "");
}

}  // namespace
