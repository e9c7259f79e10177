#include "download/SessionGate.h"

#include <utility>

namespace download {

void SessionGate::expect() {
  phase_ = Phase::kExpecting;
  kept_.clear();
}

std::vector<LibraryReport> SessionGate::open(unsigned long long uid) {
  phase_ = Phase::kOpen;
  uid_ = uid;
  std::vector<LibraryReport> mine = std::exchange(kept_, {});
  std::erase_if(mine, [uid](const LibraryReport& report) { return report.uid != uid; });
  return mine;
}

void SessionGate::close() {
  phase_ = Phase::kClosed;
  kept_.clear();
}

bool SessionGate::admits(const LibraryReport& report) {
  if (phase_ == Phase::kExpecting) kept_.push_back(report);
  return phase_ == Phase::kOpen && report.uid == uid_;
}

}  // namespace download
