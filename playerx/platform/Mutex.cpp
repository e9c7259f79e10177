#include "kvpm/Mutex.h"

#include <mutex>

namespace kvpm {

struct Mutex::Impl {
  std::mutex mutex;
};

Mutex::Mutex() : impl_(std::make_unique<Impl>()) {}

Mutex::~Mutex() = default;

void Mutex::lock() { impl_->mutex.lock(); }

void Mutex::unlock() { impl_->mutex.unlock(); }

}  // namespace kvpm
