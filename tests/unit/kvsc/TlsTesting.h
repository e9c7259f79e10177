#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <thread>

#include "kvsc/CancelToken.h"
#include "kvsc/Dialer.h"
#include "kvsc/HttpErrorIds.h"
#include "kvsc/SSLClient.h"
#include "kvsc/SSLSession.h"
#include "tests/support/TestPki.h"
#include "tests/support/TlsChannel.h"

/// What one exchange came to, for comparing.
struct Outcome {
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
  std::string text;

  bool operator==(const Outcome& other) const {
    return result == other.result && text == other.text;
  }
};
std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

/// What a handshake leaves that has failed for this error of the library, "code:library::reason".
inline std::string handshakeText(const std::string& error) {
  return "SSL_ERROR_SSL\n  error:" + error + "\n";
}

/// The text that every server certificate leaves which the library has refused.
inline const std::string kVerifyFailed =
    handshakeText("0A000086:SSL routines::certificate verify failed");

inline const Outcome kSuccess{kvsc::HTTP_ERROR_NONE, ""};
inline const Outcome kRefused{kvsc::HTTP_ERROR_CERTIFICATE, kVerifyFailed};

/// A secure client with its session, set to check certificates, that keeps the last body.
class CheckingClient {
 public:
  explicit CheckingClient(const std::string& environment = "LOCALHOST");

  Outcome get(const std::string& url);

  kvsc::SSLClient& client() { return client_; }
  kvsc::SSLSession& session() { return session_; }
  const std::string& body() const { return body_; }

 private:
  static std::size_t keepBody(void* data, std::size_t size, std::size_t count, void* context);

  kvsc::SSLClient client_;
  kvsc::SSLSession session_;
  std::string body_;
};

/// The same for plain exchanges, which would fail a check of certificates.
class PlainClient : public CheckingClient {
 public:
  PlainClient() { session().setCheckCertificate(false); }
};

/// Reaches one loopback port under whatever name it is asked for.
class LoopbackDialer : public kvsc::Dialer {
 public:
  explicit LoopbackDialer(std::uint16_t port) : port_(port) {}
  int dial(const std::string& host, const std::string& port, kvsc::Waiter& waiter) override;

 private:
  std::uint16_t port_;
};

/// A certificate of the environment's authority, which the client accepts.
support::Identity serverOf(const support::CertificateSpec& spec = {},
                           const std::string& environment = "LOCALHOST");

/// The authority that signs the servers of LOCALHOST.
support::Identity serverAuthority();
