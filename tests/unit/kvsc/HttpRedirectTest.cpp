#include "tests/support/DevelopmentPki.h"
#include "tests/unit/kvsc/ExchangeTesting.h"

namespace {

using kvsc::HTTP_ERROR_FAILED;
using kvsc::HTTP_ERROR_NONE;
using support::bareResponse;
using support::okResponse;
using support::Script;
using support::ScriptedServer;

class HttpRedirectTest : public Exchange {
 protected:
  std::string at(const std::string& path) { return server_.url(path, "127.0.0.1"); }

  std::string redirect(const std::string& status, const std::string& location,
                       const std::string& body = "") {
    return bareResponse(status, "Location: " + location + "\r\n") + body;
  }

  void expectRefused() {
    EXPECT_EQ(error(), kRedirectRefused);
    EXPECT_EQ(session_.getConnect(), nullptr);
  }
};

const std::vector<std::string> kStatuses = {"301 Moved", "302 Found", "303 See Other",
                                            "307 Temporary"};

TEST_F(HttpRedirectTest, EachOfTheFourStatusesIsFollowed) {
  session_.setMaxRedirectCount(1);
  for (const std::string& status : kStatuses) {
    answer(redirect(status, at("/there")));
    answer(okResponse("film"));
    session_.setRedirectCount(0);
    EXPECT_EQ(get("/here"), HTTP_ERROR_NONE) << status;
    EXPECT_EQ(client_.getResponseCode(), 200);
    EXPECT_EQ(session_.getRedirectCount(), 1);
  }
  EXPECT_EQ(requestOf(7), getRequest("/there"));
}

TEST_F(HttpRedirectTest, ARedirectWithoutALocationIsRefused) {
  session_.setMaxRedirectCount(10);
  for (const std::string& status : kStatuses) {
    answer(bareResponse(status));
    EXPECT_EQ(get(), HTTP_ERROR_FAILED) << status;
    expectRefused();
  }
  EXPECT_EQ(session_.getRedirectCount(), 0);
}

TEST_F(HttpRedirectTest, KeptQuirkAResetAfterARedirectIsReportedAsARefusedRedirect) {
  session_.setMaxRedirectCount(10);
  answer(redirect("302 Found", at("/there")));
  server_.next(Script().readRequest().reset());
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  expectRefused();
}

TEST_F(HttpRedirectTest, ASilentEndAfterARedirectIsARefusedRedirect) {
  session_.setMaxRedirectCount(10);
  answer(redirect("302 Found", at("/there")));
  server_.next(Script().readRequest());
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  expectRefused();
}

TEST_F(HttpRedirectTest, BytesWithoutABlockAfterARedirectAreDropped) {
  session_.setMaxRedirectCount(10);
  answer(redirect("302 Found", at("/there")));
  answer("no block of headers");
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  expectRefused();
  EXPECT_EQ(received_.body(), "");
}

TEST_F(HttpRedirectTest, ALimitOf0RefusesEveryRedirect) {
  for (const std::string& status : kStatuses) {
    answer(redirect(status, at("/there")));
    EXPECT_EQ(get(), HTTP_ERROR_FAILED) << status;
    expectRefused();
  }
  EXPECT_EQ(server_.connectionCount(), kStatuses.size());
}

TEST_F(HttpRedirectTest, OtherCodesAreNoRedirects) {
  session_.setMaxRedirectCount(10);
  for (const char* status : {"200 OK", "300 Choices", "305 Use Proxy", "308 Permanent"}) {
    answer(redirect(status, at("/there")));
    EXPECT_EQ(get(), std::string(status) == "200 OK" ? HTTP_ERROR_NONE : HTTP_ERROR_FAILED);
    EXPECT_EQ(error(), "");
  }
  EXPECT_EQ(server_.connectionCount(), 4U);
}

TEST_F(HttpRedirectTest, ALimitOf1IsOneHop) {
  session_.setMaxRedirectCount(1);
  answer(redirect("302 Found", at("/1")));
  answer(redirect("302 Found", at("/2")));
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  expectRefused();
  EXPECT_EQ(server_.connectionCount(), 2U);
}

TEST_F(HttpRedirectTest, ALimitOf10IsTenHops) {
  session_.setMaxRedirectCount(10);
  for (int hop = 1; hop <= 10; ++hop) answer(redirect("301 Moved", at("/" + std::to_string(hop))));
  answer(okResponse("film"));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "film");
  EXPECT_EQ(requestOf(10), getRequest("/10"));
}

