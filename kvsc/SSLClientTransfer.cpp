// The bytes of an open connection, in both directions.
#include <algorithm>
#include <array>
#include <climits>
#include <string_view>

#include "kvsc/HttpStatus.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLClient.h"
#include "kvsc/SocketBio.h"

namespace kvsc {
namespace {

constexpr int kWriteAttempts = 10;
constexpr Waiter::Milliseconds kWritePause{100};
constexpr std::string_view kBlankLine = "\r\n\r\n";
constexpr int kHeaderLineSize = 1024;
constexpr const char* kNoMemory = "Unable to get memory for the response";

// Whether an `SSL_read` that returned 0 met the end of the stream, with or without a close_notify.
// A fatal alert also reads as 0, but is a refusal: under TLS 1.3 a server that rejects the client's
// certificate says so only here.
bool isEndOfStream(SSL* ssl) {
  return SSL_get_error(ssl, 0) != SSL_ERROR_SSL ||
         ERR_GET_REASON(ERR_peek_error()) == SSL_R_UNEXPECTED_EOF_WHILE_READING;
}

int readEncrypted(SSL* ssl, char* buffer, int size) {
  ERR_clear_error();
  const int count = SSL_read(ssl, buffer, size);
  return count == 0 && !isEndOfStream(ssl) ? -1 : count;
}

int readSome(SSLSession* session, char* buffer, int size) {
  return session->getSsl() != nullptr ? readEncrypted(session->getSsl(), buffer, size)
                                      : BIO_read(session->getConnect(), buffer, size);
}

int readSize(const SSLSession& session) {
  return static_cast<int>(std::min<unsigned>(session.getDownloadSize(), INT_MAX));
}

// The outcome of the waits of the session's connection; a BIO of another kind has no waits.
Waiter::Outcome waitOutcome(const SSLSession& session) {
  const Waiter* waiter = waiterOf(session.getConnect());
  return waiter != nullptr ? waiter->outcome() : Waiter::Outcome::kReady;
}

HttpErrorIds failureOf(const SSLSession& session) {
  return session.isCancelled() ? HTTP_ERROR_CANCELLED : HTTP_ERROR_FAILED;
}

// Returns whether the whole time has passed.
bool pause(SSLSession* session, Waiter::Milliseconds length) {
  Waiter unlimited(session->getCancelToken(), Waiter::Milliseconds(0), Waiter::Milliseconds(0));
  Waiter* waiter = waiterOf(session->getConnect());
  return (waiter != nullptr ? waiter : &unlimited)->pause(length) == Waiter::Outcome::kReady;
}

// A peer sends an alert before it ends the stream; a write that finds the stream ended has not read
// it.
void readAlert(SSL* ssl) {
  std::array<char, 256> unused{};
  SSL_read(ssl, unused.data(), static_cast<int>(unused.size()));
}

}  // namespace

int SSLClient::writeData(SSLSession* session, unsigned char* data, int length,
                         HttpErrorIds* result) {
  const bool written = session->getSsl() != nullptr ? writeEncrypted(session, data, length)
                                                    : writePlain(session, data, length);
  const HttpErrorIds outcome = written ? HTTP_ERROR_NONE : failureOf(*session);
  if (!written) releaseThreadErrors();
  if (!written && result != nullptr) *result = outcome;
  return outcome;
}

bool SSLClient::writeEncrypted(SSLSession* session, const unsigned char* data, int length) {
  if (SSL_write(session->getSsl(), data, length) > 0) return true;
  readAlert(session->getSsl());
  return false;
}

// An attempt goes on where the one before was cut short: what was sent must not be sent again.
bool SSLClient::writePlain(SSLSession* session, const unsigned char* data, int length) {
  int sent = 0;
  for (int attempt = 1;; ++attempt) {
    if (BIO_write(session->getConnect(), data + sent, length - sent) > 0) return true;
    sent += bytesSentBy(session->getConnect());
    if (attempt == kWriteAttempts || !pause(session, kWritePause)) return false;
    ERR_clear_error();
  }
}

int SSLClient::readHeaders(SSLSession* session, bool suppressRedirectHeaders) {
  return guarded(session, [&] { return readResponse(session, suppressRedirectHeaders); });
}

HttpErrorIds SSLClient::readResponse(SSLSession* session, bool suppressRedirectHeaders) {
  if (!growBuffer(*session)) return failed(kNoMemory);
  const int count = readSome(session, buffer_.GetData(), readSize(*session));
  if (count < 0) return readFailure(session);
  if (count == 0) {
    releaseThreadErrors();
    return HTTP_ERROR_NONE;
  }
  const std::string_view bytes(buffer_.GetData(), static_cast<std::size_t>(count));
  // Headers that do not end within the first read count as body.
  const std::size_t blankLine = bytes.find(kBlankLine);
  const std::size_t headers =
      blankLine != std::string_view::npos ? blankLine + kBlankLine.size() : 0;
  if (headers > 0 && !readHeaderBlock(bytes.substr(0, headers), suppressRedirectHeaders)) {
    return failed(kNoMemory);
  }
  deliverFirstBody(buffer_.GetData() + headers, count - static_cast<int>(headers),
                   suppressRedirectHeaders);
  return HTTP_ERROR_NONE;
}

bool SSLClient::readHeaderBlock(std::string_view block, bool suppressRedirectHeaders) {
  const BioPtr lines(BIO_new_mem_buf(block.data(), static_cast<int>(block.size())));
  if (!lines) return false;
  std::array<char, kHeaderLineSize> line{};
  int length = 0;
  while ((length = BIO_gets(lines.get(), line.data(), kHeaderLineSize)) > 0) {
    parseHeaderLine(line.data(), length);
    if (headerCallback_ == nullptr) continue;
    if (suppressRedirectHeaders && isMoved(getResponseCode())) continue;
    headerCallback_(line.data(), 1, static_cast<std::size_t>(length), headerContext_);
  }
  return true;
}

// The part of the body that came with the headers.
void SSLClient::deliverFirstBody(char* data, int length, bool suppressRedirectHeaders) {
  if (length <= 0) return;
  addDownloaded(length);
  // Chunk framing is not decoded; the part that came with the headers is dropped.
  if (getResponseValue("Transfer-Encoding") == "chunked") return;
  if (!(suppressRedirectHeaders && isMoved(getResponseCode()))) deliver(data, length);
}

void SSLClient::deliver(char* data, int length) {
  const auto count = static_cast<std::size_t>(length);
  if (bodyCallback_ != nullptr) bodyCallback_(data, 1, count, bodyContext_);
  if (fileWriteCallback_ != nullptr && fileContext_ != nullptr) {
    fileWriteCallback_(data, 1, count, fileContext_);
  }
}

void SSLClient::readData(SSLSession* session, HttpErrorIds* result) {
  const HttpErrorIds outcome = guarded(session, [&] { return streamBody(session); });
  if (result != nullptr) *result = outcome;
}

HttpErrorIds SSLClient::streamBody(SSLSession* session) {
  for (;;) {
    // Checked each time: a callback may have changed the session's read size.
    if (!growBuffer(*session)) return failed(kNoMemory);
    if (Waiter* waiter = waiterOf(session->getConnect())) waiter->restart();
    const int count = readSome(session, buffer_.GetData(), readSize(*session));
    if (count > 0 && !deliverBody(buffer_.GetData(), count)) {
      close(session);
      return HTTP_ERROR_CANCELLED;
    }
    const int sleep = session->getDownloadLoopSleep();
    if (sleep > 0) pause(session, Waiter::Milliseconds(sleep));
    if (count <= 0) return endOfBody(session, count);
  }
}

// Returns false when the progress callback cancels.
bool SSLClient::deliverBody(char* data, int length) {
  addDownloaded(length);
  deliver(data, length);
  if (progressCallback_ == nullptr) return true;
  const auto total = static_cast<double>(getTotalDownloaded());
  return progressCallback_(progressContext_, 0.0, total, 0.0, 0.0) != -1;
}

HttpErrorIds SSLClient::endOfBody(SSLSession* session, int count) {
  // Over TLS a stream that breaks off counts as one that ends, unless one of our waits failed.
  const bool broken = count < 0 && session->getSsl() == nullptr;
  if (waitOutcome(*session) != Waiter::Outcome::kReady) return readFailure(session);
  releaseThreadErrors();
  return broken ? HTTP_ERROR_FAILED : outcomeOfStatus(getResponseCode());
}

HttpErrorIds SSLClient::readFailure(SSLSession* session) {
  const HttpErrorIds failure = failureOf(*session);
  collectErrors();
  close(session);
  return failure;
}

bool SSLClient::growBuffer(const SSLSession& session) {
  const unsigned size = std::max(session.getDownloadSize(), 1U);
  return buffer_.GetSize() >= size || buffer_.ReAlloc(size) == 0;
}

}  // namespace kvsc
