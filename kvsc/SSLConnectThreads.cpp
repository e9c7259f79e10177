// Locking for the crypto library: kept whole for hosts and libraries that still ask for it.
#include <pthread.h>

#include <atomic>
#include <memory>

#include "kvpm/CritSection.h"
#include "kvpm/Mutex.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"

namespace kvsc {
namespace {

// What all connections of the process share.
struct State {
  kvpm::CritSection section;
  std::atomic<bool> initialized{false};
  bool shouldSetupThreads KVPM_GUARDED_BY(section) = true;
  std::vector<std::shared_ptr<kvpm::Mutex>> mutexes KVPM_GUARDED_BY(section);
  int connectionCount KVPM_GUARDED_BY(section) = 0;
};

// Never destroyed: a connection on another thread may outlive the end of the main one, and a module
// registers no exit handler.
State& state() {
  static auto* const state = new State;
  return *state;
}

// The lock may be taken in one call and given back in another, which no analysis can follow.
void applyLock(kvpm::Mutex* mutex, int mode) KVPM_NO_ANALYSIS {
  if (mutex == nullptr) return;
  if ((mode & kCryptoLockBit) != 0) {
    mutex->lock();
  } else {
    mutex->unlock();
  }
}

// Shared, so that a mutex outlives the list for whoever is waiting for it.
std::shared_ptr<kvpm::Mutex> mutexAt(int n) {
  const kvpm::CritLock lock(state().section);
  const bool known = n >= 0 && static_cast<std::size_t>(n) < state().mutexes.size();
  return known ? state().mutexes[static_cast<std::size_t>(n)] : nullptr;
}

}  // namespace

struct SSLConnect::DynamicLock {
  kvpm::Mutex mutex;
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
  return state().mutexes.size();
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
  for (int i = 0; i < kCryptoLocks; ++i) {
    state().mutexes.push_back(std::make_shared<kvpm::Mutex>());
  }
}

void SSLConnect::cleanupThreads() {
  const kvpm::CritLock lock(state().section);
  if (state().shouldSetupThreads) state().mutexes.clear();
}

unsigned long SSLConnect::idFunction() { return pthread_self(); }

void SSLConnect::lockingFunction(int mode, int n, const char*, int) {
  applyLock(mutexAt(n).get(), mode);
}

SSLConnect::DynamicLock* SSLConnect::dynCreateFunction(const char*, int) { return new DynamicLock; }

void SSLConnect::dynLockFunction(int mode, DynamicLock* lock, const char*, int) {
  if (lock != nullptr) applyLock(&lock->mutex, mode);
}

void SSLConnect::dynDestroyFunction(DynamicLock* lock, const char*, int) { delete lock; }

}  // namespace kvsc
