#pragma once

#include <string>

namespace kvsc {

/// The TLS credentials of one server environment, as PEM texts in memory.
///
/// The environments are "PRODUCTION", "JTEST", "ITEST", "ETEST" and "LOCALHOST"; an unknown name
/// gives the production material. Never changes after construction, so any thread may ask. The
/// texts come from the set that the program was built with; whoever receives one wipes it when that
/// matters. Fails only as the allocator does.
class CAInfo {
 public:
  /// An empty name is "PRODUCTION".
  explicit CAInfo(std::string environment);

  /// Whether `name` starts with this environment's name, ASCII letters compared without case: the
  /// beginning of a name stands for the whole. A zero byte ends both.
  bool isExpectedEnvironment(std::string name) const;

  /// Certificate of the authority that the environment's servers must chain to.
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
