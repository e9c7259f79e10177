#include "playerx/cli/QueueCommands.h"

#include <string>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "playerx/app/model/ItemState.h"
#include "playerx/cli/Options.h"
#include "playerx/cli/Reporter.h"

namespace playerx::cli {

namespace {

using model::ItemState;
using VeskPlayerX::DownloadManagerInterface;

int list(const std::vector<ItemState>& queue, Reporter& reporter) {
  int position = 0;
  for (const ItemState& item : queue) reporter.listed(++position, item);
  if (queue.empty()) reporter.note("The queue is empty.");
  return kExitDone;
}

int retry(const ItemState& item, DownloadManagerInterface& manager, Reporter& reporter) {
  if (item.status != DownloadStatusFailed) {
    reporter.note("Only a failed item can be retried; this one is " +
                  std::string(model::statusWord(item.status)) + ".");
    return kExitFailed;
  }
  manager.retry(item.id);
  reporter.note("Queued again; `get` downloads it.");
  return kExitDone;
}

int move(const ItemState& item, Options::Direction direction, DownloadManagerInterface& manager,
         Reporter& reporter) {
  bool moved = true;
  switch (direction) {
    case Options::kUp:
      moved = manager.moveUp(item.id);
      break;
    case Options::kDown:
      moved = manager.moveDown(item.id);
      break;
    case Options::kTop:
      manager.moveToTop(item.id);
      break;
    case Options::kBottom:
      manager.moveToBottom(item.id);
      break;
  }
  if (!moved) reporter.note("The item cannot move any further.");
  return moved ? kExitDone : kExitFailed;
}

int editItem(const Options& options, const ItemState& item, DownloadManagerInterface& manager,
             Reporter& reporter) {
  switch (options.command) {
    case Options::kRemove:
      return manager.remove(item.id) ? kExitDone : kExitFailed;
    case Options::kRetry:
      return retry(item, manager, reporter);
    default:
      return move(item, options.direction, manager, reporter);
  }
}

}  // namespace

int runQueueCommand(const Options& options, DownloadManagerInterface& manager, Reporter& reporter) {
  const std::vector<ItemState> queue = model::snapshotOf(manager);
  if (options.command == Options::kList) return list(queue, reporter);
  if (options.command == Options::kClear) {
    manager.clearCompletedDownloads();
    return kExitDone;
  }
  const auto index = static_cast<std::size_t>(options.position) - 1;
  if (index >= queue.size()) {
    reporter.note("There is no item " + std::to_string(options.position) + "; the queue holds " +
                  std::to_string(queue.size()) + ".");
    return kExitUsage;
  }
  return editItem(options, queue[index], manager, reporter);
}

}  // namespace playerx::cli
