#include "tests/support/Gate.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <stdexcept>

namespace support {

Gate::Gate() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_) throw std::runtime_error("cannot make an event");
}

void Gate::open() {
  const std::lock_guard<std::mutex> lock(opening_);
  eventfd_write(event_.get(), 1);
}

bool Gate::wait(std::chrono::milliseconds deadline) const {
  if (!poll(deadline)) return false;
  // Until `open` has done with the descriptor.
  const std::lock_guard<std::mutex> lock(opening_);
  return true;
}

bool Gate::poll(std::chrono::milliseconds deadline) const {
  const auto end = std::chrono::steady_clock::now() + deadline;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        end - std::chrono::steady_clock::now());
    pollfd watched{event_.get(), POLLIN, 0};
    const int ready = ::poll(&watched, 1, left.count() > 0 ? static_cast<int>(left.count()) : 0);
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

}  // namespace support
