#pragma once

#include <QHash>
#include <chrono>
#include <functional>
#include <optional>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/model/SpeedMeter.h"
#include "playerx/app/reasons/Reason.h"
#include "playerx/transfers/TransferReports.h"
#include "playerx/window/model/QueueUpdate.h"
#include "playerx/window/queue/TimeLeft.h"

namespace playerx::window {

/// Turns looks at the download manager's queue into updates for the window: what has changed since
/// the look before, with the numbers that the player itself measures. Used on one thread.
class FilmBook {
 public:
  using Clock = model::SpeedMeter::Clock;

  /// The download library's report on an address; nullopt without a transfer.
  using FindTransfer = std::function<std::optional<TransferReport>(const std::string& address)>;

  explicit FilmBook(FindTransfer findTransfer);

  /// What is different from the queue at the last call, all of it at the first one; nullopt when
  /// nothing is.
  std::optional<QueueUpdate> update(const std::vector<model::ItemState>& queue, bool isPaused,
                                    Clock::time_point now);

  /// Why an item failed, shown from the next update on.
  void explain(FilmId id, const reasons::Explanation& explanation);

 private:
  struct Page {
    Film film;            ///< as it was told last
    FilmFailure failure;  ///< why it failed, as long as it has
    model::SpeedMeter speed;
    TimeLeft timeLeft;
  };

  Film filmOf(const model::ItemState& item, Page& page, Clock::time_point now);
  void measure(const model::ItemState& item, Film& film, Page& page, Clock::time_point now);

  const FindTransfer findTransfer_;
  QHash<FilmId, Page> pages_;
  std::optional<QList<FilmId>> order_;  // nullopt before the first update
  bool isPaused_ = false;
};

}  // namespace playerx::window
