// Locks and threads on the standard library.

#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>

#include "kvpm/CritSection.h"
#include "kvpm/IRunnable.h"
#include "kvpm/Mutex.h"
#include "kvpm/Thread.h"

namespace kvpm {

struct Mutex::Impl {
  std::mutex mutex;
};

Mutex::Mutex() : impl_(std::make_unique<Impl>()) {}
Mutex::~Mutex() = default;
void Mutex::lock() { impl_->mutex.lock(); }
void Mutex::unlock() { impl_->mutex.unlock(); }

struct CritSection::Impl {
  std::recursive_mutex mutex;
};

CritSection::CritSection() : impl_(std::make_unique<Impl>()) {}
CritSection::~CritSection() = default;
void CritSection::enter() { impl_->mutex.lock(); }
bool CritSection::tryEnter() { return impl_->mutex.try_lock(); }
void CritSection::leave() { impl_->mutex.unlock(); }

struct Thread::Impl {
  IRunnable* const runnable;
  std::thread thread = {};
  std::atomic<bool> isRunning = false;
  std::atomic<bool> shouldStop = false;
};

Thread::Thread(IRunnable* runnable) : impl_(new Impl{runnable}) {}

Thread::~Thread() {
  stop();
  if (impl_->thread.joinable()) impl_->thread.join();
}

bool Thread::start() {
  if (impl_->isRunning) return false;
  if (impl_->thread.joinable()) impl_->thread.join();
  impl_->shouldStop = false;
  impl_->isRunning = true;
  try {
    impl_->thread = std::thread([this] {
      impl_->runnable->runThread(this);
      impl_->isRunning = false;
    });
  } catch (const std::system_error&) {
    impl_->isRunning = false;
  }
  return impl_->thread.joinable();
}

void Thread::stop() { impl_->shouldStop = true; }
bool Thread::isRunning() const { return impl_->isRunning; }
bool Thread::shouldStop() const { return impl_->shouldStop; }

}  // namespace kvpm
