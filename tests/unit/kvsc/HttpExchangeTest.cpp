#include "kvsc/CancelToken.h"
#include "kvsc/Dialer.h"
#include "kvsc/OpenSsl.h"
#include "tests/support/Loopback.h"
#include "tests/unit/kvsc/ExchangeTesting.h"

namespace {

using kvsc::HTTP_ERROR_FAILED;
using kvsc::HTTP_ERROR_NONE;
using kvsc::HTTP_ERROR_NOT_MODIFIED;
using support::bareResponse;
using support::okResponse;
using support::Script;
using support::ScriptedServer;

const std::string kBinary("\0one\0two\r\n\xff\0", 12);

class HttpExchangeTest : public Exchange {};

TEST_F(HttpExchangeTest, AGetBringsStatusHeadersBody) {
  answer(okResponse("film"));
  EXPECT_EQ(get("/films/1?a=b"), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseCode(), 200);
  EXPECT_EQ(client_.getResponseValue("Content-Length"), "4");
  EXPECT_EQ(received_.body(), "film");
  EXPECT_EQ(client_.getTotalDownloaded(), 4);
  EXPECT_EQ(requestOf(), getRequest("/films/1?a=b"));
  EXPECT_EQ(error(), "");
}

TEST_F(HttpExchangeTest, EveryHeaderLineIsPassedOnWithItsEnd) {
  answer(okResponse("film", "A: b\r\n"));
  get();
  EXPECT_EQ(received_.lines,
            (std::vector<std::string>{"HTTP/1.0 200 OK\r\n", "Content-Length: 4\r\n", "A: b\r\n",
                                      "\r\n"}));
}

TEST_F(HttpExchangeTest, ARequestCarriesWhatTheCallerGives) {
  answer(okResponse(""));
  session_.setUserAgent("Vesk Player 2.0");
  kvsc::HttpErrorIds result = HTTP_ERROR_FAILED;
  client_.httpGet(server_.url("/", "127.0.0.1"), 0, &result, &session_, "text/xml", "A: 1\r\nB: 2",
                  kvsc::SSLV3);
  EXPECT_EQ(requestOf(), getRequest("/",
                                    "responseType: text/xml\r\n"
                                    "User-Agent: Vesk Player 2.0\r\nA: 1\r\nB: 2\r\n"));
}

TEST_F(HttpExchangeTest, ACodeOfEachClassHasItsResult) {
  for (const auto& [code, result] :
       std::vector<std::pair<int, kvsc::HttpErrorIds>>{{100, HTTP_ERROR_NONE},
                                                       {200, HTTP_ERROR_NONE},
                                                       {201, HTTP_ERROR_NONE},
                                                       {206, HTTP_ERROR_NONE},
                                                       {299, HTTP_ERROR_NONE},
                                                       {300, HTTP_ERROR_FAILED},
                                                       {304, HTTP_ERROR_NOT_MODIFIED},
                                                       {305, HTTP_ERROR_FAILED},
                                                       {308, HTTP_ERROR_FAILED},
                                                       {400, HTTP_ERROR_FAILED},
                                                       {404, HTTP_ERROR_FAILED},
                                                       {416, HTTP_ERROR_FAILED},
                                                       {500, HTTP_ERROR_FAILED},
                                                       {503, HTTP_ERROR_FAILED},
                                                       {999, HTTP_ERROR_FAILED}}) {
    answer("HTTP/1.0 " + std::to_string(code) + " Word\r\nA: b\r\n\r\n");
    EXPECT_EQ(get(), result) << code;
    EXPECT_EQ(client_.getResponseCode(), code);
  }
}

TEST_F(HttpExchangeTest, TheBodyOfAFailureIsNotStreamed) {
  server_.next(Script().readRequest().sendPieces(bareResponse("404 Not Found"), 4096).send("page"));
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  EXPECT_EQ(received_.body(), "");
  EXPECT_EQ(client_.getTotalDownloaded(), 0);
}

TEST_F(HttpExchangeTest, NotModifiedIsAResultOfItsOwn) {
  answer(bareResponse("304 Not Modified"));
  EXPECT_EQ(get("/", 1'700'000'000), HTTP_ERROR_NOT_MODIFIED);
  EXPECT_EQ(received_.body(), "");
  EXPECT_NE(requestOf().find("\r\nIf-Modified-Since: "), std::string::npos);
}

TEST_F(HttpExchangeTest, ABodyMayHoldAnyBytes) {
  answer(okResponse(kBinary));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), kBinary);
}

TEST_F(HttpExchangeTest, AHeadReadsNoBody) {
  server_.next(Script()
                   .readRequest()
                   .sendPieces(okResponse("", "X-Size: 7\r\n"), 4096)
                   .send("surplus")
                   .closeNow());
  client_.setTotalDownloaded(7);
  EXPECT_EQ(head("/film"), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseValue("X-Size"), "7");
  EXPECT_EQ(received_.body(), "");
  EXPECT_EQ(requestOf(), "HEAD /film HTTP/1.0\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpExchangeTest, AHeadDoesNotCountAnew) {
  answer(bareResponse("200 OK"));
  client_.setTotalDownloaded(7);
  head();
  EXPECT_EQ(client_.getTotalDownloaded(), 7);
  answer(bareResponse("200 OK"));
  get();
  EXPECT_EQ(client_.getTotalDownloaded(), 0);
}

TEST_F(HttpExchangeTest, APostSendsItsBodyAsXml) {
  server_.next(Script().readRequest().readBytes(6).send(okResponse("done")));
  EXPECT_EQ(post("data"), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "done");
  EXPECT_EQ(requestOf(),
            "POST / HTTP/1.0\r\nHost: 127.0.0.1\r\nContent-Type: text/xml;charset=UTF-8\r\n"
            "Content-Length: 4\r\nConnection: close\r\n\r\ndata\r\n");
}

TEST_F(HttpExchangeTest, APostMaySendAnyBytes) {
  server_.next(Script().readRequest().readBytes(kBinary.size() + 2).send(okResponse("")));
  kvsc::HttpErrorIds result = HTTP_ERROR_FAILED;
  client_.httpPost(server_.url("/", "127.0.0.1"),
                   reinterpret_cast<const unsigned char*>(kBinary.data()),
                   static_cast<int>(kBinary.size()), &result, &session_, "", "", kvsc::SSLV3, true);
  EXPECT_EQ(result, HTTP_ERROR_NONE);
  EXPECT_TRUE(requestOf().ends_with("\r\n\r\n" + kBinary + "\r\n"));
}

TEST_F(HttpExchangeTest, AnEmptyPostHasNoBody) {
  answer(okResponse(""));
  EXPECT_EQ(post(""), HTTP_ERROR_NONE);
  EXPECT_EQ(requestOf(),
            "POST / HTTP/1.0\r\nHost: 127.0.0.1\r\nContent-Type: text/xml;charset=UTF-8\r\n"
            "Connection: close\r\n\r\n");
}

TEST_F(HttpExchangeTest, APostOfNothingIsAnEmptyPost) {
  answer(okResponse(""));
  kvsc::HttpErrorIds result = HTTP_ERROR_FAILED;
  client_.httpPost(server_.url("/", "127.0.0.1"), nullptr, 100, &result, &session_, "", "",
                   kvsc::SSLV3, true);
  EXPECT_EQ(result, HTTP_ERROR_NONE);
  EXPECT_EQ(requestOf().find("Content-Length"), std::string::npos);
}

TEST_F(HttpExchangeTest, ALargePostArrivesWhole) {
  const std::string data(3 << 20, 'x');
  server_.next(Script().readRequest().readBytes(data.size() + 2).send(okResponse("")));
  EXPECT_EQ(post(data), HTTP_ERROR_NONE);
  EXPECT_TRUE(requestOf().ends_with("\r\n\r\n" + data + "\r\n"));
}

TEST_F(HttpExchangeTest, DataWithoutAPostIsTheQueryOfAGet) {
  answer(okResponse("found"));
  EXPECT_EQ(post("?a=1", "/p", false), HTTP_ERROR_NONE);
  EXPECT_EQ(requestOf(), getRequest("/p?a=1"));
  EXPECT_EQ(received_.body(), "found");
}

TEST_F(HttpExchangeTest, AQueryMayHoldZeroBytes) {
  answer(okResponse(""));
  EXPECT_EQ(post(std::string("?a\0b", 4), "/p", false), HTTP_ERROR_NONE);
  EXPECT_EQ(requestOf(), getRequest(std::string("/p?a\0b", 6)));
}

TEST_F(HttpExchangeTest, AQueryWithALineEndIsRefused) {
  for (const char* query : {"?a\r\nX-Evil: 1", "?a\nX-Evil: 1", "?a\r"}) {
    EXPECT_EQ(post(query, "/p", false), HTTP_ERROR_FAILED);
    EXPECT_NE(error(), "");
  }
  EXPECT_EQ(server_.connectionCount(), 0U);
}

TEST_F(HttpExchangeTest, OnlyGetAndHeadTakeTheProtocolWithoutChecks) {
  server_.always(Script::answer(okResponse("")));
  session_.setSslMethod(kvsc::TLSV1);
  post("data");
  EXPECT_EQ(session_.getSslMethod(), kvsc::TLSV1);
  get();
  EXPECT_EQ(session_.getSslMethod(), kvsc::SSLV3);
  session_.setSslMethod(kvsc::TLSV1);
  head();
  EXPECT_EQ(session_.getSslMethod(), kvsc::SSLV3);
  EXPECT_EQ(session_.getVerifyMode(), 0);
}

TEST_F(HttpExchangeTest, WithChecksAPostTakesTheProtocolToo) {
  session_.setCheckCertificate(true);
  session_.setSslMethod(kvsc::TLSV1);
  post("data");
  EXPECT_EQ(session_.getSslMethod(), kvsc::SSLV3);
  EXPECT_EQ(session_.getVerifyMode(), 1);
}

TEST_F(HttpExchangeTest, WithChecksAPlainServerIsRefused) {
  server_.always(Script::answer(okResponse("film")));
  session_.setCheckCertificate(true);
  testing::internal::CaptureStdout();
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "application verification failure\n");
  EXPECT_EQ(error(), "application verification failure");
  EXPECT_EQ(requestOf(), "");
}

TEST_F(HttpExchangeTest, AMalformedAddressFails) {
  kvsc::HttpErrorIds result = HTTP_ERROR_NONE;
  for (const char* url : {"", "films.example/1", "mailto:x", "http:films.example"}) {
    client_.httpGet(url, 0, &result, &session_, "", "", kvsc::SSLV3);
    EXPECT_EQ(result, HTTP_ERROR_FAILED) << url;
  }
}

TEST_F(HttpExchangeTest, AnEmptyHostOrPortFails) {
  kvsc::HttpErrorIds result = HTTP_ERROR_NONE;
  for (const char* url : {"http:///film", "http://127.0.0.1:/film", "http://127.0.0.1:x/film"}) {
    client_.httpGet(url, 0, &result, &session_, "", "", kvsc::SSLV3);
    EXPECT_EQ(result, HTTP_ERROR_FAILED) << url;
    EXPECT_NE(error(), "") << url;
  }
}

TEST_F(HttpExchangeTest, ARefusedConnectionFailsWithItsReason) {
  const support::RefusingPort refusing;
  kvsc::HttpErrorIds result = HTTP_ERROR_NONE;
  const std::string address = "127.0.0.1:" + std::to_string(refusing.port());
  client_.httpGet("http://" + address + "/", 0, &result, &session_, "", "", kvsc::SSLV3);
  EXPECT_EQ(result, HTTP_ERROR_FAILED);
  EXPECT_EQ(error(),
            "\n connecting to " + address + " error:8000006F:system library::Connection refused\n");
}

TEST_F(HttpExchangeTest, TheTextOfAFailureIsClearedByTheNextExchange) {
  const support::RefusingPort refusing;
  kvsc::HttpErrorIds result = HTTP_ERROR_NONE;
  const std::string url = "http://127.0.0.1:" + std::to_string(refusing.port()) + "/";
  client_.httpGet(url, 0, &result, &session_, "", "", kvsc::SSLV3);
  const std::string text = error();
  client_.httpGet(url, 0, &result, &session_, "", "", kvsc::SSLV3);
  EXPECT_EQ(error(), text);
  answer(okResponse(""));
  get();
  EXPECT_EQ(error(), "");
}

TEST_F(HttpExchangeTest, AServerThatSaysNothingLeavesTheCodeAsItWas) {
  server_.next(Script().readRequest().close());
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseCode(), 0);
  answer(bareResponse("404 Not Found"));
  get();
  server_.next(Script().readRequest().close());
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  EXPECT_EQ(client_.getResponseCode(), 404);
}

