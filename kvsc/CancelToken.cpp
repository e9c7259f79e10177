#include "kvsc/CancelToken.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace kvsc {

CancelToken::CancelToken() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

CancelToken::~CancelToken() {
  if (fd_ >= 0) ::close(fd_);
}

void CancelToken::cancel() noexcept {
  const kvpm::MutexLock lock(mutex_);
  if (cancelled_.exchange(true, std::memory_order_acq_rel)) return;
  if (fd_ >= 0) eventfd_write(fd_, 1);
}

void CancelToken::reset() noexcept {
  const kvpm::MutexLock lock(mutex_);
  eventfd_t count = 0;
  if (fd_ >= 0) eventfd_read(fd_, &count);
  cancelled_.store(false, std::memory_order_release);
}

}  // namespace kvsc
