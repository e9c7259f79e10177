#include "tests/support/DevelopmentPki.h"
#include "tests/support/Loopback.h"
#include "tests/unit/kvsc/ExchangeTesting.h"

namespace {

using kvsc::HTTP_ERROR_CERTIFICATE;
using kvsc::HTTP_ERROR_FAILED;
using kvsc::HTTP_ERROR_NONE;
using support::bareResponse;
using support::Script;
using support::ScriptedServer;

class RedirectUrlTest : public Exchange {
 protected:
  RedirectUrlTest() { session_.setMaxRedirectCount(1); }

  std::string at(const std::string& path) { return server_.url(path, "127.0.0.1"); }

  void redirect(const std::string& path, const std::string& status, const std::string& location) {
    server_.onPath(path, Script().send(bareResponse(status, "Location: " + location + "\r\n")));
  }

  void serve(const std::string& path, const std::string& status) {
    server_.onPath(path, Script().send(bareResponse(status)));
  }

  std::string resolve(const std::string& url) {
    const std::string found = client_.getRedirectUrl(url, &result_, &session_, kvsc::SSLV3);
    EXPECT_EQ(session_.getConnect(), nullptr);
    return found;
  }

  kvsc::HttpErrorIds result_ = HTTP_ERROR_FAILED;
};

TEST_F(RedirectUrlTest, AnAddressWithoutARedirectYieldsNothing) {
  for (const char* status : {"200 OK", "304 Not Modified", "404 Not Found", "303 See Other",
                             "307 Temporary", "500 Error"}) {
    redirect("/", status, at("/there"));
    EXPECT_EQ(resolve(at("/")), "") << status;
    EXPECT_EQ(result_, HTTP_ERROR_NONE) << status;
  }
}

TEST_F(RedirectUrlTest, AMoveIsResolved) {
  for (const char* status : {"301 Moved", "302 Found"}) {
    redirect("/here", status, at("/there"));
    serve("/there", "200 OK");
    EXPECT_EQ(resolve(at("/here")), at("/there")) << status;
    EXPECT_EQ(result_, HTTP_ERROR_NONE);
  }
}

TEST_F(RedirectUrlTest, TheSessionGetsItsProtocol) {
  serve("/here", "200 OK");
  client_.getRedirectUrl(at("/here"), &result_, &session_, kvsc::TLSV1);
  EXPECT_EQ(session_.getSslMethod(), kvsc::TLSV1);
}

TEST_F(RedirectUrlTest, ItAsksForTheHeadersAlone) {
  serve("/here", "200 OK");
  session_.setUserAgent("agent");
  resolve(at("/here"));
  EXPECT_EQ(requestOf(),
            "HEAD /here HTTP/1.0\r\nHost: 127.0.0.1\r\nresponseType: text/xml\r\n"
            "User-Agent: agent\r\nConnection: close\r\n\r\n");
}

TEST_F(RedirectUrlTest, OnlyTheHeadersOfTheLastResponseArePassedOn) {
  redirect("/1", "301 Moved", at("/2"));
  redirect("/2", "302 Found", at("/3"));
  serve("/3", "200 OK");
  resolve(at("/1"));
  EXPECT_EQ(received_.lines, (std::vector<std::string>{"HTTP/1.0 200 OK\r\n", "\r\n"}));
}

TEST_F(RedirectUrlTest, AnOpenConnectionIsClosedFirst) {
  server_.always(Script::answer(bareResponse("200 OK")));
  client_.sendRequest(at("/"), 0, "GET", &session_, "", "", "");
  EXPECT_EQ(resolve(at("/")), "");
  EXPECT_FALSE(server_.ended(0).lost);
}

TEST_F(RedirectUrlTest, TheTextOfAFailureIsClearedByTheNextOne) {
  EXPECT_EQ(resolve("http:///"), "");
  EXPECT_NE(error(), "");
  serve("/", "200 OK");
  resolve(at("/"));
  EXPECT_EQ(error(), "");
}

TEST_F(RedirectUrlTest, AChainIsFollowedToItsEndWhateverTheLimit) {
  redirect("/1", "301 Moved", at("/2"));
  redirect("/2", "302 Found", at("/3"));
  redirect("/3", "301 Moved", at("/4"));
  serve("/4", "200 OK");
  EXPECT_EQ(resolve(at("/1")), at("/4"));
  EXPECT_EQ(result_, HTTP_ERROR_NONE);
  EXPECT_EQ(session_.getRedirectCount(), 0);
}

TEST_F(RedirectUrlTest, ALimitOf0SwitchesItOff) {
  session_.setMaxRedirectCount(0);
  redirect("/here", "301 Moved", at("/there"));
  EXPECT_EQ(resolve(at("/here")), "");
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), kRedirectRefused);
}

TEST_F(RedirectUrlTest, ACountAtTheLimitSwitchesItOff) {
  session_.setRedirectCount(1);
  redirect("/here", "301 Moved", at("/there"));
  EXPECT_EQ(resolve(at("/here")), "");
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
}