TEST_F(HttpExchangeTest, HeadersOfAnEarlierResponseAreForgotten) {
  answer(bareResponse("200 OK", "A: b\r\n"));
  get();
  answer(bareResponse("200 OK"));
  get();
  EXPECT_EQ(client_.getResponseValue("A"), "");
}

TEST_F(HttpExchangeTest, TheConnectionIsClosedWhateverTheResult) {
  answer(okResponse(""));
  answer(bareResponse("404 Not Found"));
  get();
  EXPECT_EQ(session_.getConnect(), nullptr);
  get();
  EXPECT_EQ(session_.getConnect(), nullptr);
  EXPECT_TRUE(server_.ended(1).ended);
}

TEST_F(HttpExchangeTest, AConnectionThatWasLeftOpenIsClosedFirst) {
  server_.always(Script::answer(okResponse("film")));
  const std::string url = server_.url("/", "127.0.0.1");
  EXPECT_EQ(client_.sendRequest(url, 0, "GET", &session_, "", "", ""), HTTP_ERROR_NONE);
  EXPECT_NE(session_.getConnect(), nullptr);
  EXPECT_EQ(client_.sendRequest(url, 0, "GET", &session_, "", nullptr, 0, ""), HTTP_ERROR_NONE);
  EXPECT_FALSE(server_.ended(0).lost);
  client_.close(&session_);
}

