#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace download {

/// One report of the download library that means something to the worker.
struct LibraryReport {
  enum class Kind : std::uint8_t { kProgress, kComplete, kBroken };

  Kind kind;
  unsigned long long uid;
  int percent;  ///< of progress; 0 otherwise

  bool operator==(const LibraryReport&) const = default;
};

/// Keeps the reports of earlier sessions from the present one.
///
/// The library may report before it has told the id of a session that it starts: such reports are
/// kept until the id is known. What belongs to one of the last `kMostEarlier` sessions before, or
/// comes while there is none, is dropped. A plain value without a lock; the worker keeps it under
/// its callback mutex.
class SessionGate {
 public:
  static constexpr std::size_t kMostEarlier = 1000;

  SessionGate() { earlier_.reserve(kMostEarlier + 1); }

  /// A session is being started, its id is not known yet.
  void expect();

  /// The id is known. Returns the kept reports in order, without those of earlier sessions.
  std::vector<LibraryReport> open(unsigned long long uid);

  /// There is no session any more; what was kept is dropped.
  void close();

  /// Whether reports are being kept.
  bool isExpecting() const { return phase_ == Phase::kExpecting; }

  /// True when `report` is to be handled now; otherwise it was kept for later or dropped.
  bool admits(const LibraryReport& report);

 private:
  enum class Phase : std::uint8_t { kClosed, kExpecting, kOpen };

  bool isOfEarlier(const LibraryReport& report) const;

  Phase phase_ = Phase::kClosed;
  unsigned long long uid_ = 0;
  std::vector<LibraryReport> kept_;
  std::vector<unsigned long long> earlier_;  // with room for all, so that closing cannot fail
};

}  // namespace download
