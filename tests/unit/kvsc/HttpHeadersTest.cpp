// What is made of the bytes of the first read.
#include "kvsc/OpenSsl.h"
#include "tests/unit/kvsc/ExchangeTesting.h"

namespace {

using kvsc::HTTP_ERROR_FAILED;
using kvsc::HTTP_ERROR_NONE;
using support::bareResponse;
using support::okResponse;
using support::Script;

class HttpHeadersTest : public Exchange {
 protected:
  /// A response whose first read brings `first`, and the next one `rest`.
  void answerIn(const std::string& first, const std::string& rest) {
    server_.next(Script().readRequest().sendPieces(first, first.size()).send(rest));
  }
};

TEST_F(HttpHeadersTest, HeadersAndBodyInOneReadAreSeparated) {
  answerIn(okResponse("film"), "");
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseCode(), 200);
  EXPECT_EQ(received_.pieces, (std::vector<std::string>{"film"}));
  EXPECT_EQ(client_.getTotalDownloaded(), 4);
  EXPECT_TRUE(received_.progress.empty());
}

TEST_F(HttpHeadersTest, ABodyInALaterReadIsStreamed) {
  answerIn(okResponse(""), "film");
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "film");
  EXPECT_EQ(received_.progress, (std::vector<double>{4}));
}

TEST_F(HttpHeadersTest, KeptQuirkABlockSplitAtAnyByteIsBody) {
  const std::string headers = bareResponse("404 Not Found", "A: b\r\n");
  const std::string response = headers + "page";
  for (std::size_t split = 1; split < headers.size(); ++split) {
    received_ = Received();
    answerIn(response.substr(0, split), response.substr(split));
    EXPECT_EQ(get(), HTTP_ERROR_NONE) << split;
    EXPECT_EQ(client_.getResponseCode(), 0) << split;
    EXPECT_EQ(client_.getResponseValue("A"), "") << split;
    EXPECT_TRUE(received_.lines.empty()) << split;
    EXPECT_EQ(received_.body(), response) << split;
    EXPECT_EQ(client_.getTotalDownloaded(), static_cast<long>(response.size())) << split;
  }
}

TEST_F(HttpHeadersTest, ACompleteBlockInTheFirstReadIsParsedWhereverTheBodyIsSplit) {
  const std::string headers = bareResponse("200 OK", "A: b\r\n");
  const std::string response = headers + "page";
  for (std::size_t split = headers.size(); split < response.size(); ++split) {
    received_ = Received();
    answerIn(response.substr(0, split), response.substr(split));
    EXPECT_EQ(get(), HTTP_ERROR_NONE) << split;
    EXPECT_EQ(client_.getResponseValue("A"), "b") << split;
    EXPECT_EQ(received_.body(), "page") << split;
  }
}

TEST_F(HttpHeadersTest, KeptQuirkABlockLongerThanARead) {
  const std::string response = okResponse("film", "A: " + std::string(5000, 'x') + "\r\n");
  answer(bareResponse("404 Not Found"));
  get();
  received_ = Received();
  answer(response);
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  EXPECT_EQ(client_.getResponseCode(), 404);
  EXPECT_TRUE(received_.lines.empty());
  EXPECT_EQ(received_.body(), response.substr(0, 4096));
}

TEST_F(HttpHeadersTest, KeptQuirkABlockLongerThanAReadOfAFreshClientIsASuccess) {
  const std::string response = okResponse("film", "A: " + std::string(5000, 'x') + "\r\n");
  answer(response);
  client_.setFileContext(&received_);
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseCode(), 0);
  EXPECT_TRUE(received_.lines.empty());
  EXPECT_EQ(received_.body(), response);
  EXPECT_EQ(received_.file, response);
}

TEST_F(HttpHeadersTest, KeptQuirkABodyInTheFirstReadOfAHeadIsDelivered) {
  answerIn(okResponse("film"), "surplus");
  EXPECT_EQ(head(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "film");
}

TEST_F(HttpHeadersTest, ALargerReadTakesALargerBlock) {
  session_.setDownloadSize(16'384);
  answer(
      okResponse("film", "A: b\r\nB: " + std::string(900, 'x') + "\r\nC: " + std::string(900, 'y') +
                             "\r\nD: " + std::string(900, 'z') + "\r\nE: " + std::string(900, 'x') +
                             "\r\nF: " + std::string(900, 'x') + "\r\n"));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseValue("F"), std::string(900, 'x'));
  EXPECT_EQ(received_.body(), "film");
}

TEST_F(HttpHeadersTest, KeptQuirkALineOf1024BytesIsTwoLines) {
  const std::string line = "A: " + std::string(1100, 'x') + "\r\n";
  answer(okResponse("film", line));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseValue("A"), std::string(1020, 'x'));
  ASSERT_EQ(received_.lines.size(), 5U);
  EXPECT_EQ(received_.lines[2], line.substr(0, 1023));
  EXPECT_EQ(received_.lines[3], line.substr(1023));
}

TEST_F(HttpHeadersTest, ALineOf1023BytesIsOneLine) {
  const std::string line = "A: " + std::string(1018, 'x') + "\r\n";
  answer(okResponse("film", line));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseValue("A"), std::string(1018, 'x'));
  EXPECT_EQ(received_.lines[2], line);
}

TEST_F(HttpHeadersTest, KeptQuirkTheRestOfALongLineMayBeAHeader) {
  answer(okResponse("film", "A: " + std::string(1020, 'x') + "B: hidden\r\n"));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseValue("B"), "hidden");
}

