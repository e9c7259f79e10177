#include "kvsc/CertificateCache.h"

#include <openssl/sha.h>

#include <array>
#include <map>

#include "kvpm/Mutex.h"
#include "kvsc/OpenSsl.h"

namespace kvsc {
namespace {

// A program has a handful of environments with two certificates each.
constexpr std::size_t kMostKept = 32;

// The key of a text: the text itself would stay readable in memory as long as the process lives.
using Digest = std::array<unsigned char, SHA256_DIGEST_LENGTH>;

Digest digestOf(const std::string& pem) {
  Digest digest{};
  SHA256(reinterpret_cast<const unsigned char*>(pem.data()), pem.size(), digest.data());
  return digest;
}

CertificatePtr share(const CertificatePtr& certificate) {
  X509_up_ref(certificate.get());
  return CertificatePtr(certificate.get());
}

// Never destroyed: a connection on another thread may outlive the end of the main one.
struct Cache {
  static Cache& instance() {
    static auto* const cache = new Cache;
    return *cache;
  }

  kvpm::Mutex mutex;
  std::map<Digest, CertificatePtr> certificates KVPM_GUARDED_BY(mutex);
};

}  // namespace

CertificatePtr cachedCertificate(const std::string& pem) {
  const Digest digest = digestOf(pem);
  Cache& cache = Cache::instance();
  const kvpm::MutexLock lock(cache.mutex);
  const auto found = cache.certificates.find(digest);
  return found != cache.certificates.end() ? share(found->second) : nullptr;
}

void cacheCertificate(const std::string& pem, const CertificatePtr& certificate) {
  const Digest digest = digestOf(pem);
  Cache& cache = Cache::instance();
  const kvpm::MutexLock lock(cache.mutex);
  if (cache.certificates.size() < kMostKept) {
    cache.certificates.try_emplace(digest, share(certificate));
  }
}

}  // namespace kvsc
