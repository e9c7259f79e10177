// What a POST brings back.
#include "tests/unit/kvsc/ExchangeTesting.h"

namespace {

using kvsc::HTTP_ERROR_FAILED;
using kvsc::HTTP_ERROR_NONE;
using support::okResponse;
using support::Script;

class HttpPostTest : public Exchange {};

TEST_F(HttpPostTest, APostStreamsABodyThatComesLater) {
  const std::string headers = okResponse("");
  server_.next(
      Script().readRequest().readBytes(6).sendPieces(headers, headers.size()).send("done"));
  EXPECT_EQ(post("data"), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "done");
  EXPECT_EQ(received_.progress, (std::vector<double>{4}));
}

TEST_F(HttpPostTest, AQueryStreamsABodyThatComesLaterToo) {
  const std::string headers = okResponse("");
  server_.next(Script().readRequest().sendPieces(headers, headers.size()).send("done"));
  EXPECT_EQ(post("?a=1", "/", false), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "done");
  EXPECT_EQ(received_.progress, (std::vector<double>{4}));
}

TEST_F(HttpPostTest, APostCountsAnew) {
  client_.setTotalDownloaded(7);
  server_.next(Script().readRequest().readBytes(6).send(okResponse("done")));
  EXPECT_EQ(post("data"), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getTotalDownloaded(), 4);
}

TEST_F(HttpPostTest, APostCarriesWhatTheCallerGives) {
  server_.next(Script().readRequest().readBytes(6).send(okResponse("")));
  session_.setUserAgent("Vesk Player 2.0");
  kvsc::HttpErrorIds result = HTTP_ERROR_FAILED;
  client_.httpPost(server_.url("/p", "127.0.0.1"), "data", &result, &session_, "text/xml",
                   "A: 1\r\nB: 2", kvsc::SSLV3, true);
  EXPECT_EQ(result, HTTP_ERROR_NONE);
  EXPECT_EQ(requestOf(),
            "POST /p HTTP/1.0\r\nHost: 127.0.0.1\r\nresponseType: text/xml\r\n"
            "User-Agent: Vesk Player 2.0\r\nContent-Type: text/xml;charset=UTF-8\r\n"
            "Content-Length: 4\r\nA: 1\r\nB: 2\r\nConnection: close\r\n\r\ndata\r\n");
}

}  // namespace
