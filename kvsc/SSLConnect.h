#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "kvsc/OpenSslPtr.h"
#include "kvsc/SSLError.h"
#include "kvsc/SSLSession.h"

namespace kvsc {

struct CrlVerdict;

/// Opens one TCP connection, through a proxy's tunnel and under TLS if the session says so, checks
/// the peer, and stores the headers of the last response.
///
/// Used by one thread at a time, each with its own object and session; the static operations are
/// safe on any thread. Nothing throws: an operation returns 0 or null and `getErrorString` has the
/// text.
class SSLConnect {
 public:
  using ErrorCallback = void (*)(std::string);

  /// `environment` names the servers whose credentials are used, see `CAInfo`. Calls `init`.
  explicit SSLConnect(const std::string& environment);
  SSLConnect(const SSLConnect&) = delete;
  SSLConnect& operator=(const SSLConnect&) = delete;
  virtual ~SSLConnect();

  /// Reads the environment's certificates and starts the crypto library. A failure leaves a text;
  /// the object can still be used for plain HTTP.
  virtual void init();

  /// Frees the session's TLS context, nothing else.
  virtual void close(SSLSession* session);

  /// Makes the session's TLS context. `password`, which may be null, is the pass phrase of an
  /// encrypted key and must live as long as the context. Returns 1, or 0 with a text.
  int setupContext(SSLSession* session, std::string* password);

  /// Opens the session's connection. Returns its BIO, which the session keeps, or null. Waits at
  /// most as long as the session allows; a cancelled token ends it at once. What a failure leaves
  /// in the session is freed by the client's `close`.
  BIO* connect(SSLSession* session);

  /// Whether the peer is `host`: `X509_V_OK` (0), or an X509 verification result.
  long postConnectionCheck(SSL* ssl, const std::string& host);

  /// Callback of the TLS library. Returns 1 to go on and 0 to end the handshake.
  static int verifyCallback(int ok, X509_STORE_CTX* context);

  /// Checks the current certificate against the session's revocation lists. Returns `ok`, or 0 when
  /// a list rejects it.
  static int crlCheck(int ok, X509_STORE_CTX* context, SSLSession* session);

  /// Empties the crypto library's error queue of this thread: prints each entry on standard output,
  /// appends all of them to the error text, and returns them to the caller, who owns them.
  std::vector<SSLError*> checkErrors();

  /// Frees a connection's BIO with its whole chain. `shutDown` ends the stream first, in both
  /// directions, for every holder of its descriptor.
  void freeConnection(BIO* connect, bool shutDown);

  /// Pass-phrase callback of the PEM readers: copies `userdata`, a C string, as far as it fits.
  /// Returns its length; -1 for null, so that the library never asks on a terminal.
  static int pem_passwd_cb(char* buf, int size, int rwflag, void* userdata);

  /// Stores what one header line says, with or without its line end: the status code when the line
  /// contains "HTTP" anywhere, name and value when it contains ":".
  void parseHeaderLine(char* line, int length);

  /// The value of the last response's header with exactly this name; empty if absent.
  std::string getResponseValue(const std::string& name) const;

  /// Status code of the last response that had one, 0 before.
  int getResponseCode() const { return responseCode_; }

  /// Body bytes received.
  long getTotalDownloaded() const { return totalDownloaded_; }
  void setTotalDownloaded(long bytes) { totalDownloaded_ = static_cast<std::int32_t>(bytes); }

  /// Reads 'Tue, 05 Mar 2024 10:00:00 GMT' as local time; 0 for any other text.
  time_t convertHttpTime(const std::string& text) const;

  /// Why the last operation failed.
  std::string getErrorString() const { return errorString_; }
  void setErrorString(const std::string& text) { errorString_ = text; }

  /// Called with the error text when `setupContext` ends by an exception. May be null.
  ErrorCallback getErrorCallback() const { return errorCallback_; }
  void setErrorCallback(ErrorCallback callback) { errorCallback_ = callback; }

  /// Number of live objects of this class.
  static int getConnectionCount();

  /// For hosts that have set up locking for the crypto library themselves; has no effect after the
  /// first `init` of the process.
  static void doNotSetupThreads();

  /// The locking callbacks that older versions of the crypto library need. OpenSSL 3 locks by
  /// itself and calls none of these. Taking the locks down releases every thread that waits for
  /// one.
  static void setupThreads();
  static void cleanupThreads();
  static unsigned long idFunction();
  static void lockingFunction(int mode, int n, const char* file, int line);

  /// Whether the first `init` of the process is over.
  static bool isInitialized();
  static bool getShouldSetupThreads();
  /// Number of locks that `lockingFunction` knows.
  static std::size_t getLockCount();

  /// A lock made on demand.
  struct DynamicLock;
  static DynamicLock* dynCreateFunction(const char* file, int line);
  static void dynLockFunction(int mode, DynamicLock* lock, const char* file, int line);
  static void dynDestroyFunction(DynamicLock* lock, const char* file, int line);

 protected:
  /// Whether a revocation list ended the last handshake.
  bool wasRefusedByList() const { return refusedByList_; }

  void clearResponseHeaders() { responseHeaders_.clear(); }
  void addDownloaded(int bytes);

  /// Stores an error text, unless there is no memory for it.
  void storeText(const char* text) noexcept;

  /// `checkErrors` for callers that need only the text.
  void collectErrors();

 private:
  static void initializeOnce();
  static void countConnection(int change);

  bool fail(const char* text);
  void noteVerdict(const CrlVerdict& verdict);
  int reportException(const char* text) noexcept;
  bool readCertificates();
  bool prepareChecks(SSL_CTX* context, const SSLSession& session, std::string* password);
  bool trustAuthority(SSL_CTX* context);
  bool readClientKey(std::string* password);
  bool installCredentials(SSL_CTX* context, const SSLSession& session);
  BIO* open(SSLSession* session);
  BIO* dial(SSLSession* session);
  BIO* handshake(SSLSession* session);

  std::int32_t totalDownloaded_ = 0;
  std::map<std::string, std::string> responseHeaders_;
  ErrorCallback errorCallback_ = nullptr;
  std::string errorString_;
  bool refusedByList_ = false;
  CertificatePtr caCert_;
  CertificatePtr clientCert_;
  KeyPtr clientKey_;
  int responseCode_ = 0;
  const std::string environment_;
};

}  // namespace kvsc