TEST_F(RedirectUrlTest, AMoveWithoutALocationFails) {
  serve("/here", "301 Moved");
  EXPECT_EQ(resolve(at("/here")), "");
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), kRedirectRefused);
}

TEST_F(RedirectUrlTest, AFailureOnTheWayLeavesTheFirstLocation) {
  redirect("/1", "301 Moved", at("/2"));
  redirect("/2", "301 Moved", at("/3"));
  serve("/3", "301 Moved");
  EXPECT_EQ(resolve(at("/1")), at("/2"));
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
}

TEST_F(RedirectUrlTest, AConnectionThatFailsOnTheWayLeavesTheFirstLocationToo) {
  const support::RefusingPort refusing;
  redirect("/1", "301 Moved", at("/2"));
  redirect("/2", "301 Moved", "http://127.0.0.1:" + std::to_string(refusing.port()) + "/");
  EXPECT_EQ(resolve(at("/1")), at("/2"));
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
}

TEST_F(RedirectUrlTest, ALocationThatIsNoAddressLeavesItself) {
  redirect("/here", "301 Moved", "/there");
  EXPECT_EQ(resolve(at("/here")), "/there");
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
}

TEST_F(RedirectUrlTest, WhatTheCallersUtilityHasCollectedIsDropped) {
  CollectingUtility utility;
  char old[] = "old";
  kvsc::HttpUtilityVirtual::writeMemoryCallback(old, 1, 3,
                                                static_cast<kvsc::HttpUtilityVirtual*>(&utility));
  client_.setCallerUtility(&utility);
  client_.setTotalDownloaded(3);
  redirect("/here", "301 Moved", at("/there"));
  serve("/there", "200 OK");
  resolve(at("/here"));
  EXPECT_EQ(utility.collected(), "");
  EXPECT_EQ(client_.getTotalDownloaded(), 3);
}

TEST_F(RedirectUrlTest, ACircleEnds) {
  redirect("/1", "301 Moved", at("/2"));
  redirect("/2", "301 Moved", at("/1"));
  EXPECT_EQ(resolve(at("/1")), at("/2"));
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), kRedirectRefused);
  EXPECT_LT(server_.connectionCount(), 100U);
}

TEST_F(RedirectUrlTest, AMalformedAddressFails) {
  EXPECT_EQ(resolve("films.example"), "");
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
}

TEST_F(RedirectUrlTest, AServerThatIsNotThereFails) {
  const support::RefusingPort refusing;
  EXPECT_EQ(resolve("http://127.0.0.1:" + std::to_string(refusing.port()) + "/"), "");
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
}

TEST_F(RedirectUrlTest, AResponseThatBreaksOffIsNoRedirect) {
  server_.next(Script().readRequest().reset());
  EXPECT_EQ(resolve(at("/")), "");
  EXPECT_EQ(result_, HTTP_ERROR_NONE);
}

TEST_F(RedirectUrlTest, AWriteThatFailsIsReported) {
  GoneDialer dialer;
  session_.setDialer(&dialer);
  EXPECT_EQ(resolve("http://films.example/"), "");
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), "SSLClient::writeData failed.");
}

/// The same under TLS, with certificates checked.
class SecureRedirectUrlTest : public RedirectUrlTest {
 protected:
  SecureRedirectUrlTest() { session_.setCheckCertificate(true); }

  static support::TlsSettings settingsFor(const support::Identity& identity) {
    return support::TlsSettings{.identity = identity};
  }

  const support::Identity authority_ = support::development::authorityOf("LOCALHOST");
};

TEST_F(SecureRedirectUrlTest, AMoveIsResolved) {
  ScriptedServer server(settingsFor(support::pki::issue(authority_)));
  server.onPath("/here", Script().send(bareResponse("301 Moved",
                                                    "Location: " + server.url("/there") + "\r\n")));
  server.onPath("/there", Script().send(bareResponse("200 OK")));
  EXPECT_EQ(resolve(server.url("/here")), server.url("/there"));
  EXPECT_EQ(result_, HTTP_ERROR_NONE);
  EXPECT_EQ(session_.getVerifyMode(), 1);
}

TEST_F(SecureRedirectUrlTest, ACertificateThatDoesNotVerifyIsAResultOfItsOwn) {
  ScriptedServer server(settingsFor(support::pki::selfSigned()));
  EXPECT_EQ(resolve(server.url("/")), "");
  EXPECT_EQ(result_, HTTP_ERROR_CERTIFICATE);
}

TEST_F(SecureRedirectUrlTest, AnotherHostFailsBeforeAnythingIsSent) {
  ScriptedServer server(
      settingsFor(support::pki::issue(authority_, {.commonName = "other.example"})));
  testing::internal::CaptureStdout();
  EXPECT_EQ(resolve(server.url("/")), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(result_, HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), "application verification failure");
  EXPECT_EQ(server.ended().received, "");
}

}  // namespace
