#include <gtest/gtest.h>

#include <initializer_list>

#include "playerx/transfers/ResponseHead.h"

namespace playerx::transfers {
namespace {

ResponseHead headOf(std::initializer_list<const char*> lines) {
  ResponseHead head;
  for (const char* line : lines) head.addLine(line);
  return head;
}

TEST(ResponseHeadTest, ReadsStatusAndFields) {
  const ResponseHead head = headOf({"HTTP/1.1 206 Partial Content\r\n", "content-length: 10\r\n",
                                    "CONTENT-RANGE:bytes 1-10/11\r\n", "ETag:  \"a b\"  \r\n",
                                    "Last-Modified: Wed, 01 Jan 2025 00:00:00 GMT\r\n",
                                    "Date: now\r\n", "Retry-After: 7\r\n", "\r\n"});
  EXPECT_EQ(head.status(), 206);
  EXPECT_EQ(head.bodyLength(), 10u);
  EXPECT_EQ(head.contentRange(), "bytes 1-10/11");
  EXPECT_EQ(head.etag(), "\"a b\"");
  EXPECT_EQ(head.lastModified(), "Wed, 01 Jan 2025 00:00:00 GMT");
  EXPECT_EQ(head.date(), "now");
  EXPECT_EQ(head.retryAfter(), "7");
}

TEST(ResponseHeadTest, IsWholeWithItsBlankLine) {
  EXPECT_FALSE(headOf({"HTTP/1.1 200 OK\r\n", "Content-Le"}).isWhole());
  EXPECT_TRUE(headOf({"HTTP/1.1 200 OK\r\n", "\r\n"}).isWhole());
  EXPECT_FALSE(headOf({"HTTP/1.1 302 No\r\n", "\r\n", "HTTP/1.1 200 OK\r\n"}).isWhole());
}

TEST(ResponseHeadTest, LengthsThatCannotBeAreNoticed) {
  const auto isImpossible = [](std::initializer_list<const char*> lines) {
    return headOf(lines).hasImpossibleLength();
  };
  EXPECT_FALSE(isImpossible({"HTTP/1.1 200 OK\r\n"}));
  EXPECT_FALSE(isImpossible({"Content-Length: 5\r\n", "content-length: 5\r\n"}));
  EXPECT_FALSE(isImpossible({"Content-Length: 18446744073709551615\r\n"}));
  EXPECT_TRUE(isImpossible({"Content-Length: 5\r\n", "Content-Length: 6\r\n"}));
  EXPECT_TRUE(isImpossible({"Content-Length: 18446744073709551616\r\n"}));
}

TEST(ResponseHeadTest, AStatusLineWithoutReasonIsRead) {
  EXPECT_EQ(headOf({"HTTP/2 200 \r\n"}).status(), 200);
  EXPECT_EQ(headOf({"HTTP/1.0 404\r\n"}).status(), 404);
  EXPECT_EQ(headOf({"HTTP/1.0 what\r\n"}).status(), 0);
  EXPECT_EQ(headOf({"HTTP/1.0\r\n"}).status(), 0);
}

TEST(ResponseHeadTest, TheLastHeadCounts) {
  const ResponseHead head = headOf({"HTTP/1.1 302 Found\r\n", "ETag: \"old\"\r\n", "\r\n",
                                    "HTTP/1.1 200 OK\r\n", "Content-Length: 3\r\n", "\r\n"});
  EXPECT_EQ(head.status(), 200);
  EXPECT_EQ(head.etag(), "");
}

TEST(ResponseHeadTest, ATrailerIsPassedOver) {
  const ResponseHead head =
      headOf({"HTTP/1.1 200 OK\r\n", "ETag: \"a\"\r\n", "\r\n", "ETag: \"b\"\r\n"});
  EXPECT_EQ(head.etag(), "\"a\"");
}

TEST(ResponseHeadTest, ABodyInChunksHasNoLength) {
  EXPECT_FALSE(
      headOf({"HTTP/1.1 200 OK\r\n", "Content-Length: 3\r\n", "Transfer-Encoding: chunked\r\n"})
          .bodyLength());
}

TEST(ResponseHeadTest, ALengthThatIsNoNumberIsNone) {
  EXPECT_FALSE(headOf({"HTTP/1.1 200 OK\r\n", "Content-Length: 3, 3\r\n"}).bodyLength());
  EXPECT_FALSE(headOf({"HTTP/1.1 200 OK\r\n"}).bodyLength());
}

TEST(ResponseHeadTest, OnlyIdentityIsNoEncoding) {
  EXPECT_FALSE(headOf({"HTTP/1.1 200 OK\r\n"}).isEncoded());
  EXPECT_FALSE(headOf({"HTTP/1.1 200 OK\r\n", "Content-Encoding: Identity\r\n"}).isEncoded());
  EXPECT_TRUE(headOf({"HTTP/1.1 200 OK\r\n", "Content-Encoding: gzip\r\n"}).isEncoded());
}

TEST(ResponseHeadTest, CountsTheBytesOfAllLines) {
  EXPECT_EQ(headOf({"HTTP/1.1 200 OK\r\n", "a\r\n", "\r\n", "HTTP/1.1 200 OK\r\n"}).size(), 39u);
}

}  // namespace
}  // namespace playerx::transfers
