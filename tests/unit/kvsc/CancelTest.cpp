#include <gtest/gtest.h>

#include <functional>
#include <future>

#include "tests/support/Loopback.h"
#include "tests/support/Promptness.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_CANCELLED;
using std::chrono::milliseconds;
using support::Gate;
using support::Script;
using support::ScriptedServer;

/// Cancels an exchange from another thread once `hangs` has come true; returns how long it takes
/// from there to end as cancelled.
milliseconds cancelWhen(const std::function<bool()>& hangs,
                        const std::function<void(CheckingClient&)>& prepare,
                        const std::string& url) {
  CheckingClient client;
  client.session().setCheckCertificate(url.find("https") == 0);
  kvsc::CancelToken token;
  client.session().setCancelToken(&token);
  prepare(client);
  auto exchange = std::async(std::launch::async, [&] { return client.get(url).result; });
  EXPECT_TRUE(support::waitFor(hangs));
  return support::timeOf([&] {
    token.cancel();
    EXPECT_EQ(exchange.get(), HTTP_ERROR_CANCELLED);
  });
}

void expectPromptCancel(const std::function<milliseconds()>& attempt) {
  EXPECT_LT(support::bestTime(attempt), support::kPromptly);
}

const auto kAsItIs = [](CheckingClient&) {};

std::string urlOf(const std::string& scheme, std::uint16_t port) {
  return scheme + "://127.0.0.1:" + std::to_string(port) + "/";
}

TEST(CancelTest, AHangingConnectEnds) {
  const support::SilentPort silent;
  expectPromptCancel([&] {
    return cancelWhen([&] { return support::isConnecting(silent.port()); }, kAsItIs,
                      urlOf("http", silent.port()));
  });
}

TEST(CancelTest, AHangingHandshakeEnds) {
  expectPromptCancel([] {
    Gate hanging;
    ScriptedServer server;
    server.next(Script().readBytes(1).announce(hanging).stall());
    return cancelWhen([&] { return hanging.wait(); }, kAsItIs, urlOf("https", server.port()));
  });
}

TEST(CancelTest, AWaitForTheProxysAnswerEnds) {
  expectPromptCancel([] {
    Gate hanging;
    ScriptedServer proxy;
    proxy.next(Script().readRequest().announce(hanging).stall());
    const auto prepare = [&](CheckingClient& client) {
      client.session().setProxyURL("127.0.0.1");
      client.session().setProxyPort(proxy.port());
    };
    return cancelWhen([&] { return hanging.wait(); }, prepare, "https://films.example/");
  });
}

TEST(CancelTest, AWaitToSendTheRequestEnds) {
  const std::string path(32 << 20, 'x');
  expectPromptCancel([&] {
    Gate hanging;
    ScriptedServer server;
    server.next(Script().readBytes(1).announce(hanging).stall());
    return cancelWhen([&] { return hanging.wait(); }, kAsItIs, urlOf("http", server.port()) + path);
  });
}

TEST(CancelTest, AWaitForTheHeadersEnds) {
  expectPromptCancel([] {
    Gate hanging;
    ScriptedServer server;
    server.next(Script().readRequest().announce(hanging).stall());
    return cancelWhen([&] { return hanging.wait(); }, kAsItIs, urlOf("http", server.port()));
  });
}

TEST(CancelTest, AWaitForTheHeadersAfterARedirectEnds) {
  expectPromptCancel([] {
    Gate hanging;
    ScriptedServer server;
    const std::string url = urlOf("http", server.port());
    server.next(
        Script::answer(support::bareResponse("302 Found", "Location: " + url + "there\r\n")));
    server.next(Script().readRequest().announce(hanging).stall());
    const auto prepare = [](CheckingClient& client) { client.session().setMaxRedirectCount(1); };
    return cancelWhen([&] { return hanging.wait(); }, prepare, url);
  });
}

TEST(CancelTest, AWaitForTheHeadersUnderTlsEnds) {
  expectPromptCancel([] {
    Gate hanging;
    ScriptedServer server(support::TlsSettings{.identity = serverOf()});
    server.next(Script().readRequest().announce(hanging).stall());
    return cancelWhen([&] { return hanging.wait(); }, kAsItIs, server.url());
  });
}

TEST(CancelTest, AWaitForTheBodyEnds) {
  expectPromptCancel([] {
    Gate hanging;
    ScriptedServer server;
    server.next(Script()
                    .readRequest()
                    .sendPieces(support::okResponse("begin"), 4096)
                    .announce(hanging)
                    .stall());
    return cancelWhen([&] { return hanging.wait(); }, kAsItIs, urlOf("http", server.port()));
  });
}

TEST(CancelTest, AWaitForTheBodyUnderTlsEnds) {
  expectPromptCancel([] {
    Gate hanging;
    ScriptedServer server(support::TlsSettings{.identity = serverOf()});
    server.next(Script()
                    .readRequest()
                    .sendPieces(support::okResponse("begin"), 4096)
                    .announce(hanging)
                    .stall());
    return cancelWhen([&] { return hanging.wait(); }, kAsItIs, server.url());
  });
}

TEST(CancelTest, ThePauseBetweenReadsEnds) {
  expectPromptCancel([] {
    Gate hanging;
    ScriptedServer server;
    server.next(Script()
                    .readRequest()
                    .sendPieces(support::okResponse("begin"), 4096)
                    .sendPieces("more", 4)
                    .announce(hanging)
                    .stall());
    const auto prepare = [](CheckingClient& client) {
      client.session().setDownloadLoopSleep(60'000);
    };
    return cancelWhen([&] { return hanging.wait(); }, prepare, urlOf("http", server.port()));
  });
}

TEST(CancelTest, ACancelBeforeTheExchangeIsNotLost) {
  ScriptedServer server;
  server.always(Script::answer(support::okResponse("film")));
  PlainClient client;
  kvsc::CancelToken token;
  client.session().setCancelToken(&token);
  token.cancel();
  EXPECT_EQ(client.get(urlOf("http", server.port())),
            (Outcome{HTTP_ERROR_CANCELLED,
                     "\n connecting error:8000007D:system library::Operation canceled\n"}));
  EXPECT_EQ(server.connectionCount(), 0u);
  token.reset();
  EXPECT_EQ(client.get(urlOf("http", server.port())), kSuccess);
}

}  // namespace
