#pragma once

#include <openssl/types.h>

#include <string>

namespace kvsc {

class SSLSession;

/// The bytes that ask a proxy for a tunnel to the session's server.
std::string tunnelRequest(const SSLSession& session);

/// Asks the proxy at the other end of `bio` for the tunnel and reads its answer: once, and without
/// looking at it. Returns false only when a wait was too long or cancelled.
bool openTunnel(BIO* bio, const SSLSession& session);

}  // namespace kvsc
