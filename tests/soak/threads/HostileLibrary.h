#pragma once

#include <atomic>

#include "tests/support/fakes/FakeDownloadLibrary.h"

namespace soak {

/// A download library that reports what it should not, when it is least expected: from inside the
/// start of a session, twice, out of order, for sessions that are over or never were.
class HostileLibrary : public support::FakeDownloadLibrary {
 public:
  explicit HostileLibrary(support::EventLog& log) : FakeDownloadLibrary(log) {
    whileStarting([this](unsigned long long uid) { begin(uid); });
  }

  /// Sessions that began before the one before was stopped or had ended.
  int overlaps() const { return overlaps_; }

  void stopSession(unsigned long long uid) override {
    end(uid);
    FakeDownloadLibrary::stopSession(uid);
    onOwnThread([this, uid] { progress(uid, 77); });
  }

 private:
  void begin(unsigned long long uid) {
    if (running_.exchange(uid) != 0) ++overlaps_;
    progress(uid, 3);
    onOwnThread([this, uid] { goOn(uid); });
  }

  void goOn(unsigned long long uid) {
    for (const int percent : {-5, 1, 6, 6, 2, 99, 1'000}) progress(uid, percent);
    began(uid - 1);
    header(uid, "Content-Length: -1\r\n");
    if (uid % 5 == 0) return;  // this one never ends by itself
    end(uid);
    uid % 3 == 0 ? broke(uid) : complete(uid);
    complete(uid);
    broke(uid + 1'000'000);
    progress(uid, 50);
  }

  void end(unsigned long long uid) { running_.compare_exchange_strong(uid, 0); }

  std::atomic<unsigned long long> running_{0};
  std::atomic<int> overlaps_{0};
};

}  // namespace soak