TEST_F(HttpRedirectTest, ACircleEndsAtTheLimit) {
  session_.setMaxRedirectCount(10);
  server_.always(Script::answer(redirect("302 Found", at("/"))));
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  expectRefused();
  EXPECT_EQ(server_.connectionCount(), 11U);
}

TEST_F(HttpRedirectTest, ALongChainNeedsNoStack) {
  constexpr std::size_t kHops = 2000;
  session_.setMaxRedirectCount(2'000'000'000);
  server_.onRequest([&](const std::string&) {
    return Script().send(server_.connectionCount() < kHops ? redirect("302 Found", at("/"))
                                                           : okResponse("film"));
  });
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(session_.getRedirectCount(), static_cast<int>(kHops) - 1);
}

TEST_F(HttpRedirectTest, TheCountGoesOnUntilTheCallerResetsIt) {
  session_.setMaxRedirectCount(1);
  server_.onPath("/here", Script().send(redirect("302 Found", at("/there"))));
  server_.onPath("/there", Script().send(okResponse("film")));
  EXPECT_EQ(get("/here"), HTTP_ERROR_NONE);
  EXPECT_EQ(get("/here"), HTTP_ERROR_FAILED);
  session_.setRedirectCount(0);
  EXPECT_EQ(get("/here"), HTTP_ERROR_NONE);
}

TEST_F(HttpRedirectTest, ARelativeLocationIsTakenAsItIsAndFails) {
  session_.setMaxRedirectCount(10);
  for (const char* location : {"/there", "there", "//127.0.0.1/there", "?a=b"}) {
    answer(redirect("302 Found", location));
    EXPECT_EQ(get(), HTTP_ERROR_FAILED) << location;
    EXPECT_EQ(error(), "") << location;
    EXPECT_EQ(session_.getConnect(), nullptr);
  }
  EXPECT_EQ(server_.connectionCount(), 4U);
}

TEST_F(HttpRedirectTest, APostStaysAPost) {
  session_.setMaxRedirectCount(4);
  const Script there = Script().readRequest().readBytes(6);
  for (const std::string& status : kStatuses) {
    server_.next(Script(there).send(redirect(status, at("/there"))));
  }
  server_.next(Script(there).send(okResponse("done")));
  EXPECT_EQ(post("data", "/here"), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "done");
  for (std::size_t hop = 1; hop <= 4; ++hop) {
    EXPECT_TRUE(requestOf(hop).starts_with("POST /there HTTP/1.0\r\n"));
    EXPECT_TRUE(requestOf(hop).ends_with("\r\n\r\ndata\r\n"));
  }
}

TEST_F(HttpRedirectTest, AHeadStaysAHead) {
  session_.setMaxRedirectCount(1);
  answer(redirect("303 See Other", at("/there")));
  answer(bareResponse("200 OK"));
  EXPECT_EQ(head("/here"), HTTP_ERROR_NONE);
  EXPECT_TRUE(requestOf(1).starts_with("HEAD /there HTTP/1.0\r\n"));
}

TEST_F(HttpRedirectTest, TheDateIsSentAgain) {
  session_.setMaxRedirectCount(1);
  answer(redirect("302 Found", at("/there")));
  answer(bareResponse("304 Not Modified"));
  EXPECT_EQ(get("/here", 1'700'000'000), kvsc::HTTP_ERROR_NOT_MODIFIED);
  const auto dateOf = [](const std::string& request) {
    const std::size_t start = request.find("If-Modified-Since: ");
    return start == std::string::npos ? ""
                                      : request.substr(start, request.find('\n', start) - start);
  };
  EXPECT_NE(dateOf(requestOf(0)), "");
  EXPECT_EQ(dateOf(requestOf(1)), dateOf(requestOf(0)));
}

TEST_F(HttpRedirectTest, HeadersAreSentAgain) {
  session_.setMaxRedirectCount(1);
  answer(redirect("302 Found", at("/there")));
  answer(okResponse(""));
  kvsc::HttpErrorIds result = HTTP_ERROR_FAILED;
  client_.httpGet(at("/here"), 0, &result, &session_, "text/xml", "A: 1", kvsc::SSLV3);
  EXPECT_EQ(requestOf(1), getRequest("/there", "responseType: text/xml\r\nA: 1\r\n"));
}

TEST_F(HttpRedirectTest, NothingOfA301Or302IsPassedOn) {
  session_.setMaxRedirectCount(2);
  answer(redirect("301 Moved", at("/1"), "page"));
  answer(redirect("302 Found", at("/2"), "page"));
  answer(okResponse("film"));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "film");
  EXPECT_EQ(received_.lines.size(), 3U);
  EXPECT_EQ(client_.getTotalDownloaded(), 4);
}

TEST_F(HttpRedirectTest, HeadersAndBodyOfA303Or307ArePassedOn) {
  session_.setMaxRedirectCount(2);
  answer(redirect("303 See Other", at("/1"), "one "));
  answer(redirect("307 Temporary", at("/2"), "two "));
  answer(okResponse("film"));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "one two film");
  EXPECT_EQ(received_.lines.size(), 9U);
  EXPECT_EQ(client_.getTotalDownloaded(), 4);
}

TEST_F(HttpRedirectTest, WhatTheCallersUtilityHasCollectedIsDropped) {
  CollectingUtility utility;
  session_.setMaxRedirectCount(1);
  client_.setCallerUtility(&utility);
  client_.setBodyCallback(&kvsc::HttpUtilityVirtual::writeMemoryCallback);
  client_.setBodyContext(static_cast<kvsc::HttpUtilityVirtual*>(&utility));
  answer(redirect("303 See Other", at("/1"), "page"));
  answer(okResponse("film"));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(utility.collected(), "film");
}

TEST_F(HttpRedirectTest, TheFirstConnectionIsClosedBeforeTheNextIsMade) {
  session_.setMaxRedirectCount(1);
  answer(redirect("302 Found", at("/")));
  server_.next(Script()
                   .readRequest()
                   .then([&](support::Connection&) { server_.ended(0); })
                   .send(okResponse("film")));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "film");
}

