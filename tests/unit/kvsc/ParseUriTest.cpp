#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "kvsc/HttpRequest.h"

namespace kvsc {
namespace {

struct Uri {
  std::string host = "old host";
  std::string port = "old port";
  std::string path = "old path";
  bool isHttps = false;
  int result = 1;
};

Uri parse(const std::string& text) {
  Uri uri;
  uri.result = HttpRequest::parseUri(text, &uri.host, &uri.port, &uri.path, &uri.isHttps);
  return uri;
}

struct UriCase {
  const char* text;
  const char* host;
  const char* port;
  const char* path;
  bool isHttps;
};

void PrintTo(const UriCase& c, std::ostream* out) { *out << c.text; }

class ParseUri : public testing::TestWithParam<UriCase> {};

TEST_P(ParseUri, SplitsTheAddress) {
  const Uri uri = parse(GetParam().text);
  EXPECT_EQ(uri.result, 0);
  EXPECT_EQ(uri.host, GetParam().host);
  EXPECT_EQ(uri.port, GetParam().port);
  EXPECT_EQ(uri.path, GetParam().path);
  EXPECT_EQ(uri.isHttps, GetParam().isHttps);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, ParseUri,
    testing::Values(UriCase{"https://example/a?b=1", "example", "https", "/a?b=1", true},
                    UriCase{"HTTP://Host:8080", "Host", "8080", "/", false},
                    UriCase{"HttpS://Host/Path", "Host", "https", "/Path", true},
                    UriCase{"http://host:/x", "host", "", "/x", false},
                    UriCase{"http://:80/x", ":80", "http", "/x", false},
                    UriCase{"http://a:b:c/x", "a", "b:c", "/x", false},
                    UriCase{"ftp://host/http-file", "host", "http", "/http-file", false},
                    UriCase{"http://host/go?to=https://other/", "host", "https",
                            "/go?to=https://other/", true},
                    UriCase{"http:host//x/y", "x", "http", "/y", false},
                    UriCase{"http://", "", "http", "/", false},
                    UriCase{"http:///x", "", "http", "/x", false},
                    UriCase{"http://user@host/a#b", "user@host", "http", "/a#b", false},
                    UriCase{"http://[::1]:80/x", "[", ":1]:80", "/x", false},
                    UriCase{"http://host?a=/b", "host?a=", "http", "/b", false}));

class ParseUriRefusal : public testing::TestWithParam<const char*> {};

TEST_P(ParseUriRefusal, Fails) { EXPECT_EQ(parse(GetParam()).result, -1); }

INSTANTIATE_TEST_SUITE_P(Addresses, ParseUriRefusal,
                         testing::Values("", "host/path", "mailto:x", "ftp://host/file",
                                         "http:host/x", "http:", "//http:host", "http//host"));

TEST(ParseUriOutParameters, KeepTheirValuesWithoutAScheme) {
  const Uri uri = parse("ftp://host/file");
  EXPECT_EQ(uri.host, "old host");
  EXPECT_EQ(uri.port, "old port");
  EXPECT_EQ(uri.path, "old path");
}

TEST(ParseUriOutParameters, KeepTheSchemeOfAnAddressWithoutSlashes) {
  const Uri uri = parse("https:host/x");
  EXPECT_EQ(uri.result, -1);
  EXPECT_TRUE(uri.isHttps);
  EXPECT_EQ(uri.port, "https");
  EXPECT_EQ(uri.host, "old host");
}

TEST(ParseUriOutParameters, SayThatAPlainAddressIsNotSecure) {
  Uri uri;
  uri.isHttps = true;
  EXPECT_EQ(HttpRequest::parseUri("http://host/", &uri.host, &uri.port, &uri.path, &uri.isHttps),
            0);
  EXPECT_FALSE(uri.isHttps);
}

}  // namespace
}  // namespace kvsc
