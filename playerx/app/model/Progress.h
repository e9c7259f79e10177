#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/model/SpeedMeter.h"

namespace playerx::model {

/// Silence shorter than this is not shown.
constexpr std::chrono::seconds kShortestSilence(5);

/// The progress of one download, by the player's own clock.
struct Progress {
  std::optional<std::uint64_t> arrived{};      ///< bytes; nullopt when not known
  std::uint64_t bytesPerSecond = 0;            ///< 0 when not known
  std::optional<std::uint64_t> secondsLeft{};  ///< 1 and above; nullopt when not known
  std::uint64_t silentSeconds = 0;             ///< since the last byte came; 0 while bytes come
  bool isRetrying = false;                     ///< between two tries
  std::string partialPath{};  ///< the file that is written to; empty when not known

  bool operator==(const Progress&) const = default;
};

/// Measures the progress of one download. Time comes from the caller, from a clock that never
/// jumps.
///
/// What it shows is steady: the time left counts down with the clock and the speed stays as it is
/// until a new measurement differs by more than a tenth.
class ProgressMeter {
 public:
  using Clock = SpeedMeter::Clock;

  /// `arrived` of `total` bytes (0: not known) were there at `now`.
  void feed(Clock::time_point now, std::uint64_t arrived, std::uint64_t total);

  /// What to show at the time of the last `feed`; without any, nothing is known.
  Progress progress() const;

 private:
  void noteBytes(std::uint64_t arrived);
  void estimate(std::uint64_t total);

  SpeedMeter speed_;
  Clock::time_point now_{};
  Clock::time_point lastByte_{};
  std::optional<std::uint64_t> arrived_;
  std::uint64_t shownSpeed_ = 0;
  std::optional<Clock::time_point> shownEnd_;
};

/// How far a whole queue has come.
struct QueueProgress {
  std::size_t items = 0;
  std::size_t completed = 0;
  std::uint64_t arrived = 0;     ///< bytes
  std::uint64_t total = 0;       ///< bytes of the items whose size is known
  std::size_t unknownSizes = 0;  ///< items whose size is not known
  bool isPaused = false;         ///< nothing is downloaded until it is resumed

  void add(const ItemState& item);

  /// Takes an item off that was added as it is now.
  void remove(const ItemState& item);

  bool operator==(const QueueProgress&) const = default;
};

QueueProgress progressOf(const std::vector<ItemState>& queue, bool isPaused);

}  // namespace playerx::model