TEST_F(HttpExchangeTest, TheResultPointerMayBeNull) {
  server_.always(Script::answer(okResponse("")));
  const std::string url = server_.url("/", "127.0.0.1");
  EXPECT_EQ(client_.httpGet(url, 0, nullptr, &session_, "", "", kvsc::SSLV3), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getRedirectUrl(url, nullptr, &session_, kvsc::SSLV3), "");
}

TEST_F(HttpExchangeTest, WithoutCallbacksABodyIsOnlyCounted) {
  answer(okResponse("film"));
  client_.init();
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getTotalDownloaded(), 4);
  EXPECT_EQ(received_.body(), "");
}

TEST_F(HttpExchangeTest, TheMethodIsPostInAnyCase) {
  server_.always(Script().readRequest().readBytes(6).send(okResponse("")));
  const std::string url = server_.url("/", "127.0.0.1");
  EXPECT_EQ(client_.sendRequest(url, 0, "pOsT", &session_, "", "data", ""), HTTP_ERROR_NONE);
  client_.close(&session_);
  EXPECT_TRUE(requestOf().starts_with("POST / HTTP/1.0\r\n"));
}

/// Connects to nothing and records what it was asked for.
class RecordingDialer : public kvsc::Dialer {
 public:
  int dial(const std::string& host, const std::string& port, kvsc::Waiter&) override {
    dialled += host + ":" + port + "\n";
    return -1;
  }

