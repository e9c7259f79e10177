#include "tests/support/Connection.h"

#include <openssl/x509.h>

#include <algorithm>

namespace support {
namespace {

constexpr std::size_t kReadSize = 16384;
constexpr std::string_view kBlankLine = "\r\n\r\n";

std::string subjectOf(SSL* ssl) {
  const X509* peer = SSL_get0_peer_certificate(ssl);
  if (peer == nullptr) return {};
  char* text = X509_NAME_oneline(X509_get_subject_name(peer), nullptr, 0);
  const std::string subject(text);
  OPENSSL_free(text);
  return subject;
}

}  // namespace

Connection::Connection(UniqueFd fd, int stopFd, TlsContext context, Update update)
    : channel_(std::move(fd), stopFd),
      stopFd_(stopFd),
      context_(std::move(context)),
      update_(std::move(update)) {}

int Connection::onServerName(SSL* ssl, int*, void*) {
  auto* self = static_cast<Connection*>(SSL_get_app_data(ssl));
  const char* name = SSL_get_servername(ssl, TLSEXT_NAMETYPE_host_name);
  if (name != nullptr)
    self->update_([name](ConnectionRecord& record) {
      record.serverNameSent = true;
      record.serverName = name;
    });
  return SSL_TLSEXT_ERR_OK;
}

void Connection::watchServerNames(SSL_CTX* context) {
  SSL_CTX_set_tlsext_servername_callback(context, &Connection::onServerName);
}

void Connection::noteHandshake(bool done) {
  SSL* ssl = channel_.ssl();
  update_([&](ConnectionRecord& record) {
    record.handshakeDone = done;
    record.handshakeError = channel_.handshakeError();
    record.clientSubject = subjectOf(ssl);
    if (!done) return;
    record.protocol = SSL_get_version(ssl);
    record.cipher = SSL_get_cipher_name(ssl);
    record.resumed = SSL_session_reused(ssl) == 1;
  });
}

void Connection::startTls() {
  const bool done = channel_.startTls(context_.get(), this);
  noteHandshake(done);
  if (done) return;
  channel_.linger();
  throw PeerGone();
}

void Connection::renegotiate() {
  const bool done = channel_.renegotiate();
  update_([&](ConnectionRecord& record) {
    record.handshakeError = channel_.handshakeError();
    if (!done) return;
    ++record.renegotiations;
    record.clientSubject = subjectOf(channel_.ssl());
  });
  if (!done) throw PeerGone();
}

void Connection::present(const Identity& identity) {
  SSL_use_certificate(channel_.ssl(), identity.certificate.get());
  SSL_use_PrivateKey(channel_.ssl(), identity.key.get());
}

std::string Connection::read(std::size_t size) {
  std::string bytes = channel_.read(size);
  if (!bytes.empty()) update_([&](ConnectionRecord& record) { record.received += bytes; });
  return bytes;
}

const std::string& Connection::readRequest() {
  while (request_.find(kBlankLine) == std::string::npos) {
    const std::string bytes = read(kReadSize);
    if (bytes.empty()) return request_;
    request_ += bytes;
  }
  const std::size_t end = request_.find(kBlankLine) + kBlankLine.size();
  pending_ += request_.substr(end);
  request_.resize(end);
  return request_;
}

std::string Connection::readBytes(std::size_t count) {
  while (pending_.size() < count) {
    const std::string bytes = read(count - pending_.size());
    if (bytes.empty()) break;
    pending_ += bytes;
  }
  const std::string bytes = pending_.substr(0, count);
  pending_.erase(0, count);
  return bytes;
}

void Connection::readToEnd() {
  try {
    while (!read(kReadSize).empty()) {
    }
  } catch (const PeerGone&) {
    update_([](ConnectionRecord& record) { record.lost = true; });
  }
}

void Connection::send(std::string_view bytes) { channel_.write(bytes); }

void Connection::sendPieces(std::string_view bytes, std::size_t size) {
  for (std::size_t at = 0; at < bytes.size(); at += size) {
    channel_.write(bytes.substr(at, size));
    channel_.waitUntilTaken();
  }
}

void Connection::drip(std::string_view bytes, std::chrono::milliseconds interval) {
  for (const char byte : bytes) {
    channel_.write({&byte, 1});
    channel_.waitReadable(stopFd_, static_cast<int>(interval.count()));
  }
}

void Connection::waitFor(const Gate& gate) { channel_.waitReadable(gate.fd(), -1); }

void Connection::stall() { channel_.waitUntilPeerGone(); }

void Connection::endStream() {
  channel_.shutdownWrite();
  readToEnd();
  channel_.closeNow();
}

void Connection::close() {
  channel_.closeNotify();
  endStream();
}

void Connection::truncate() { endStream(); }
void Connection::closeNow() { channel_.closeNow(); }
void Connection::reset() { channel_.reset(); }
void Connection::halfClose() { channel_.shutdownWrite(); }

}  // namespace support
