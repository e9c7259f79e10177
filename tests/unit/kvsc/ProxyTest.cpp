#include <gtest/gtest.h>

#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TinyProxy.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_CERTIFICATE;
using kvsc::HTTP_ERROR_FAILED;
using support::Script;
using support::ScriptedServer;
using support::TlsSettings;

const std::string kEstablished = "HTTP/1.0 200 Connection established\r\n\r\n";

void useProxy(CheckingClient& client, std::uint16_t port) {
  client.session().setProxyURL("127.0.0.1");
  client.session().setProxyPort(port);
}

/// A proxy that answers what it is told, and is the server behind its own tunnel.
class ScriptedProxyTest : public testing::Test {
 protected:
  ScriptedProxyTest() { useProxy(client_, proxy_.port()); }

  static Script tunnel(const std::string& answer) {
    return Script()
        .readRequest()
        .send(answer)
        .startTls()
        .then([](Connection& connection) { connection.readBytes(4); })
        .send(support::okResponse("film"));
  }

  using Connection = support::Connection;
  ScriptedServer proxy_{TlsSettings{.identity = serverOf({.commonName = "films.example"})},
                        ScriptedServer::Tls::kWhenScripted};
  CheckingClient client_;
};

TEST_F(ScriptedProxyTest, TheTunnelRequestIsExact) {
  proxy_.next(tunnel(kEstablished));
  client_.session().setUserAgent("Vesk Player 2.0");
  EXPECT_EQ(client_.get("https://films.example:8443/film"), kSuccess);
  const std::string received = proxy_.ended().received;
  EXPECT_EQ(received.substr(0, received.find("GET")),
            "CONNECT films.example:8443 HTTP/1.0\r\n"
            "User-Agent: Vesk Player 2.0\r\n"
            "Host: films.example\r\n"
            "Content-Length: 0\r\n"
            "Proxy-Connection: Keep-Alive\r\n"
            "Pragma: no-cache\r\n\r\n");
}

TEST_F(ScriptedProxyTest, WithoutAPortTheServicesNameIsSent) {
  proxy_.next(tunnel(kEstablished));
  EXPECT_EQ(client_.get("https://films.example/film"), kSuccess);
  EXPECT_EQ(proxy_.ended().received.find("CONNECT films.example:https HTTP/1.0\r\n"), 0u);
}

TEST_F(ScriptedProxyTest, ThePortIsSentAsTheAddressSpellsIt) {
  for (const char* port : {"", "08443"}) {
    ScriptedServer proxy;
    proxy.next(Script().readRequest().close());
    useProxy(client_, proxy.port());
    client_.get("https://films.example:" + std::string(port) + "/film");
    const std::string line = "CONNECT films.example:" + std::string(port) + " HTTP/1.0\r\n";
    EXPECT_EQ(proxy.ended().received.find(line), 0u) << port;
  }
}

TEST_F(ScriptedProxyTest, TheUserAgentLineIsThereWithoutAUserAgent) {
  proxy_.next(tunnel(kEstablished));
  EXPECT_EQ(client_.get("https://films.example/film"), kSuccess);
  EXPECT_NE(proxy_.ended().received.find("\r\nUser-Agent: \r\nHost:"), std::string::npos);
}

TEST_F(ScriptedProxyTest, OneReadTakes4096BytesOfTheAnswer) {
  proxy_.next(tunnel(std::string(4096, 'x')));
  EXPECT_EQ(client_.get("https://films.example/film"), kSuccess);
  ScriptedServer proxy;
  proxy.next(Script().readRequest().send(std::string(4096 + 5, 'x')).readToEnd());
  useProxy(client_, proxy.port());
  EXPECT_EQ(
      client_.get("https://films.example/film"),
      (Outcome{HTTP_ERROR_FAILED, handshakeText("0A00010B:SSL routines::wrong version number")}));
}

TEST_F(ScriptedProxyTest, AnEndInsteadOfAnAnswerLeadsOnToTheHandshake) {
  proxy_.next(Script().readRequest().close());
  EXPECT_EQ(client_.get("https://films.example/film"),
            (Outcome{HTTP_ERROR_FAILED,
                     handshakeText("0A000126:SSL routines::unexpected eof while reading")}));
}

TEST_F(ScriptedProxyTest, TheServersNameIsIndicatedThroughTheTunnel) {
  proxy_.next(tunnel(kEstablished));
  EXPECT_EQ(client_.get("https://films.example/film"), kSuccess);
  EXPECT_EQ(proxy_.ended().serverName, "films.example");
}

TEST_F(ScriptedProxyTest, AnEmptyNameIsNotIndicated) {
  proxy_.next(tunnel(kEstablished));
  EXPECT_EQ(client_.get("https:///film"),
            (Outcome{HTTP_ERROR_FAILED, "application verification failure"}));
  EXPECT_FALSE(proxy_.ended().serverNameSent);
}