  std::string dialled;
};

TEST_F(HttpExchangeTest, ADialerIsAskedForServerOrProxyAsTheyStand) {
  RecordingDialer dialer;
  session_.setDialer(&dialer);
  const auto dial = [&](const std::string& url) {
    kvsc::HttpErrorIds result = HTTP_ERROR_NONE;
    client_.httpGet(url, 0, &result, &session_, "", "", kvsc::SSLV3);
    EXPECT_EQ(result, HTTP_ERROR_FAILED);
  };
  dial("http://films.example/");
  dial("https://films.example/");
  dial("https://films.example:8443/");
  session_.setProxyURL("proxy.example");
  dial("http://films.example/");
  session_.setProxyPort(3128);
  dial("https://films.example/");
  EXPECT_EQ(dialer.dialled,
            "films.example:http\nfilms.example:https\nfilms.example:8443\n"
            "proxy.example:443\nproxy.example:3128\n");
}

TEST_F(HttpExchangeTest, ADialerIsNotAskedAfterACancel) {
  RecordingDialer dialer;
  kvsc::CancelToken token;
  session_.setDialer(&dialer);
  session_.setCancelToken(&token);
  token.cancel();
  EXPECT_EQ(get(), kvsc::HTTP_ERROR_CANCELLED);
  EXPECT_EQ(dialer.dialled, "");
}

}  // namespace