TEST_F(HttpRedirectTest, ALocationMayBeUnderTls) {
  ScriptedServer secure(support::TlsSettings{
      .identity = support::pki::issue(support::development::authorityOf("LOCALHOST"))});
  secure.always(Script::answer(okResponse("secure film")));
  session_.setMaxRedirectCount(1);
  answer(redirect("302 Found", secure.url("/film")));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "secure film");
  EXPECT_TRUE(session_.getUseSSL());
}

/// A redirect from a server under TLS to one that is not.
class DowngradeTest : public HttpRedirectTest {
 protected:
  DowngradeTest() {
    session_.setMaxRedirectCount(1);
    secure_.next(Script::answer(redirect("302 Found", at("/film"))));
    server_.always(Script::answer(okResponse("plain film")));
  }

  kvsc::HttpErrorIds getSecurely() {
    kvsc::HttpErrorIds result = HTTP_ERROR_FAILED;
    client_.httpGet(secure_.url(), 0, &result, &session_, "", "", kvsc::SSLV3);
    return result;
  }

  ScriptedServer secure_{support::TlsSettings{
      .identity = support::pki::issue(support::development::authorityOf("LOCALHOST"))}};
};

TEST_F(DowngradeTest, WithoutChecksItIsFollowed) {
  EXPECT_EQ(getSecurely(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "plain film");
  EXPECT_FALSE(session_.getUseSSL());
}

TEST_F(DowngradeTest, WithChecksNothingIsSentToThePlainServer) {
  session_.setCheckCertificate(true);
  EXPECT_EQ(getSecurely(), HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), "application verification failure");
  EXPECT_EQ(requestOf(), "");
}

}  // namespace
