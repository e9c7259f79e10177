#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <thread>

#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"
#include "tests/support/TestPki.h"

namespace kvsc {
namespace {

namespace pki = support::pki;
using Errors = std::vector<std::unique_ptr<SSLError>>;

Errors owned(const std::vector<SSLError*>& errors) { return Errors(errors.begin(), errors.end()); }

std::string parsed(SSLConnect& connect, std::string line) {
  connect.parseHeaderLine(line.data(), static_cast<int>(line.size()));
  return line;
}

TEST(SSLConnectTest, AFreshConnectionIsEmpty) {
  const SSLConnect connect("LOCALHOST");
  EXPECT_EQ(connect.getErrorString(), "");
  EXPECT_EQ(connect.getResponseCode(), 0);
  EXPECT_EQ(connect.getTotalDownloaded(), 0);
  EXPECT_EQ(connect.getErrorCallback(), nullptr);
  EXPECT_EQ(connect.getResponseValue("Location"), "");
}

TEST(SSLConnectTest, EveryEnvironmentHasCredentials) {
  for (const char* environment : {"", "PRODUCTION", "JTEST", "ITEST", "ETEST", "LOCALHOST"}) {
    EXPECT_EQ(SSLConnect(environment).getErrorString(), "") << environment;
  }
}

TEST(SSLConnectTest, InitStartsTheCountAnewAndNothingElse) {
  SSLConnect connect("LOCALHOST");
  connect.setTotalDownloaded(5);
  connect.setErrorString("text");
  parsed(connect, "HTTP/1.0 404 Not Found\r\n");
  connect.init();
  EXPECT_EQ(connect.getTotalDownloaded(), 0);
  EXPECT_EQ(connect.getErrorString(), "text");
  EXPECT_EQ(connect.getResponseCode(), 404);
}

TEST(SSLConnectTest, TheByteCountHas32Bits) {
  SSLConnect connect("LOCALHOST");
  connect.setTotalDownloaded(2'147'483'647);
  EXPECT_EQ(connect.getTotalDownloaded(), 2'147'483'647);
  connect.setTotalDownloaded(2'147'483'648);
  EXPECT_EQ(connect.getTotalDownloaded(), -2'147'483'648);
}

TEST(SSLConnectTest, LiveConnectionsAreCounted) {
  const int before = SSLConnect::getConnectionCount();
  {
    const SSLConnect one("LOCALHOST");
    const SSLConnect two("LOCALHOST");
    EXPECT_EQ(SSLConnect::getConnectionCount(), before + 2);
  }
  EXPECT_EQ(SSLConnect::getConnectionCount(), before);
}

TEST(SSLConnectTest, TheCountIsRightAcrossThreads) {
  const int before = SSLConnect::getConnectionCount();
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) threads.emplace_back([] { SSLConnect("LOCALHOST"); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(SSLConnect::getConnectionCount(), before);
}

TEST(SSLConnectTest, TheEndOfAConnectionLeavesNoErrorOfItsThread) {
  auto connect = std::make_unique<SSLConnect>("LOCALHOST");
  raiseLookupError("left behind");
  connect.reset();
  EXPECT_EQ(ERR_peek_error(), 0UL);
}

TEST(SSLConnectTest, CloseFreesTheContextAndNothingElse) {
  SSLConnect connect("LOCALHOST");
  SSLSession session;
  const BioPtr bio(BIO_new(BIO_s_mem()));
  session.setConnect(bio.get());
  session.setSslContext(newClientContext(SSLV3).release());
  connect.close(&session);
  EXPECT_EQ(session.getSslContext(), nullptr);
  EXPECT_EQ(session.getConnect(), bio.get());
  connect.close(&session);
}

/// Makes BIOs that tell when they are freed.
class CountedBios {
 public:
  BIO* make(const BIO_METHOD* method) {
    BIO* const bio = BIO_new(method);
    BIO_set_callback_ex(bio, tell);
    BIO_set_callback_arg(bio, reinterpret_cast<char*>(&freed_));
    return bio;
  }

  int freed() const { return freed_; }

 private:
  static long tell(BIO* bio, int operation, const char*, std::size_t, int, long, int result,
                   std::size_t*) {
    if (operation == BIO_CB_FREE) ++*reinterpret_cast<int*>(BIO_get_callback_arg(bio));
    return result;
  }

  int freed_ = 0;
};

TEST(SSLConnectTest, AConnectionIsFreedWithItsWholeChain) {
  SSLConnect connect("LOCALHOST");
  CountedBios bios;
  connect.freeConnection(nullptr, true);
  connect.freeConnection(BIO_push(bios.make(BIO_f_buffer()), bios.make(BIO_s_mem())), false);
  EXPECT_EQ(bios.freed(), 2);
  connect.freeConnection(bios.make(BIO_s_mem()), true);
  EXPECT_EQ(bios.freed(), 3);
}

// A memory BIO that is asked for its descriptor answers 0, which is standard input.
TEST(SSLConnectTest, AConnectionWithoutADescriptorShutsNothingDown) {
  std::array<int, 2> pair{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()), 0);
  const int input = ::dup(STDIN_FILENO);
  ::dup2(pair[0], STDIN_FILENO);
  SSLConnect("LOCALHOST").freeConnection(BIO_new(BIO_s_mem()), true);
  EXPECT_EQ(::send(STDIN_FILENO, "x", 1, MSG_NOSIGNAL), 1);
  ::dup2(input, STDIN_FILENO);
  for (const int fd : {input, pair[0], pair[1]}) ::close(fd);
}

TEST(PassPhraseTest, ItIsCopiedAsFarAsItFits) {
  std::array<char, 8> buffer{};
  char phrase[] = "secret";
  EXPECT_EQ(SSLConnect::pem_passwd_cb(buffer.data(), 8, 0, phrase), 6);
  EXPECT_STREQ(buffer.data(), "secret");
  EXPECT_EQ(SSLConnect::pem_passwd_cb(buffer.data(), 4, 1, phrase), 3);
  EXPECT_STREQ(buffer.data(), "sec");
  EXPECT_EQ(SSLConnect::pem_passwd_cb(buffer.data(), 1, 0, phrase), 0);
}

TEST(PassPhraseTest, WithoutOneTheTerminalIsNotAsked) {
  std::array<char, 8> buffer{};
  EXPECT_EQ(SSLConnect::pem_passwd_cb(buffer.data(), 8, 0, nullptr), -1);
  char phrase[] = "secret";
  EXPECT_EQ(SSLConnect::pem_passwd_cb(buffer.data(), 0, 0, phrase), -1);
  EXPECT_EQ(SSLConnect::pem_passwd_cb(nullptr, 8, 0, phrase), -1);
}

/// Three errors in the queue, one with data.
class CheckErrorsTest : public testing::Test {
 protected:
  CheckErrorsTest() {
    ERR_clear_error();
    connect_.setErrorString("before");
  }

  void raiseTwo() {
    raiseSystemError(ECONNREFUSED, "dialling");
    ERR_new();
    ERR_set_debug("some.c", 42, nullptr);
    ERR_set_error(ERR_LIB_SSL, SSL_R_CERTIFICATE_VERIFY_FAILED, nullptr);
  }

  SSLConnect connect_{"LOCALHOST"};
};

TEST_F(CheckErrorsTest, AnEmptyQueueChangesNothing) {
  EXPECT_TRUE(connect_.checkErrors().empty());
  EXPECT_EQ(connect_.getErrorString(), "before");
}

TEST_F(CheckErrorsTest, EachErrorIsHandedOutInItsOrder) {
  raiseTwo();
  const Errors errors = owned(connect_.checkErrors());
  ASSERT_EQ(errors.size(), 2U);
  EXPECT_EQ(errors[0]->getData(), "dialling");
  EXPECT_EQ(errors[0]->getFileName(), "kvsc");
  EXPECT_EQ(errors[0]->getHumanReadable(), "error:8000006F:system library::Connection refused");
  EXPECT_EQ(errors[1]->getData(), "");
  EXPECT_EQ(errors[1]->getFileName(), "some.c");
  EXPECT_EQ(errors[1]->getLineNumber(), 42);
  EXPECT_EQ(errors[1]->getFlags(), 0);
  EXPECT_EQ(errors[1]->getHumanReadable(),
            "error:0A000086:SSL routines::certificate verify failed");
}

TEST_F(CheckErrorsTest, TheQueueIsEmptyAfterwards) {
  raiseTwo();
  owned(connect_.checkErrors());
  EXPECT_EQ(ERR_peek_error(), 0UL);
}

TEST_F(CheckErrorsTest, TheirSummaryFollowsTheTextThatWasThere) {
  raiseTwo();
  owned(connect_.checkErrors());
  EXPECT_EQ(connect_.getErrorString(),
            "before\n dialling error:8000006F:system library::Connection refused\n"
            "  error:0A000086:SSL routines::certificate verify failed\n");
}

TEST_F(CheckErrorsTest, EachIsPrintedInTwoLines) {
  raiseTwo();
  testing::internal::CaptureStdout();
  owned(connect_.checkErrors());
  // The flags are the library's own account of its memory.
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              testing::MatchesRegex(
                  "error code: 2147483759 in kvsc line: 0 data: dialling flags: [0-9]+\n"
                  "human readable: error:8000006F:system library::Connection refused\n"
                  "error code: 167772294 in some.c line: 42 data:  flags: [0-9]+\n"
                  "human readable: error:0A000086:SSL routines::certificate verify failed\n"));
}

/// Every field of a header line is tested where it is read; here is what the connection keeps.
class ResponseHeadersTest : public testing::Test {
 protected:
  void parse(const std::string& line) { parsed(connect_, line); }
  std::string value(const std::string& name) { return connect_.getResponseValue(name); }

  SSLConnect connect_{"LOCALHOST"};
};

TEST_F(ResponseHeadersTest, AStatusLineSetsTheCode) {
  parse("HTTP/1.1 304 Not Modified\r\n");
  EXPECT_EQ(connect_.getResponseCode(), 304);
}

TEST_F(ResponseHeadersTest, AStatusLineWithoutANumberLeavesTheCode) {
  parse("HTTP/1.1 200 OK\r\n");
  parse("Server: the HTTP server\r\n");
  EXPECT_EQ(connect_.getResponseCode(), 200);
  EXPECT_EQ(value("Server"), "");
}

TEST_F(ResponseHeadersTest, NamesAreComparedWithTheirCase) {
  parse("Content-Length: 42\r\n");
  EXPECT_EQ(value("Content-Length"), "42");
  EXPECT_EQ(value("content-length"), "");
}

TEST_F(ResponseHeadersTest, ALaterValueReplacesAnEarlierOne) {
  parse("A: one\r\n");
  parse("A: two\r\n");
  EXPECT_EQ(value("A"), "two");
}

TEST_F(ResponseHeadersTest, AMissingLineIsIgnored) {
  connect_.parseHeaderLine(nullptr, 5);
  char line[] = "A: b";
  connect_.parseHeaderLine(line, 0);
  connect_.parseHeaderLine(line, -1);
  EXPECT_EQ(value("A"), "");
}

TEST_F(ResponseHeadersTest, OnlyTheGivenLengthIsRead) {
  char line[] = "A: bcd";
  connect_.parseHeaderLine(line, 5);
  EXPECT_EQ(value("A"), "bc");
}

TEST_F(ResponseHeadersTest, ATimeIsConverted) {
  EXPECT_EQ(connect_.convertHttpTime("no time"), 0);
  EXPECT_NE(connect_.convertHttpTime("Tue, 05 Mar 2024 10:00:00 GMT"), 0);
}

/// Reads the PEM of a key with the client's own reader.
class RsaKeyTest : public testing::Test {
 protected:
  KeyPtr read(const std::string& pem, const char* password = nullptr) {
    const BioPtr bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    KeyPtr key = readRsaKey(bio.get(), SSLConnect::pem_passwd_cb, const_cast<char*>(password));
    ERR_clear_error();
    return key;
  }

  const support::Identity rsa_ = pki::selfSigned({.key = support::KeyKind::kRsa});
  const support::Identity ec_ = pki::selfSigned({.key = support::KeyKind::kEc});
};

TEST_F(RsaKeyTest, AnRsaKeyIsRead) { EXPECT_NE(read(rsa_.keyPem()), nullptr); }

TEST_F(RsaKeyTest, AnEllipticCurveKeyIsRefused) { EXPECT_EQ(read(ec_.keyPem()), nullptr); }

TEST_F(RsaKeyTest, AnEncryptedKeyOpensWithItsPassPhraseAlone) {
  const std::string pem = rsa_.encryptedKeyPem("right");
  EXPECT_NE(read(pem, "right"), nullptr);
  EXPECT_EQ(read(pem, "wrong"), nullptr);
  EXPECT_EQ(read(pem), nullptr);
}

}  // namespace
}  // namespace kvsc
