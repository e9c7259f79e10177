#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "kvsc/HttpRequest.h"
#include "tests/unit/kvsc/Bytes.h"

namespace kvsc {
namespace {

std::string takeBytes(unsigned char* bytes, int length) {
  const std::unique_ptr<unsigned char[]> owner(bytes);
  return std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

/// The arguments of a request, everything optional left out.
struct Request {
  std::string method = "GET";
  std::string host = "h";
  std::string path = "/p";
  long ifModifiedSince = 0;
  std::string responseType;
  std::string userAgent;
  std::string contentType;
  std::string charset;
  std::optional<std::string> data;
  std::string extraHeaders;

  std::string build() const {
    int length = 0;
    unsigned char* bytes = HttpRequest::generateRequest(
        method, host, path, &length, ifModifiedSince, responseType, userAgent, contentType, charset,
        data ? bytesOf(*data) : nullptr, data ? static_cast<int>(data->size()) : 0, extraHeaders);
    return takeBytes(bytes, length);
  }

  std::string buildPost() const {
    int length = 0;
    unsigned char* bytes = HttpRequest::generatePostRequest(
        host, path, &length, ifModifiedSince, responseType, userAgent, contentType, charset,
        data ? bytesOf(*data) : nullptr, data ? static_cast<int>(data->size()) : 0, extraHeaders);
    return takeBytes(bytes, length);
  }
};

constexpr const char* kBareGet = "GET /p HTTP/1.0\r\nHost: h\r\nConnection: close\r\n\r\n";
constexpr const char* kBarePost = "POST /p HTTP/1.0\r\nHost: h\r\nConnection: close\r\n\r\n";

TEST(GenerateRequest, ContainsHostAndConnectionWhenNothingElseIsGiven) {
  EXPECT_EQ(Request().build(), kBareGet);
}

TEST(GenerateRequest, KeepsTheMethodAsItIsSpelt) {
  Request request;
  request.method = "post";
  EXPECT_EQ(request.build(), "post /p HTTP/1.0\r\nHost: h\r\nConnection: close\r\n\r\n");
}

Request fullRequest() {
  Request request;
  request.responseType = "text/xml";
  request.userAgent = "Agent 1";
  request.contentType = "x/y";
  request.charset = "UTF-8";
  request.extraHeaders = "A: 1\r\nB: 2";
  return request;
}

TEST(GenerateRequest, PutsTheOptionalLinesInTheirOrder) {
  EXPECT_EQ(fullRequest().build(),
            "GET /p HTTP/1.0\r\nHost: h\r\nresponseType: text/xml\r\nUser-Agent: Agent 1\r\n"
            "Content-Type: x/y;charset=UTF-8\r\nA: 1\r\nB: 2\r\nConnection: close\r\n\r\n");
}

TEST(GenerateRequest, TakesTheExtraHeadersAsTheyAre) {
  Request request;
  request.extraHeaders = "A: 1\r\n";
  EXPECT_EQ(request.build(), "GET /p HTTP/1.0\r\nHost: h\r\nA: 1\r\n\r\nConnection: close\r\n\r\n");
  EXPECT_EQ(request.buildPost(),
            "POST /p HTTP/1.0\r\nHost: h\r\nA: 1\r\n\r\nConnection: close\r\n\r\n");
}

TEST(GenerateRequest, LeavesTheCharsetOutWhenItIsEmpty) {
  Request request = fullRequest();
  request.charset.clear();
  EXPECT_NE(request.build().find("\r\nContent-Type: x/y\r\n"), std::string::npos);
}

TEST(GenerateRequest, LeavesTheCharsetOutWithoutAContentType) {
  Request request;
  request.charset = "UTF-8";
  EXPECT_EQ(request.build(), kBareGet);
}

TEST(GenerateRequest, PutsTheDataAfterThePath) {
  Request request;
  request.data = "?a=1";
  EXPECT_EQ(request.build(), "GET /p?a=1 HTTP/1.0\r\nHost: h\r\nConnection: close\r\n\r\n");
}

TEST(GenerateRequest, CarriesZeroBytesInTheData) {
  Request request;
  request.data = std::string("?\0\1", 3);
  EXPECT_EQ(request.build().substr(0, 9), std::string("GET /p?\0\1", 9));
}

TEST(GenerateRequest, CountsALengthWithoutDataAtTheEnd) {
  int length = 0;
  unsigned char* bytes =
      HttpRequest::generateRequest("GET", "h", "/p", &length, 0, "", "", "", "", nullptr, 3, "");
  EXPECT_EQ(takeBytes(bytes, length), std::string(kBareGet) + std::string(3, '\0'));
}

TEST(GenerateRequest, TreatsANegativeLengthAsZero) {
  const std::string data = "?a";
  int length = 0;
  unsigned char* bytes = HttpRequest::generateRequest("GET", "h", "/p", &length, 0, "", "", "", "",
                                                      bytesOf(data), -7, "");
  EXPECT_EQ(takeBytes(bytes, length), kBareGet);
}

TEST(GenerateRequest, ThrowsBadAllocWhenTheLengthFitsNoInt) {
  int length = 0;
  EXPECT_THROW(HttpRequest::generateRequest("GET", "h", "/p", &length, 0, "", "", "", "", nullptr,
                                            INT_MAX, ""),
               std::bad_alloc);
}

TEST(GenerateRequest, AsAStringTakesTheDataAsAString) {
  const std::string data("?\0", 2);
  const std::string request =
      HttpRequest::generateRequest("GET", "h", "/p", data, 0, "r", "u", "c", "s");
  EXPECT_EQ(request, std::string("GET /p?\0", 8) +
                         " HTTP/1.0\r\nHost: h\r\nresponseType: r\r\nUser-Agent: u\r\n"
                         "Content-Type: c;charset=s\r\nConnection: close\r\n\r\n");
}

TEST(GeneratePostRequest, WithoutABodyHasNeitherLengthNorTrailingLineEnd) {
  EXPECT_EQ(Request().buildPost(), kBarePost);
}

TEST(GeneratePostRequest, TreatsAnEmptyBodyAsNoBody) {
  Request request;
  request.data = "";
  EXPECT_EQ(request.buildPost(), kBarePost);
}

TEST(GeneratePostRequest, PutsTheOptionalLinesInTheirOrder) {
  Request request = fullRequest();
  request.data = "<x/>";
  EXPECT_EQ(request.buildPost(),
            "POST /p HTTP/1.0\r\nHost: h\r\nresponseType: text/xml\r\nUser-Agent: Agent 1\r\n"
            "Content-Type: x/y;charset=UTF-8\r\nContent-Length: 4\r\nA: 1\r\nB: 2\r\n"
            "Connection: close\r\n\r\n<x/>\r\n");
}

TEST(GeneratePostRequest, CarriesZeroBytesInTheBody) {
  Request request;
  request.data = std::string("\0\0", 2);
  const std::string built = request.buildPost();
  EXPECT_EQ(built.substr(built.size() - 4), std::string("\0\0\r\n", 4));
}

TEST(GeneratePostRequest, AnnouncesTheLengthOfANullBodyButSendsNone) {
  int length = 0;
  unsigned char* bytes =
      HttpRequest::generatePostRequest("h", "/p", &length, 0, "", "", "", "", nullptr, 3, "");
  EXPECT_EQ(takeBytes(bytes, length),
            "POST /p HTTP/1.0\r\nHost: h\r\nContent-Length: 3\r\nConnection: close\r\n\r\n");
}

TEST(GeneratePostRequest, TreatsANegativeLengthAsZero) {
  const std::string body = "<x/>";
  int length = 0;
  unsigned char* bytes = HttpRequest::generatePostRequest("h", "/p", &length, 0, "", "", "", "",
                                                          bytesOf(body), -7, "");
  EXPECT_EQ(takeBytes(bytes, length), kBarePost);
}

TEST(GeneratePostRequest, AsAStringTakesTheBodyAsAString) {
  EXPECT_EQ(HttpRequest::generatePostRequest("h", "/p", "ab", 0, "r", "u", "c", "s"),
            "POST /p HTTP/1.0\r\nHost: h\r\nresponseType: r\r\nUser-Agent: u\r\n"
            "Content-Type: c;charset=s\r\nContent-Length: 2\r\nConnection: close\r\n\r\nab\r\n");
}

/// Runs a test in a time zone and puts the former one back.
class IfModifiedSince : public testing::Test {
 protected:
  IfModifiedSince() {
    if (const char* zone = std::getenv("TZ")) former_ = zone;
  }
  ~IfModifiedSince() override {
    former_ ? setenv("TZ", former_->c_str(), 1) : unsetenv("TZ");
    tzset();
  }

  static std::string dateLine(long seconds, const char* zone) {
    setenv("TZ", zone, 1);
    Request request;
    request.ifModifiedSince = seconds;
    const std::string built = request.build();
    EXPECT_EQ(request.buildPost().substr(4), built.substr(3));
    const std::size_t start = built.find("If-Modified-Since: ");
    return start == std::string::npos
               ? std::string()
               : built.substr(start, built.find("\r\n", start) - start).substr(19);
  }

 private:
  std::optional<std::string> former_;
};

TEST_F(IfModifiedSince, DoesNotPadTheDay) {
  EXPECT_EQ(dateLine(1709632800, "UTC0"), "Tue, 5 Mar 2024 10:00:00 GMT");
}

TEST_F(IfModifiedSince, StandsBetweenTheHostAndTheResponseType) {
  setenv("TZ", "UTC0", 1);
  Request request = fullRequest();
  request.ifModifiedSince = 1709632800;
  const std::string lines =
      " /p HTTP/1.0\r\nHost: h\r\nIf-Modified-Since: Tue, 5 Mar 2024 10:00:00 GMT\r\n"
      "responseType: text/xml\r\n";
  EXPECT_TRUE(request.build().starts_with("GET" + lines));
  EXPECT_TRUE(request.buildPost().starts_with("POST" + lines));
}

TEST_F(IfModifiedSince, SaysGmtOfTheLocalTime) {
  EXPECT_EQ(dateLine(1709632800, "EST5"), "Tue, 5 Mar 2024 05:00:00 GMT");
}

TEST_F(IfModifiedSince, ComesFromOneSecondOn) {
  EXPECT_EQ(dateLine(1, "UTC0"), "Thu, 1 Jan 1970 00:00:01 GMT");
  EXPECT_EQ(dateLine(0, "UTC0"), "");
  EXPECT_EQ(dateLine(-1, "UTC0"), "");
}

TEST_F(IfModifiedSince, IsLeftOutForATimeBeyondTheCalendar) {
  EXPECT_EQ(dateLine(LONG_MAX, "UTC0"), "");
}

/// The rule in its own words: the five words of `ctime`, printed again in another order.
std::string reorderedCtime(long seconds) {
  const std::time_t time = seconds;
  std::array<std::array<char, 16>, 5> words{};
  EXPECT_EQ(std::sscanf(std::ctime(&time), "%15s %15s %15s %15s %15s", words[0].data(),
                        words[1].data(), words[2].data(), words[3].data(), words[4].data()),
            5);
  return std::string(words[0].data()) + ", " + words[2].data() + " " + words[1].data() + " " +
         words[4].data() + " " + words[3].data() + " GMT";
}

TEST_F(IfModifiedSince, ContainsTheWordsOfCtime) {
  for (const char* zone : {"UTC0", "EST5EDT,M3.2.0,M11.1.0", "XYZ-13:45"}) {
    for (long seconds = 1; seconds < 300'000'000'000; seconds = seconds * 3 + 12345) {
      const std::string line = dateLine(seconds, zone);
      EXPECT_EQ(line, reorderedCtime(seconds)) << zone << " " << seconds;
    }
  }
}

}  // namespace
}  // namespace kvsc
