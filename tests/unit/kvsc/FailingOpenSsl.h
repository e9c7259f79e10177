#pragma once

#include <openssl/types.h>

/// The functions of the crypto library that a program linked with `--wrap` can make fail.
enum class LibraryCall {
  kNone,
  kBioNew,
  kBioWrite,  ///< takes one byte less than it is given
  kReadAuthority,
  kReadCertificate,
  kReadKey,
  kAddToStore,
  kUseCertificate,
  kUseKey,
  kSslNew,
};

/// While one exists, the client's next call but `passed` of a function fails on this thread. A
/// plain guard: one at a time.
class FailingOpenSsl {
 public:
  explicit FailingOpenSsl(LibraryCall call, int passed = 0);
  FailingOpenSsl(const FailingOpenSsl&) = delete;
  FailingOpenSsl& operator=(const FailingOpenSsl&) = delete;
  ~FailingOpenSsl();
};

/// Calls `watcher` before every client's handshake on this thread; null for no watcher.
void watchHandshakes(void (*watcher)(const SSL* ssl));
