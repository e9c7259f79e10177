#include <gtest/gtest.h>

#include <ostream>

#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_FAILED;
using support::Script;
using support::ScriptedServer;

const std::string kNul("\0", 1);

/// Everything that could smuggle a line into a request; each with the name that its test bears.
struct Smuggled {
  const char* name;
  std::string bytes;
};

std::ostream& operator<<(std::ostream& out, const Smuggled& smuggled) {
  return out << smuggled.name;
}

class RefusedRequestsTest : public testing::TestWithParam<Smuggled> {
 protected:
  RefusedRequestsTest() : dialer_(server_.port()) {
    server_.always(Script::answer(support::okResponse("film")));
    client_.session().setDialer(&dialer_);
  }

  const std::string& bad() const { return GetParam().bytes; }

  /// The request is refused for that part of it, before any connection is made.
  void expectRefused(const std::string& part, const Outcome& outcome) {
    EXPECT_EQ(outcome, (Outcome{HTTP_ERROR_FAILED, "Request refused: the " + part +
                                                       " holds a line end or a zero byte."}));
    EXPECT_EQ(server_.connectionCount(), 0u);
  }

  Outcome get(const std::string& url, const std::string& responseType = "",
              const std::string& extraHeaders = "") {
    kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_NONE;
    client_.client().setErrorString("");
    client_.client().httpGet(url, 0, &result, &client_.session(), responseType, extraHeaders,
                             kvsc::SSLV3);
    return {result, client_.client().getErrorString()};
  }

  ScriptedServer server_;
  LoopbackDialer dialer_;
  PlainClient client_;
};

INSTANTIATE_TEST_SUITE_P(Bytes, RefusedRequestsTest,
                         testing::Values(Smuggled{"CrLf", "\r\n"}, Smuggled{"Lf", "\n"},
                                         Smuggled{"Cr", "\r"}, Smuggled{"Nul", kNul}),
                         [](const auto& info) { return info.param.name; });

TEST_P(RefusedRequestsTest, InTheHost) {
  expectRefused("host", get("http://films" + bad() + "X-Evil: 1.example/film"));
}

TEST_P(RefusedRequestsTest, InThePath) {
  expectRefused("path", get("http://films.example/film" + bad() + "X-Evil: 1"));
}

TEST_P(RefusedRequestsTest, AtTheEndOfThePath) {
  expectRefused("path", get("http://films.example/film" + bad()));
}

TEST_P(RefusedRequestsTest, InThePort) {
  expectRefused("port", get("http://films.example:80" + bad() + "/film"));
}

TEST_P(RefusedRequestsTest, InTheResponseType) {
  expectRefused("response type", get("http://films.example/", "text/xml" + bad() + "X-Evil: 1"));
}

TEST_P(RefusedRequestsTest, InTheUserAgent) {
  client_.session().setUserAgent("player" + bad() + "X-Evil: 1");
  expectRefused("user agent", get("http://films.example/"));
}

TEST_P(RefusedRequestsTest, InTheUserAgentOfATunnel) {
  client_.session().setUserAgent("player" + bad() + "X-Evil: 1");
  client_.session().setProxyURL("proxy.example");
  expectRefused("user agent", get("https://films.example/"));
}

TEST_P(RefusedRequestsTest, InTheHostOfATunnel) {
  client_.session().setProxyURL("proxy.example");
  expectRefused("host", get("https://films" + bad() + "X-Evil: 1.example/film"));
}

TEST_P(RefusedRequestsTest, InAPost) {
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_NONE;
  client_.client().httpPost("http://films.example/" + bad(), "data", &result, &client_.session(),
                            "", "", kvsc::SSLV3, true);
  expectRefused("path", {result, client_.client().getErrorString()});
}

TEST_P(RefusedRequestsTest, InARedirectThatIsAskedFor) {
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_NONE;
  client_.client().getRedirectUrl("http://films.example/" + bad(), &result, &client_.session(),
                                  kvsc::SSLV3);
  expectRefused("path", {result, client_.client().getErrorString()});
}