TEST_F(ScriptedProxyTest, APlainRequestGoesThroughATunnelToo) {
  proxy_.next(Script().readRequest().send(kEstablished).then([](Connection& connection) {
    connection.readBytes(4);
    connection.send(support::okResponse("plain"));
  }));
  client_.session().setCheckCertificate(false);
  EXPECT_EQ(client_.get("http://films.example/film"), kSuccess);
  EXPECT_EQ(client_.body(), "plain");
  EXPECT_EQ(proxy_.ended().received.find("CONNECT films.example:http HTTP/1.0\r\n"), 0u);
}

TEST_F(ScriptedProxyTest, TheProxysStatusIsNotLookedAt) {
  proxy_.next(tunnel("HTTP/1.0 407 Proxy Authentication Required\r\n\r\n"));
  EXPECT_EQ(client_.get("https://films.example/film"), kSuccess);
}

TEST_F(ScriptedProxyTest, ARefusalLeadsOnToTheHandshakeThatFailsThere) {
  proxy_.next(
      Script().readRequest().send("HTTP/1.0 407 Proxy Authentication Required\r\n\r\n").close());
  EXPECT_EQ(client_.get("https://films.example/film"),
            (Outcome{HTTP_ERROR_FAILED,
                     handshakeText("0A000126:SSL routines::unexpected eof while reading")}));
  EXPECT_EQ(proxy_.ended().received.find("CONNECT"), 0u);
  EXPECT_EQ(proxy_.ended().received.find("GET"), std::string::npos);
}

TEST_F(ScriptedProxyTest, WhatIsLeftOfALongRefusalIsTakenForTheHandshake) {
  proxy_.next(
      Script().readRequest().send("HTTP/1.0 407 No\r\n\r\n" + std::string(9000, 'x')).close());
  EXPECT_EQ(
      client_.get("https://films.example/film"),
      (Outcome{HTTP_ERROR_FAILED, handshakeText("0A00010B:SSL routines::wrong version number")}));
}

TEST_F(ScriptedProxyTest, TheCertificateBehindTheTunnelIsChecked) {
  ScriptedServer proxy{TlsSettings{.identity = support::pki::selfSigned()},
                       ScriptedServer::Tls::kWhenScripted};
  proxy.next(tunnel(kEstablished));
  useProxy(client_, proxy.port());
  EXPECT_EQ(client_.get("https://films.example/film"),
            (Outcome{HTTP_ERROR_CERTIFICATE, kVerifyFailed}));
}

TEST_F(ScriptedProxyTest, TheHostBehindTheTunnelIsChecked) {
  proxy_.next(tunnel(kEstablished));
  EXPECT_EQ(client_.get("https://other.example/film"),
            (Outcome{HTTP_ERROR_FAILED, "application verification failure"}));
}

TEST_F(ScriptedProxyTest, AProxyThatIsNotThereFails) {
  const support::RefusingPort refusing;
  useProxy(client_, refusing.port());
  EXPECT_EQ(client_.get("https://films.example/film").result, HTTP_ERROR_FAILED);
}

class TinyProxyTest : public testing::Test {
 protected:
  TinyProxyTest() : nginx_({.tls = serverOf()}) { nginx_.serve("film", "film"); }

  support::Nginx nginx_;
  CheckingClient client_;
};

TEST_F(TinyProxyTest, AFilmComesThrough) {
  const support::TinyProxy proxy;
  useProxy(client_, proxy.port());
  EXPECT_EQ(client_.get(nginx_.url("/film")), kSuccess);
  EXPECT_EQ(client_.body(), "film");
  EXPECT_NE(proxy.log().find("CONNECT localhost"), std::string::npos);
}

TEST_F(TinyProxyTest, APlainFilmComesThrough) {
  const support::TinyProxy proxy;
  support::Nginx plain;
  plain.serve("film", "plain film");
  client_.session().setCheckCertificate(false);
  useProxy(client_, proxy.port());
  EXPECT_EQ(client_.get(plain.url("/film")), kSuccess);
  EXPECT_EQ(client_.body(), "plain film");
}

TEST_F(TinyProxyTest, AProxyThatWantsAPasswordIsARefusedHandshake) {
  const support::TinyProxy proxy("me", "secret");
  useProxy(client_, proxy.port());
  const Outcome outcome = client_.get(nginx_.url("/film"));
  EXPECT_EQ(outcome.result, HTTP_ERROR_FAILED);
  EXPECT_EQ(outcome.text.find("SSL_ERROR_S"), 0u) << outcome;
  EXPECT_EQ(nginx_.accessLog(), "");
}

}  // namespace
