// How a body is streamed, and a request is written.
#include <cerrno>
#include <chrono>
#include <memory>

#include "kvsc/CancelToken.h"
#include "kvsc/OpenSsl.h"
#include "tests/unit/kvsc/ExchangeTesting.h"

namespace {

using kvsc::HTTP_ERROR_CANCELLED;
using kvsc::HTTP_ERROR_FAILED;
using kvsc::HTTP_ERROR_NONE;
using kvsc::HTTP_ERROR_NOT_MODIFIED;
using std::chrono::milliseconds;
using support::bareResponse;
using support::okResponse;
using support::Script;
using support::ScriptedServer;

const std::string kHeaders = "HTTP/1.0 200 OK\r\n\r\n";

/// The answer of a server: its headers, then each piece in a read of its own.
Script inPieces(const std::vector<std::string>& pieces) {
  Script script;
  script.readRequest().sendPieces(kHeaders, kHeaders.size());
  for (const std::string& piece : pieces) script.sendPieces(piece, piece.size());
  return script;
}

class HttpBodyTest : public Exchange {};

TEST_F(HttpBodyTest, EachReadIsAPieceWithProgress) {
  server_.next(inPieces({"one", "three", "x"}));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.pieces, (std::vector<std::string>{"one", "three", "x"}));
  EXPECT_EQ(received_.progress, (std::vector<double>{3, 8, 9}));
  EXPECT_EQ(client_.getTotalDownloaded(), 9);
}

TEST_F(HttpBodyTest, APieceIsAtMostAsLongAsTheSessionSays) {
  for (const unsigned size : {1U, 7U, 4096U, 65'536U}) {
    received_ = Received();
    session_.setDownloadSize(size);
    const std::string body(20'000, 'x');
    server_.next(inPieces({body.substr(0, 200), body.substr(200, size < 100 ? 0 : 19'800)}));
    get();
    for (const std::string& piece : received_.pieces) EXPECT_LE(piece.size(), size);
  }
}

TEST_F(HttpBodyTest, AReadSizeOf0ReadsNothing) {
  session_.setDownloadSize(0);
  answer(okResponse("film"));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "");
  EXPECT_EQ(client_.getResponseCode(), 0);
}

TEST_F(HttpBodyTest, ACallbackMayAskForLongerPieces) {
  struct Growing {
    kvsc::SSLSession& session;
    std::string body;
  } growing{session_, {}};
  client_.setBodyContext(&growing);
  client_.setBodyCallback([](void* data, std::size_t, std::size_t count, void* context) {
    auto& self = *static_cast<Growing*>(context);
    self.session.setDownloadSize(65'536);
    self.body.append(static_cast<char*>(data), count);
    return count;
  });
  const std::string rest(40'000, 'x');
  server_.next(inPieces({"one"}).send(rest));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(growing.body, "one" + rest);
}

TEST_F(HttpBodyTest, ALongBodyArrivesWhole) {
  std::string body(3'000'000, '\0');
  for (std::size_t i = 0; i < body.size(); ++i) body[i] = static_cast<char>(i * 31 >> 3);
  answer(okResponse(body));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), body);
  EXPECT_EQ(client_.getTotalDownloaded(), 3'000'000);
}

TEST_F(HttpBodyTest, AFileGetsTheBodyWhileThereIsAContext) {
  server_.next(inPieces({"one", "two"}));
  client_.setFileContext(&received_);
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.file, "onetwo");
  server_.next(inPieces({"one", "two"}));
  client_.setFileContext(nullptr);
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.file, "onetwo");
}

TEST_F(HttpBodyTest, ACancelOnTheFirstPieceComesAfterItsDelivery) {
  server_.next(inPieces({"one"}).readToEnd());
  client_.setFileContext(&received_);
  received_.cancelAt = 0;
  EXPECT_EQ(get(), HTTP_ERROR_CANCELLED);
  EXPECT_EQ(received_.body(), "one");
  EXPECT_EQ(received_.file, "one");
  EXPECT_EQ(session_.getConnect(), nullptr);
  EXPECT_TRUE(server_.ended().ended);
}

TEST_F(HttpBodyTest, ACancelLaterEndsThere) {
  server_.next(inPieces({"one", "two", "three"}));
  received_.cancelAt = 1;
  EXPECT_EQ(get(), HTTP_ERROR_CANCELLED);
  EXPECT_EQ(received_.body(), "onetwo");
}

TEST_F(HttpBodyTest, OnlyMinusOneCancels) {
  server_.next(inPieces({"one", "two"}));
  client_.setProgressCallback([](void*, double, double, double, double) { return 7; });
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  client_.setProgressCallback([](void*, double, double, double, double) { return -2; });
  server_.next(inPieces({"one", "two"}));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
}

TEST_F(HttpBodyTest, TheThrottlePausesAfterEveryRead) {
  constexpr milliseconds kPause{40};
  session_.setDownloadLoopSleep(static_cast<int>(kPause.count()));
  server_.next(inPieces({"one", "two"}));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 3 * kPause);
}

TEST_F(HttpBodyTest, ANegativeThrottleMeansNoThrottle) {
  session_.setDownloadLoopSleep(-1'000'000);
  server_.next(inPieces({"one", "two"}));
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "onetwo");
}

TEST_F(HttpBodyTest, AResetInTheBodyIsAFailure) {
  server_.next(inPieces({"one"}).reset());
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  EXPECT_EQ(received_.body(), "one");
  EXPECT_EQ(session_.getConnect(), nullptr);
}

TEST_F(HttpBodyTest, ACallbackThatThrowsIsAFailure) {
  server_.next(inPieces({"one"}));
  client_.setBodyCallback([](void*, std::size_t, std::size_t, void*) -> std::size_t { throw 1; });
  EXPECT_EQ(get(), HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), "SSLClient: the exchange ended by an exception");
  EXPECT_EQ(session_.getConnect(), nullptr);
}

