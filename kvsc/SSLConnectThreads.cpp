// Locking callbacks for the crypto library, for hosts and libraries that still call them.
#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <thread>

#include "kvpm/CritSection.h"
#include "kvpm/Mutex.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"

namespace kvsc {
namespace {

// A lock that is acquired in one call and released in another.
class LibraryLock {
 public:
  void apply(int mode) {
    const kvpm::MutexLock lock(mutex_);
    if ((mode & kCryptoLockBit) != 0) {
      while (holder_ != std::thread::id() && !retired_) changed_.wait(mutex_);
      holder_ = std::this_thread::get_id();
    } else if (holder_ == std::this_thread::get_id()) {
      holder_ = std::thread::id();
      changed_.notify_one();
    }
  }

  // No later call releases the lock, so waiting threads continue, as every later call does.
  void retire() {
    const kvpm::MutexLock lock(mutex_);
    retired_ = true;
    changed_.notify_all();
  }

 private:
  kvpm::Mutex mutex_;
  std::condition_variable_any changed_;
  std::thread::id holder_ KVPM_GUARDED_BY(mutex_);
  bool retired_ KVPM_GUARDED_BY(mutex_) = false;
};

// What all connections of the process share.
struct State {
  kvpm::CritSection section;
  std::atomic<bool> initialized{false};
  bool shouldSetupThreads KVPM_GUARDED_BY(section) = true;
  std::vector<std::shared_ptr<LibraryLock>> locks KVPM_GUARDED_BY(section);
  int connectionCount KVPM_GUARDED_BY(section) = 0;
};

// Never destroyed: a connection on another thread may outlive the end of the main one, and a module
// registers no exit handler.
State& state() {
  static auto* const state = new State;
  return *state;
}

// Shared, so that a lock outlives the list for a thread that is still using it.
std::shared_ptr<LibraryLock> lockAt(int n) {
  const kvpm::CritLock lock(state().section);
  const bool known = n >= 0 && static_cast<std::size_t>(n) < state().locks.size();
  return known ? state().locks[static_cast<std::size_t>(n)] : nullptr;
}

}  // namespace

struct SSLConnect::DynamicLock {
  LibraryLock lock;
};

int SSLConnect::getConnectionCount() {
  const kvpm::CritLock lock(state().section);
  return state().connectionCount;
}

void SSLConnect::countConnection(int change) {
  const kvpm::CritLock lock(state().section);
  state().connectionCount += change;
}

bool SSLConnect::isInitialized() { return state().initialized; }

bool SSLConnect::getShouldSetupThreads() {
  const kvpm::CritLock lock(state().section);
  return state().shouldSetupThreads;
}

std::size_t SSLConnect::getLockCount() {
  const kvpm::CritLock lock(state().section);
  return state().locks.size();
}

void SSLConnect::initializeOnce() {
  if (state().initialized) return;
  const kvpm::CritLock lock(state().section);
  if (state().initialized) return;
  setupThreads();
  state().initialized = true;
}

void SSLConnect::doNotSetupThreads() {
  const kvpm::CritLock lock(state().section);
  if (!state().initialized) state().shouldSetupThreads = false;
}

void SSLConnect::setupThreads() {
  const kvpm::CritLock lock(state().section);
  if (!state().shouldSetupThreads) return;
  for (int i = 0; i < kCryptoLocks; ++i) state().locks.push_back(std::make_shared<LibraryLock>());
}

void SSLConnect::cleanupThreads() {
  const kvpm::CritLock lock(state().section);
  if (!state().shouldSetupThreads) return;
  for (const auto& retired : state().locks) retired->retire();
  state().locks.clear();
}

unsigned long SSLConnect::idFunction() { return pthread_self(); }

void SSLConnect::lockingFunction(int mode, int n, const char*, int) {
  if (const auto lock = lockAt(n)) lock->apply(mode);
}

SSLConnect::DynamicLock* SSLConnect::dynCreateFunction(const char*, int) { return new DynamicLock; }

void SSLConnect::dynLockFunction(int mode, DynamicLock* lock, const char*, int) {
  if (lock != nullptr) lock->lock.apply(mode);
}

void SSLConnect::dynDestroyFunction(DynamicLock* lock, const char*, int) { delete lock; }

}  // namespace kvsc
