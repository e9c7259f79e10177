#pragma once

#include <filesystem>
#include <functional>
#include <vector>

#include "playerx/app/model/FolderNames.h"
#include "playerx/app/reasons/ReasonFile.h"
#include "playerx/app/session/Places.h"
#include "playerx/app/session/QueueRequest.h"

namespace playerx::cli {

class Reporter;

/// Tells the user of one thing that happened to the queue.
void present(const session::QueueEvent& event, Reporter& reporter);

/// Tells the user what became of a request, without its items. Returns the program's exit status.
int present(const session::Reply& reply, Reporter& reporter);

/// Says that a film which was to be fetched was taken out of the queue.
void noteRemoved(const model::ItemState& item, Reporter& reporter);

/// Says so when a queue has no items.
void noteIfEmpty(std::size_t items, Reporter& reporter);

/// Says which items of a queue a command has left as they were, because they are paused or had
/// failed before; of those alone for which `isMeant` holds, given their ids.
void noteWhatIsLeft(const std::vector<model::ItemState>& queue,
                    const std::function<bool(unsigned int)>& isMeant, Reporter& reporter);

/// Prints a queue of these places, item by item: why its items failed, what is odd about its films,
/// and with `isLong` their addresses.
class QueuePrint {
 public:
  /// `reporter` outlives it.
  QueuePrint(const session::Places& places, bool isLong, Reporter& reporter);

  /// `progress` is that of an item that arrives.
  void add(const model::ItemState& item, const model::Progress& progress = {});

  /// `isPaused` says that the whole queue waits.
  void end(bool isPaused = false);

 private:
  const std::filesystem::path media_;
  model::FolderNames folders_;
  const bool isLong_;
  Reporter& reporter_;
  const reasons::ReasonFile reasons_;
  model::QueueProgress sum_;
};

}  // namespace playerx::cli
