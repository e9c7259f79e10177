#pragma once

#include <sys/resource.h>

namespace persistence {

/// Limits a resource of the process during its lifetime.
class Limit {
 public:
  Limit(__rlimit_resource resource, rlim_t most) : resource_(resource) {
    getrlimit(resource_, &former_);
    const rlimit limit{most, former_.rlim_max};
    setrlimit(resource_, &limit);
  }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;
  ~Limit() { setrlimit(resource_, &former_); }

 private:
  const __rlimit_resource resource_;
  rlimit former_{};
};

}  // namespace persistence
