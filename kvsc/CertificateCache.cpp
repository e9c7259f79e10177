#include "kvsc/CertificateCache.h"

#include <map>
#include <mutex>

#include "kvsc/OpenSsl.h"

namespace kvsc {
namespace {

// A program has a handful of environments with two certificates each.
constexpr std::size_t kMostKept = 32;

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

  std::mutex mutex;
  std::map<std::string, CertificatePtr> certificates;
};

}  // namespace

CertificatePtr knownCertificate(const std::string& pem) {
  Cache& cache = Cache::instance();
  const std::lock_guard<std::mutex> lock(cache.mutex);
  const auto found = cache.certificates.find(pem);
  return found != cache.certificates.end() ? share(found->second) : nullptr;
}

void keepCertificate(const std::string& pem, const CertificatePtr& certificate) {
  Cache& cache = Cache::instance();
  const std::lock_guard<std::mutex> lock(cache.mutex);
  if (cache.certificates.size() < kMostKept) {
    cache.certificates.try_emplace(pem, share(certificate));
  }
}

}  // namespace kvsc
