#pragma once

#include <string>

#include "kvsc/OpenSslPtr.h"
#include "kvsc/SSLMethodProtocolType.h"

namespace kvsc {

class CancelToken;
class Dialer;
class SSLConnect;

/// The settings and the live handles of one transfer.
///
/// Owned by the caller of the client, used by one thread at a time. It owns its revocation list
/// store; the connection's handles belong to the client, which frees them in `close`. Nothing is
/// shared or resumed between sessions.
class SSLSession {
 public:
  static constexpr int kDefaultProxyPort = 443;
  static constexpr unsigned int kDefaultDownloadSize = 4096;
  static constexpr int kDefaultWaitTimeout = 30'000;
  static constexpr int kDefaultExchangeTimeout = 120'000;

  SSLSession();
  SSLSession(const SSLSession&) = delete;
  SSLSession& operator=(const SSLSession&) = delete;
  virtual ~SSLSession();

  /// Resets every field to its value after construction. The connection must have been closed.
  void clear();

  /// The context of the open connection, null without one.
  SSL_CTX* getSslContext() const { return sslContext_; }
  void setSslContext(SSL_CTX* context) { sslContext_ = context; }

  /// PEM file with both the client certificate and its private key; empty for the built-in
  /// credentials.
  const std::string& getCertFile() const { return certFile_; }
  void setCertFile(const std::string& path) { certFile_ = path; }

  /// The head of the open connection's BIO chain; with TLS it belongs to `getSsl`.
  BIO* getConnect() const { return connect_; }
  void setConnect(BIO* connect) { connect_ = connect; }

  /// The TLS object of the open connection, null for plain HTTP.
  SSL* getSsl() const { return ssl_; }
  void setSsl(SSL* ssl) { ssl_ = ssl; }

  /// Stored for the caller only: the connection reads neither of them.
  const std::string& getRandomFile() const { return randomFile_; }
  void setRandomFile(const std::string& path) { randomFile_ = path; }
  const std::string& getCaFile() const { return caFile_; }
  void setCaFile(const std::string& path) { caFile_ = path; }

  /// Value for `SSL_CTX_set_verify`; an exchange sets 1 whenever certificates are checked.
  int getVerifyMode() const { return verifyMode_; }
  void setVerifyMode(int mode) { verifyMode_ = mode; }

  /// Turns on client credentials, peer verification, cipher list and host check, all at once.
  bool getCheckCertificate() const { return checkCertificate_; }
  void setCheckCertificate(bool check) { checkCertificate_ = check; }

  /// Milliseconds to pause between two reads of a body, 0 for no pause.
  int getDownloadLoopSleep() const { return downloadLoopSleep_; }
  void setDownloadLoopSleep(int milliseconds) { downloadLoopSleep_ = milliseconds; }

  SSLMethodProtocolType getSslMethod() const { return sslMethod_; }
  void setSslMethod(SSLMethodProtocolType method) { sslMethod_ = method; }

  const std::string& getHost() const { return host_; }
  void setHost(const std::string& host) { host_ = host; }

  /// Digits, or a service name such as "https".
  const std::string& getPort() const { return port_; }
  void setPort(const std::string& port) { port_ = port; }

  /// Pass phrase of an encrypted private key.
  const std::string& getPassword() const { return password_; }
  void setPassword(const std::string& password) { password_ = password; }
  /// The stored pass phrase itself, at the same address as long as the session lives.
  std::string* getPasswordAddress() { return &password_; }

  /// OpenSSL cipher string, empty for the library's default.
  const std::string& getCipherList() const { return cipherList_; }
  void setCipherList(const std::string& list) { cipherList_ = list; }

  /// Host of an HTTP proxy, empty for a direct connection.
  const std::string& getProxyURL() const { return proxyURL_; }
  void setProxyURL(const std::string& host) { proxyURL_ = host; }
  int getProxyPort() const { return proxyPort_; }
  void setProxyPort(int port) { proxyPort_ = port; }

