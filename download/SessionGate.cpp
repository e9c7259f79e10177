#include "download/SessionGate.h"

#include <algorithm>
#include <utility>

namespace download {

void SessionGate::expect() {
  phase_ = Phase::kExpecting;
  kept_.clear();
}

std::vector<LibraryReport> SessionGate::open(unsigned long long uid) {
  phase_ = Phase::kOpen;
  uid_ = uid;
  std::erase(earlier_, uid);
  std::vector<LibraryReport> mine = std::exchange(kept_, {});
  std::erase_if(mine, [this](const LibraryReport& report) { return isOfEarlier(report); });
  return mine;
}

void SessionGate::close() {
  // A start that was refused has no id.
  if (phase_ == Phase::kOpen && uid_ != 0) earlier_.push_back(uid_);
  if (earlier_.size() > kMostEarlier) earlier_.erase(earlier_.begin());
  phase_ = Phase::kClosed;
  kept_.clear();
}

bool SessionGate::admits(const LibraryReport& report) {
  if (phase_ == Phase::kExpecting) kept_.push_back(report);
  return phase_ == Phase::kOpen && !isOfEarlier(report);
}

bool SessionGate::isOfEarlier(const LibraryReport& report) const {
  return std::ranges::find(earlier_, report.uid) != earlier_.end();
}

}  // namespace download
