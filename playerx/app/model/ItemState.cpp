#include "playerx/app/model/ItemState.h"

#include <algorithm>
#include <memory>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "kvpm/StringTools.h"

namespace playerx::model {

using kvpm::StringTools;

ItemState stateOf(const VeskPlayerX::DownloadItemInterface& item) {
  ItemState state;
  state.id = item.getId();
  state.title = StringTools::wStringToString(item.getTitle());
  state.provider = StringTools::wStringToString(item.getContentProviderDisplayName());
  state.url = StringTools::wStringToString(item.getUrl());
  state.path = StringTools::wStringToString(item.getPath());
  state.status = item.getStatus();
  state.percent = std::clamp(item.getPercentDownloaded(), 0, 100);
  state.size = item.getSize();
  state.playable = item.getReadyForProgressivePlayback();
  state.ticket = item.getTicket();
  return state;
}

std::vector<ItemState> snapshotOf(VeskPlayerX::DownloadManagerInterface& manager) {
  const auto giveBack = [&manager](auto* copy) { manager.deleteCopyOfQueue(copy); };
  std::unique_ptr<std::vector<VeskPlayerX::DownloadItemInterface*>, decltype(giveBack)> copy(
      manager.getCopyofQueue(), giveBack);
  std::vector<ItemState> states;
  states.reserve(copy->size());
  for (const VeskPlayerX::DownloadItemInterface* item : *copy) states.push_back(stateOf(*item));
  return states;
}

std::string displayName(const ItemState& item) {
  return item.title.empty() ? item.url : item.title;
}

const char* statusWord(DownloadStatusEnumType status) {
  switch (status) {
    case DownloadStatusPaused:
      return "paused";
    case DownloadStatusQueued:
      return "queued";
    case DownloadStatusStarting:
      return "starting";
    case DownloadStatusDownloading:
      return "downloading";
    case DownloadStatusCompleted:
      return "completed";
    case DownloadStatusStopped:
      return "stopped";
    case DownloadStatusFailed:
      return "failed";
    case DownloadStatusHeld:
      return "held";
  }
  return "unknown";
}

bool isUnfinished(DownloadStatusEnumType status) {
  switch (status) {
    case DownloadStatusPaused:
    case DownloadStatusQueued:
    case DownloadStatusStarting:
    case DownloadStatusDownloading:
    case DownloadStatusHeld:
      return true;
    default:
      return false;
  }
}

}  // namespace playerx::model
