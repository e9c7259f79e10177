// What a single header line tells the result in progress.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>

#include "download/HttpHelper.h"

namespace {

class HttpHelperHeader : public testing::Test {
 protected:
  static constexpr unsigned long long kUntouched = 999;

  void take(std::string line) {
    result_->setContentLength(kUntouched);
    result_->setRedirection("untouched");
    EXPECT_EQ(HttpHelper::downloadHeaderFunc(line.data(), 1, line.size(), &helper_), line.size());
  }

  unsigned long long lengthIn(const std::string& line) {
    take(line);
    return result_->getContentLength();
  }

  std::string locationIn(const std::string& line) {
    take(line);
    return result_->getRedirection();
  }

  HttpHelper helper_;
  const std::unique_ptr<HttpResult> result_{helper_.getInfo()};
};

TEST_F(HttpHelperHeader, TakesTheLengthInAnyCase) {
  EXPECT_EQ(lengthIn("Content-Length: 42\r\n"), 42u);
  EXPECT_EQ(lengthIn("CONTENT-LENGTH: 42\r\n"), 42u);
  EXPECT_EQ(lengthIn("content-length: 42\r\n"), 42u);
}

TEST_F(HttpHelperHeader, ReadsTheLengthFromPositionFifteenOn) {
  EXPECT_EQ(lengthIn("Content-Length:42\r\n"), 42u);
  EXPECT_EQ(lengthIn("Content-Length:  42\r\n"), 42u);
  EXPECT_EQ(lengthIn("Content-Length 42\r\n"), 42u);
  EXPECT_EQ(lengthIn("Content-Length42\r\n"), 2u);
}

TEST_F(HttpHelperHeader, ReadsTheDigitsAtTheBeginningOfALength) {
  EXPECT_EQ(lengthIn("Content-Length: 42 bytes"), 42u);
  EXPECT_EQ(lengthIn("Content-Length: \t-7"), static_cast<unsigned long long>(-7));
  EXPECT_EQ(lengthIn("Content-Length: +7"), 7u);
  EXPECT_EQ(lengthIn("Content-Length: 0x10"), 0u);
  EXPECT_EQ(lengthIn("Content-Length: none"), 0u);
  EXPECT_EQ(lengthIn("Content-Length: 99999999999999999999"),
            static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max()));
}

TEST_F(HttpHelperHeader, TakesALengthWithoutValueForZero) {
  EXPECT_EQ(lengthIn("Content-Length"), 0u);
  EXPECT_EQ(lengthIn("Content-Length:"), 0u);
  EXPECT_EQ(lengthIn("Content-Length: \r\n"), 0u);
}

TEST_F(HttpHelperHeader, LeavesOtherLinesAlone) {
  for (const char* const line :
       {"Content-Lengt: 42\r\n", " Content-Length: 42\r\n", "Server: nginx\r\n", ""}) {
    EXPECT_EQ(lengthIn(line), kUntouched) << line;
    EXPECT_EQ(locationIn(line), "untouched") << line;
  }
}

TEST_F(HttpHelperHeader, TakesTheLocationInItsExactSpellingOnly) {
  EXPECT_EQ(locationIn("Location: http://h/a\r\n"), "http://h/a\r\n");
  EXPECT_EQ(locationIn("location: http://h/a\r\n"), "untouched");
  EXPECT_EQ(locationIn("LOCATION: http://h/a\r\n"), "untouched");
}

TEST_F(HttpHelperHeader, KeepsTheLineEndOfALocation) {
  EXPECT_EQ(locationIn("Location: \r\n"), "\r\n");
  EXPECT_EQ(locationIn("Location: a\n"), "a\n");
}

TEST_F(HttpHelperHeader, ReadsTheLocationFromPositionTenOn) {
  EXPECT_EQ(locationIn("Location:http://h/a\r\n"), "ttp://h/a\r\n");
  EXPECT_EQ(locationIn("Location:"), "");
  EXPECT_EQ(locationIn("Location: "), "");
}

}  // namespace