TEST_F(HttpHeadersTest, KeptQuirkAValueThatHoldsHttpIsAStatusLine) {
  answer(bareResponse("200 OK", "Via: 404 HTTP proxy\r\nUpgrade: HTTP\r\n"));
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  EXPECT_EQ(client_.getResponseCode(), 404);
  EXPECT_EQ(client_.getResponseValue("Via"), "");
}

TEST_F(HttpHeadersTest, KeptQuirkWithoutABlankTheFirstCharacterIsLost) {
  answer(okResponse("film", "A:bc\r\n"));
  get();
  EXPECT_EQ(client_.getResponseValue("A"), "c");
}

TEST_F(HttpHeadersTest, ABlockOfBareLineFeedsIsBody) {
  answer("HTTP/1.0 404 Not Found\n\npage");
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "HTTP/1.0 404 Not Found\n\npage");
}

TEST_F(HttpHeadersTest, BytesOfAnyKindAreBodyWithoutABlock) {
  std::string bytes(300, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i);
  answer(bytes);
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), bytes);
}

TEST_F(HttpHeadersTest, ABlockWithoutAStatusLineLeavesTheCode) {
  answer("A: b\r\n\r\nfilm");
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseCode(), 0);
  EXPECT_EQ(client_.getResponseValue("A"), "b");
  EXPECT_EQ(received_.body(), "film");
}

TEST_F(HttpHeadersTest, AZeroByteInALineStaysInIt) {
  answer(okResponse("film", std::string("A: b\0c\r\n", 8)));
  get();
  EXPECT_EQ(client_.getResponseValue("A"), std::string("b\0c", 3));
  EXPECT_EQ(received_.lines[2], std::string("A: b\0c\r\n", 8));
}

TEST_F(HttpHeadersTest, KeptQuirkOfAChunkedBodyTheFirstBytesAreDroppedTheRestIsRaw) {
  answerIn(bareResponse("200 OK", "Transfer-Encoding: chunked\r\n") + "4\r\nfi", "lm\r\n0\r\n\r\n");
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "lm\r\n0\r\n\r\n");
  EXPECT_EQ(client_.getTotalDownloaded(), 14);
}

TEST_F(HttpHeadersTest, AnotherTransferEncodingIsNotChunked) {
  answer(bareResponse("200 OK", "Transfer-Encoding: Chunked\r\n") + "film");
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "film");
}

/// `readHeaders` by itself, on bytes in memory.
class ReadHeadersTest : public Exchange {
 protected:
  int read(const std::string& bytes, bool suppress) {
    const kvsc::BioPtr bio(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())));
    session_.setConnect(bio.get());
    const int result = client_.readHeaders(&session_, suppress);
    session_.setConnect(nullptr);
    return result;
  }
};

TEST_F(ReadHeadersTest, AMovesHeadersAndBodyAreSuppressedOnRequest) {
  for (const char* status : {"301 Moved", "302 Found"}) {
    received_ = Received();
    EXPECT_EQ(read(bareResponse(status, "A: b\r\n") + "page", true), 0);
    EXPECT_EQ(client_.getResponseValue("A"), "b");
    EXPECT_TRUE(received_.lines.empty());
    EXPECT_TRUE(received_.pieces.empty());
    EXPECT_EQ(read(bareResponse(status, "A: b\r\n") + "page", false), 0);
    EXPECT_EQ(received_.lines.size(), 3U);
    EXPECT_EQ(received_.body(), "page");
  }
}

TEST_F(ReadHeadersTest, TheBytesOfTheBodyAddUp) {
  read(okResponse("film"), true);
  read("film", true);
  EXPECT_EQ(client_.getTotalDownloaded(), 8);
}

TEST_F(ReadHeadersTest, BytesWithoutABlockFollowTheEarlierStatusAndEncoding) {
  read(bareResponse("302 Found"), true);
  EXPECT_EQ(read("page", true), 0);
  EXPECT_EQ(received_.body(), "");
  EXPECT_EQ(read("page", false), 0);
  EXPECT_EQ(received_.body(), "page");
  read(bareResponse("200 OK", "Transfer-Encoding: chunked\r\n"), true);
  EXPECT_EQ(read("film", true), 0);
  EXPECT_EQ(received_.body(), "page");
  EXPECT_EQ(client_.getTotalDownloaded(), 12);
}

TEST_F(ReadHeadersTest, AFileGetsTheBodyWhileThereIsAContext) {
  read(okResponse("film"), true);
  EXPECT_EQ(received_.file, "");
  client_.setFileContext(&received_);
  read(okResponse("film"), true);
  EXPECT_EQ(received_.file, "film");
}

TEST_F(ReadHeadersTest, TheEndOfTheStreamIsNoFailure) {
  const kvsc::BioPtr bio(BIO_new(BIO_s_mem()));
  BIO_set_mem_eof_return(bio.get(), 0);
  session_.setConnect(bio.get());
  EXPECT_EQ(client_.readHeaders(&session_, true), 0);
  EXPECT_EQ(session_.getConnect(), bio.get());
  session_.setConnect(nullptr);
}

TEST_F(ReadHeadersTest, AFailedReadClosesTheConnection) {
  BIO* bio = BIO_new(BIO_s_mem());
  session_.setConnect(bio);
  kvsc::raiseLookupError("why");
  EXPECT_EQ(client_.readHeaders(&session_, true), 1);
  EXPECT_EQ(session_.getConnect(), nullptr);
  EXPECT_NE(error().find("why"), std::string::npos);
}

TEST_F(ReadHeadersTest, NoMoreIsReadThanASessionAsksFor) {
  session_.setDownloadSize(10);
  const std::string bytes = "0123456789abcdef";
  EXPECT_EQ(read(bytes, true), 0);
  EXPECT_EQ(received_.body(), "0123456789");
}

}  // namespace
