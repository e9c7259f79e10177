#pragma once

#include <cstdint>

namespace kvsc {

/// A credential's PEM text as the build stores it: every byte masked with a keystream that starts
/// from `seed`. `CredentialText` rebuilds the text.
struct MaskedText {
  const unsigned char* bytes;
  unsigned length;
  std::uint32_t seed;
};

/// The set that this program was built with, generated from PEM files by the build.
namespace credentials {

extern const MaskedText kProductionCa;
extern const MaskedText kTestCa;
extern const MaskedText kProductionClient;
extern const MaskedText kProductionKey;
extern const MaskedText kJtestClient;
extern const MaskedText kJtestKey;
extern const MaskedText kItestClient;
extern const MaskedText kItestKey;
extern const MaskedText kEtestClient;
extern const MaskedText kEtestKey;
extern const MaskedText kLocalhostClient;
extern const MaskedText kLocalhostKey;

}  // namespace credentials
}  // namespace kvsc
