#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace support {

using Certificate = std::shared_ptr<X509>;
using Key = std::shared_ptr<EVP_PKEY>;

/// A certificate with its private key. A plain value: copies share the two.
struct Identity {
  Certificate certificate;
  Key key;
  std::vector<Certificate> chain;  ///< intermediates that a server sends along

  std::string certificatePem() const;
  std::string chainPem() const;  ///< certificate, then the intermediates
  std::string keyPem() const;
  std::string encryptedKeyPem(const std::string& passPhrase) const;
  long serial() const;
  std::string subject() const;  ///< on one line, as "/O=.../CN=..."
};

enum class KeyKind { kEc, kRsa, kWeakRsa };  ///< P-256, 2048 bits, 1024 bits

/// Time relative to the moment of making.
using Offset = std::chrono::hours;
inline constexpr Offset kDay{24};

/// What a certificate says. The defaults are a good one for "localhost".
struct CertificateSpec {
  std::optional<std::string> commonName = "localhost";  ///< none: no such entry; may hold NUL
  std::vector<std::string> dnsNames = {};               ///< subjectAltName; each may hold NUL
  std::vector<std::string> addresses = {};              ///< subjectAltName, "127.0.0.1"
  std::string organization = "Loopback";                ///< empty: none
  Offset notBefore = -kDay;
  Offset notAfter = 365 * kDay;
  bool authority = false;
  KeyKind key = KeyKind::kEc;
  std::string keyName = {};  ///< same kind and name, same key; empty: "leaf" or "authority"
  long serial = 0;           ///< 0: a new one
};

/// What a revocation list says. The defaults are a good one that revokes nothing.
struct CrlSpec {
  Identity issuer = {};
  std::vector<long> revoked = {};  ///< serial numbers
  Offset lastUpdate = -kDay;
  std::optional<Offset> nextUpdate = 30 * kDay;  ///< none: the field is absent
  Key signedBy = {};                             ///< null: the issuer's own key
};

/// Makes certificates at run time. Keys are made once per process and shared by (kind, name).
/// Threads: any. Failure: std::runtime_error with the library's text.
namespace pki {

/// A key of the kind; the same (kind, name) gives the same key.
Key keyNamed(KeyKind kind, const std::string& name);

/// A self-signed certificate.
Identity selfSigned(const CertificateSpec& spec = {});

/// A self-signed certificate that may sign others.
Identity authority(const std::string& commonName, KeyKind kind = KeyKind::kEc);

/// A certificate signed by the issuer.
Identity issue(const Identity& issuer, const CertificateSpec& spec = {});

/// A certificate below `issuer` that may sign others; what it issues carries it in its chain.
Identity intermediate(const Identity& issuer, const std::string& commonName);

/// An authority with the subject of another and a key of its own, of the same kind.
Identity forgerOf(const Identity& authority);

/// A revocation list as PEM text.
std::string revocationList(const CrlSpec& spec);

/// An identity from two PEM texts, as a file holds them.
Identity fromPem(const std::string& certificatePem, const std::string& keyPem);
Identity fromFiles(const std::filesystem::path& certificate, const std::filesystem::path& key);

}  // namespace pki
}  // namespace support