/// The same body under TLS.
class TlsBodyTest : public Exchange {
 protected:
  kvsc::HttpErrorIds getFrom(const Script& script) {
    secure_.next(script);
    kvsc::HttpErrorIds result = HTTP_ERROR_FAILED;
    client_.httpGet(secure_.url(), 0, &result, &session_, "", "", kvsc::SSLV3);
    return result;
  }

  ScriptedServer secure_{support::TlsSettings{.identity = support::pki::selfSigned()}};
};

TEST_F(TlsBodyTest, EachReadIsAPieceWithProgress) {
  EXPECT_EQ(getFrom(inPieces({"one", "three"})), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.pieces, (std::vector<std::string>{"one", "three"}));
  EXPECT_EQ(received_.progress, (std::vector<double>{3, 8}));
}

TEST_F(TlsBodyTest, WhatTheLibraryHoldsBackIsReadWithoutWaiting) {
  session_.setDownloadSize(100);
  const std::string body(1000, 'x');
  EXPECT_EQ(getFrom(inPieces({body})), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.pieces.size(), 10U);
  EXPECT_EQ(received_.body(), body);
}

TEST_F(TlsBodyTest, KeptQuirkAStreamThatIsCutOffEndsNormally) {
  EXPECT_EQ(getFrom(inPieces({"one"}).truncate()), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "one");
  EXPECT_EQ(ERR_peek_error(), 0UL);
}

TEST_F(TlsBodyTest, KeptQuirkAStreamThatIsResetEndsNormally) {
  EXPECT_EQ(getFrom(inPieces({"one"}).reset()), HTTP_ERROR_NONE);
  EXPECT_EQ(received_.body(), "one");
}

TEST_F(TlsBodyTest, AServerThatSaysNothingIsNoFailure) {
  EXPECT_EQ(getFrom(Script().readRequest().close()), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseCode(), 0);
  EXPECT_EQ(error(), "");
}

TEST_F(TlsBodyTest, AServerThatCutsOffBeforeTheHeadersIsNoFailure) {
  EXPECT_EQ(getFrom(Script().readRequest().truncate()), HTTP_ERROR_NONE);
  EXPECT_EQ(client_.getResponseCode(), 0);
  EXPECT_EQ(error(), "");
  EXPECT_EQ(ERR_peek_error(), 0UL);
}

TEST_F(TlsBodyTest, AResetBeforeTheHeadersIsAFailure) {
  EXPECT_EQ(getFrom(Script().readRequest().reset()), HTTP_ERROR_FAILED);
  EXPECT_EQ(session_.getSsl(), nullptr);
  EXPECT_EQ(session_.getConnect(), nullptr);
}

TEST_F(TlsBodyTest, ACancelOnTheFirstPieceEndsIt) {
  received_.cancelAt = 0;
  EXPECT_EQ(getFrom(inPieces({"one", "two"})), HTTP_ERROR_CANCELLED);
  EXPECT_EQ(received_.body(), "one");
  EXPECT_EQ(session_.getSsl(), nullptr);
  EXPECT_EQ(session_.getSslContext(), nullptr);
}

/// `readData` by itself, on bytes in memory.
class ReadDataTest : public Exchange {
 protected:
  kvsc::HttpErrorIds readAfter(const std::string& status, const std::string& bytes) {
    read(status);
    const kvsc::BioPtr bio(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())));
    BIO_set_mem_eof_return(bio.get(), 0);
    session_.setConnect(bio.get());
    kvsc::HttpErrorIds result = HTTP_ERROR_FAILED;
    client_.readData(&session_, &result);
    session_.setConnect(nullptr);
    return result;
  }

  void read(const std::string& status) {
    std::string line = "HTTP/1.0 " + status + "\r\n";
    client_.parseHeaderLine(line.data(), static_cast<int>(line.size()));
  }
};

TEST_F(ReadDataTest, TheStatusDecidesAtTheEnd) {
  EXPECT_EQ(readAfter("200 OK", "film"), HTTP_ERROR_NONE);
  EXPECT_EQ(readAfter("299 Fine", ""), HTTP_ERROR_NONE);
  EXPECT_EQ(readAfter("304 Not Modified", "film"), HTTP_ERROR_NOT_MODIFIED);
  EXPECT_EQ(readAfter("404 Not Found", "page"), HTTP_ERROR_FAILED);
  EXPECT_EQ(received_.body(), "filmfilmpage");
}

