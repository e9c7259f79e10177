#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "kvpm/CritSection.h"
#include "kvpm/Mutex.h"

namespace kvsc {

/// What all connections of the process share. Never destroyed: a connection on another thread may
/// outlive the end of the main one, and a module has nothing to run at the end of a process.
struct SSLConnectState {
  static SSLConnectState& instance() {
    static auto* const state = new SSLConnectState;
    return *state;
  }

  kvpm::CritSection section;
  std::atomic<bool> initialized{false};
  bool shouldSetupThreads KVPM_GUARDED_BY(section) = true;
  std::vector<std::shared_ptr<kvpm::Mutex>> mutexes KVPM_GUARDED_BY(section);
  int connectionCount KVPM_GUARDED_BY(section) = 0;
};

}  // namespace kvsc
