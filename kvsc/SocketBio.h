#pragma once

#include "kvsc/OpenSslPtr.h"
#include "kvsc/Waiter.h"

namespace kvsc {

/// A BIO over the connected, non-blocking socket `fd`, which it owns; null, with the socket closed,
/// when there is no memory.
///
/// It behaves like one over a blocking socket: a read returns what is there and waits until
/// something is, a write sends everything, 0 is the end of the stream. But each wait goes through
/// the waiter, and a write never raises SIGPIPE. A failure is -1, without the retry flag, with its
/// errno value in the crypto library's error queue. Used by one thread at a time.
BioPtr newSocketBio(int fd, const Waiter& waiter);

/// The waiter of a BIO that `newSocketBio` made; null for any other.
Waiter* waiterOf(BIO* bio);

/// Bytes that the last write to such a BIO sent before it ended; 0 for any other BIO.
int bytesSentBy(BIO* bio);

}  // namespace kvsc