TEST_F(ReadDataTest, AFailedReadIsAFailureWhateverTheStatus) {
  read("200 OK");
  session_.setConnect(BIO_new(BIO_s_mem()));
  kvsc::HttpErrorIds result = HTTP_ERROR_NONE;
  ERR_raise(ERR_LIB_SYS, ECONNRESET);
  testing::internal::CaptureStdout();
  client_.readData(&session_, &result);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(result, HTTP_ERROR_FAILED);
  EXPECT_EQ(error(), "");
  EXPECT_EQ(ERR_peek_error(), 0u);
  // The connection is left to the caller.
  EXPECT_NE(session_.getConnect(), nullptr);
  client_.close(&session_);
}

TEST_F(ReadDataTest, ACancelClosesTheSession) {
  read("200 OK");
  session_.setConnect(BIO_new_mem_buf("film", 4));
  received_.cancelAt = 0;
  kvsc::HttpErrorIds result = HTTP_ERROR_NONE;
  client_.readData(&session_, &result);
  EXPECT_EQ(result, HTTP_ERROR_CANCELLED);
  EXPECT_EQ(received_.body(), "film");
  EXPECT_EQ(session_.getConnect(), nullptr);
}

/// A BIO that fails a number of times, then takes a number of bytes.
class StubbornBio {
 public:
  StubbornBio(int failures, int taken) : failures_(failures), taken_(taken) {
    BIO_meth_set_write(method_.get(), [](BIO* bio, const char*, int length) {
      auto* self = static_cast<StubbornBio*>(BIO_get_data(bio));
      ++self->attempts_;
      if (self->attempts_ > self->failures_) return std::min(length, self->taken_);
      ERR_raise(ERR_LIB_SYS, EPIPE);
      return -1;
    });
    bio_.reset(BIO_new(method_.get()));
    BIO_set_data(bio_.get(), this);
    BIO_set_init(bio_.get(), 1);
  }

  BIO* get() const { return bio_.get(); }
  int attempts() const { return attempts_; }

 private:
  struct MethodFree {
    void operator()(BIO_METHOD* method) const { BIO_meth_free(method); }
  };

  const int failures_;
  const int taken_;
  int attempts_ = 0;
  const std::unique_ptr<BIO_METHOD, MethodFree> method_{
      BIO_meth_new(BIO_TYPE_SOURCE_SINK, "stubborn")};
  kvsc::BioPtr bio_;
};

class WriteDataTest : public Exchange {
 protected:
  kvsc::HttpErrorIds writeTo(const StubbornBio& bio) {
    unsigned char data[] = "request";
    session_.setConnect(bio.get());
    kvsc::HttpErrorIds result = HTTP_ERROR_NONE;
    const int returned = client_.writeData(&session_, data, 7, &result);
    session_.setConnect(nullptr);
    EXPECT_EQ(returned, result);
    return result;
  }
};

TEST_F(WriteDataTest, OneWriteIsEnough) {
  const StubbornBio bio(0, 100);
  EXPECT_EQ(writeTo(bio), HTTP_ERROR_NONE);
  EXPECT_EQ(bio.attempts(), 1);
}

TEST_F(WriteDataTest, KeptQuirkAShortWriteIsASuccess) {
  const StubbornBio bio(0, 3);
  EXPECT_EQ(writeTo(bio), HTTP_ERROR_NONE);
  EXPECT_EQ(bio.attempts(), 1);
}

TEST_F(WriteDataTest, AFailedWriteIsTriedAgain) {
  const StubbornBio bio(2, 100);
  EXPECT_EQ(writeTo(bio), HTTP_ERROR_NONE);
  EXPECT_EQ(bio.attempts(), 3);
  EXPECT_EQ(ERR_peek_error(), 0u);
}

TEST_F(WriteDataTest, TheTenthFailureIsTheLastAboutASecondLater) {
  const StubbornBio bio(1000, 100);
  testing::internal::CaptureStdout();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(writeTo(bio), HTTP_ERROR_FAILED);
  EXPECT_EQ(bio.attempts(), 10);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(900));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "it prints nothing";
  EXPECT_EQ(error(), "") << "it leaves the text";
  EXPECT_EQ(ERR_peek_error(), 0u);
}

TEST_F(WriteDataTest, AWriteOfNothingIsAFailure) {
  const StubbornBio bio(0, 0);
  EXPECT_EQ(writeTo(bio), HTTP_ERROR_FAILED);
  EXPECT_EQ(bio.attempts(), 10);
}

TEST_F(WriteDataTest, ACancelEndsThePausesBetween) {
  kvsc::CancelToken token;
  session_.setCancelToken(&token);
  token.cancel();
  const StubbornBio bio(1000, 100);
  EXPECT_EQ(writeTo(bio), HTTP_ERROR_CANCELLED);
  EXPECT_EQ(bio.attempts(), 1);
}

}  // namespace
