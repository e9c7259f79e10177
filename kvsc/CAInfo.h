#pragma once

#include <string>

namespace kvsc {

/// The TLS credentials of one server environment, as PEM texts in memory.
///
/// The environments are "PRODUCTION", "JTEST", "ITEST", "ETEST" and "LOCALHOST"; an unknown name
/// gives the production material. Immutable, so any thread may use it. The texts come from the set
/// that the program was built with; a caller to whom that matters wipes the copy it receives. Only
/// allocation can fail.
class CAInfo {
 public:
  /// An empty name means "PRODUCTION".
  explicit CAInfo(std::string environment);

  /// Whether `name` starts with this environment's name, ignoring ASCII case; so an environment
  /// that is a prefix of a known name matches it. A zero byte ends both.
  bool isExpectedEnvironment(std::string name) const;

  /// The certificate of the authority that the environment's servers must chain to.
  std::string getServerCert() const;

  /// The client's certificate, despite the name.
  std::string getClientKey() const;

  /// The client's RSA private key.
  std::string getClientPEM() const;

 private:
  struct Material;

  std::string textOf(const Material& material) const;

  const std::string environment_;
};

}  // namespace kvsc
