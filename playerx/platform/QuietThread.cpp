#include "playerx/platform/QuietThread.h"

#include <csignal>
#include <utility>

namespace playerx {
namespace {

/// Blocks all signals for the calling thread, for the length of a scope.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

}  // namespace

std::thread startQuietThread(std::function<void()> body) {
  const SignalsBlocked blocked;
  return std::thread(std::move(body));
}

std::future<void> runQuietly(std::function<void()> body) {
  const SignalsBlocked blocked;
  return std::async(std::move(body));
}

}  // namespace playerx