// A query may hold a zero byte, so only line ends are refused there.
class RefusedQueriesTest : public RefusedRequestsTest {};

INSTANTIATE_TEST_SUITE_P(Bytes, RefusedQueriesTest,
                         testing::Values(Smuggled{"CrLf", "\r\n"}, Smuggled{"Lf", "\n"},
                                         Smuggled{"Cr", "\r"}),
                         [](const auto& info) { return info.param.name; });

TEST_P(RefusedQueriesTest, InTheQueryOfAGet) {
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_NONE;
  client_.client().httpPost("http://films.example/", "?a=1" + bad() + "X-Evil: 1", &result,
                            &client_.session(), "", "", kvsc::SSLV3, false);
  EXPECT_EQ((Outcome{result, client_.client().getErrorString()}),
            (Outcome{HTTP_ERROR_FAILED, "Request refused: the query holds a line end."}));
  EXPECT_EQ(server_.connectionCount(), 0u);
}

class RefusedHeadersTest : public RefusedRequestsTest {};

INSTANTIATE_TEST_SUITE_P(Bytes, RefusedHeadersTest,
                         testing::Values(Smuggled{"Lf", "\n"}, Smuggled{"Cr", "\r"},
                                         Smuggled{"Nul", kNul}, Smuggled{"BlankLine", "\r\n\r\n"},
                                         Smuggled{"TwoCr", "\r\r\n"}),
                         [](const auto& info) { return info.param.name; });

TEST_P(RefusedHeadersTest, InAnExtraHeader) {
  EXPECT_EQ(get("http://films.example/", "", "A: 1" + bad() + "X-Evil: 1"),
            (Outcome{HTTP_ERROR_FAILED,
                     "Request refused: the extra headers are not lines of text separated by line "
                     "ends."}));
  EXPECT_EQ(server_.connectionCount(), 0u);
}

class AcceptedRequestsTest : public RefusedRequestsTest {};

INSTANTIATE_TEST_SUITE_P(Bytes, AcceptedRequestsTest,
                         testing::Values(Smuggled{"Blank", " "}, Smuggled{"Tab", "\t"},
                                         Smuggled{"HighByte", "\xc3\xa9"}),
                         [](const auto& info) { return info.param.name; });

TEST_P(AcceptedRequestsTest, OtherBytesPass) {
  EXPECT_EQ(get("http://films.example/a" + bad() + "b"), kSuccess);
  EXPECT_EQ(server_.ended().received.find("GET /a" + bad() + "b HTTP/1.0\r\n"), 0u);
}

TEST_P(AcceptedRequestsTest, ExtraHeadersAreSeparatedByLineEnds) {
  EXPECT_EQ(get("http://films.example/", "", "A: 1" + bad() + "\r\nB: 2"), kSuccess);
  EXPECT_NE(server_.ended().received.find("\r\nA: 1" + bad() + "\r\nB: 2\r\nConnection: close\r\n"),
            std::string::npos);
}

TEST_P(AcceptedRequestsTest, OneLineEndAfterTheExtraHeadersIsDropped) {
  EXPECT_EQ(get("http://films.example/", "", "A: 1" + bad() + "\r\n"), kSuccess);
  EXPECT_NE(server_.ended().received.find("\r\nA: 1" + bad() + "\r\nConnection: close\r\n"),
            std::string::npos);
}

TEST(RefusedRedirectTest, ALocationWithAHiddenLineIsNotFollowed) {
  ScriptedServer server;
  PlainClient client;
  LoopbackDialer dialer(server.port());
  client.session().setDialer(&dialer);
  client.session().setMaxRedirectCount(10);
  server.next(Script::answer(
      support::bareResponse("302 Found", "Location: http://films.example/a\rX-Evil: 1\r\n")));
  EXPECT_EQ(
      client.get("http://films.example/"),
      (Outcome{HTTP_ERROR_FAILED, "Request refused: the path holds a line end or a zero byte."}));
  EXPECT_EQ(server.connectionCount(), 1u);
}

}  // namespace