  bool getUseSSL() const { return useSSL_; }
  void setUseSSL(bool use) { useSSL_ = use; }

  /// Bytes requested by one read. A header block must arrive within the first read.
  unsigned int getDownloadSize() const { return downloadSize_; }
  void setDownloadSize(unsigned int bytes) { downloadSize_ = bytes; }

  const std::string& getUserAgent() const { return userAgent_; }
  void setUserAgent(const std::string& agent) { userAgent_ = agent; }

  /// Redirects allowed, 0 to refuse any, and redirects followed so far, which the caller resets
  /// before a new transfer.
  int getMaxRedirectCount() const { return maxRedirectCount_; }
  void setMaxRedirectCount(int count) { maxRedirectCount_ = count; }
  int getRedirectCount() const { return redirectCount_; }
  void setRedirectCount(int count) { redirectCount_ = count; }

  /// PEM file of certificate revocation lists. Setting it reads the file; one that cannot be read
  /// leaves an empty store, which rejects nothing.
  const std::string& getCrlFile() const { return crlFile_; }
  void setCrlFile(const std::string& path);
  /// Reads the file once more.
  void initCrlStore();
  X509_STORE* getCrlStore() const { return crlStore_.get(); }
  /// Becomes the owner of the store. The one before is the caller's again, who frees it.
  void setCrlStore(X509_STORE* store);

  /// The connection whose handshake is in progress with this session: certificate checks report to
  /// it. Null at all other times.
  SSLConnect* getHandshakeOwner() const { return handshakeOwner_; }
  void setHandshakeOwner(SSLConnect* owner) { handshakeOwner_ = owner; }

  /// Milliseconds that one wait may last: for a name, a connect, a step of the handshake, a read or
  /// a write. 0 for no limit. Read when the connection is made.
  int getWaitTimeout() const { return waitTimeout_; }
  void setWaitTimeout(int milliseconds) { waitTimeout_ = milliseconds; }

  /// Milliseconds that connect, handshake, request and headers may last together, and then each
  /// read of the body. 0 for no limit. Read when the connection is made.
  int getExchangeTimeout() const { return exchangeTimeout_; }
  void setExchangeTimeout(int milliseconds) { exchangeTimeout_ = milliseconds; }

  /// Ends every wait of the connection when it is cancelled. Not owned, may be null; must
  /// outlive the connection. Read when the connection is made.
  CancelToken* getCancelToken() const { return cancelToken_; }
  void setCancelToken(CancelToken* token) { cancelToken_ = token; }

  /// Whether there is a token and it is cancelled.
  bool isCancelled() const;

  /// Opens the connection instead of TCP. Not owned, null for TCP.
  Dialer* getDialer() const { return dialer_; }
  void setDialer(Dialer* dialer) { dialer_ = dialer; }

 private:
  SSL_CTX* sslContext_ = nullptr;
  std::string certFile_;
  BIO* connect_ = nullptr;
  SSL* ssl_ = nullptr;
  std::string randomFile_;
  std::string caFile_;
  int verifyMode_ = 0;
  bool checkCertificate_ = false;
  int downloadLoopSleep_ = 0;
  SSLMethodProtocolType sslMethod_ = SSLV3;
  std::string host_;
  std::string port_;
  std::string password_;
  std::string cipherList_;
  std::string proxyURL_;
  int proxyPort_ = kDefaultProxyPort;
  bool useSSL_ = false;
  unsigned int downloadSize_ = kDefaultDownloadSize;
  std::string userAgent_;
  int maxRedirectCount_ = 0;
  int redirectCount_ = 0;
  std::string crlFile_;
  StorePtr crlStore_;
  SSLConnect* handshakeOwner_ = nullptr;
  int waitTimeout_ = kDefaultWaitTimeout;
  int exchangeTimeout_ = kDefaultExchangeTimeout;
  CancelToken* cancelToken_ = nullptr;
  Dialer* dialer_ = nullptr;
};

}  // namespace kvsc
