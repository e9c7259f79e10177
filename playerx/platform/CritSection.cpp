#include "kvpm/CritSection.h"

#include <mutex>

namespace kvpm {

struct CritSection::Impl {
  std::recursive_mutex mutex;
};

CritSection::CritSection() : impl_(std::make_unique<Impl>()) {}

CritSection::~CritSection() = default;

void CritSection::enter() { impl_->mutex.lock(); }

bool CritSection::tryEnter() { return impl_->mutex.try_lock(); }

void CritSection::leave() { impl_->mutex.unlock(); }

}  // namespace kvpm
