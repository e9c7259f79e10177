#include "tests/support/LockWaiter.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <utility>

#include "tests/support/WaitFor.h"

namespace support {
namespace {

/// The kernel tells which of its calls a sleeping thread is in; locks sleep in one.
bool isAtLock(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/syscall");
  long call = -1;  // a running thread has a word there
  return file >> call && call == SYS_futex;
}

}  // namespace

LockWaiter::LockWaiter(std::function<void()> work)
    : thread_([this, work = std::move(work)] {
        id_ = static_cast<pid_t>(::syscall(SYS_gettid));
        work();
        ended_ = true;
      }) {}

LockWaiter::~LockWaiter() { join(); }

bool LockWaiter::isHeldUp() const {
  return waitFor([this] { return ended_ || (id_ != 0 && isAtLock(id_)); }) && !ended_;
}

void LockWaiter::join() {
  if (thread_.joinable()) thread_.join();
}

}  // namespace support
