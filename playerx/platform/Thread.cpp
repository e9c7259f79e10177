#include "kvpm/Thread.h"

#include <atomic>
#include <exception>
#include <thread>

#include "kvpm/IRunnable.h"
#include "playerx/platform/ThreadGate.h"

namespace kvpm {

struct Thread::Impl {
  explicit Impl(IRunnable* body) : runnable(body) {}

  IRunnable* const runnable;
  std::thread thread;  // touched by start and the destructor only
  std::atomic<bool> running{false};
  std::atomic<bool> stop{false};
};

Thread::Thread(IRunnable* runnable) : impl_(std::make_unique<Impl>(runnable)) {}

Thread::~Thread() {
  stop();
  if (impl_->thread.joinable()) impl_->thread.join();
}

bool Thread::start() {
  if (isRunning()) return false;
  if (impl_->thread.joinable()) impl_->thread.join();
  const bool stopBefore = impl_->stop.exchange(false);
  impl_->running.store(true);
  try {
    impl_->thread = std::thread([this] {
      if (playerx::ThreadGate::pass(impl_->stop)) impl_->runnable->runThread(this);
      impl_->running.store(false);
    });
  } catch (const std::exception&) {
    impl_->running.store(false);
    impl_->stop.store(stopBefore);
    return false;
  }
  return true;
}

void Thread::stop() {
  impl_->stop.store(true);
  playerx::ThreadGate::wake();
}

bool Thread::isRunning() const { return impl_->running.load(); }

bool Thread::shouldStop() const { return impl_->stop.load(); }

}  // namespace kvpm
