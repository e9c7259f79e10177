#include "playerx/app/model/ItemState.h"

#include <algorithm>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "kvpm/StringTools.h"

namespace playerx::model {

using kvpm::StringTools;

namespace {

int shownPercent(const VeskPlayerX::DownloadItemInterface& item) {
  return std::clamp(item.getPercentDownloaded(), 0, 100);
}

/// Whether `text` is `utf8` in wide characters. Most texts are ASCII and need not be converted.
bool isSameText(const std::string& utf8, const std::wstring& text) {
  const bool isSame =
      std::equal(utf8.begin(), utf8.end(), text.begin(), text.end(), [](char narrow, wchar_t wide) {
        return static_cast<wchar_t>(narrow) == wide && narrow >= 0;
      });
  return isSame || (utf8.size() >= text.size() && utf8 == StringTools::wStringToString(text));
}

}  // namespace

ItemState stateOf(const VeskPlayerX::DownloadItemInterface& item) {
  ItemState state;
  state.id = item.getId();
  state.title = StringTools::wStringToString(item.getTitle());
  state.provider = StringTools::wStringToString(item.getContentProviderDisplayName());
  state.url = StringTools::wStringToString(item.getUrl());
  state.path = StringTools::wStringToString(item.getPath());
  state.status = item.getStatus();
  state.percent = shownPercent(item);
  state.size = item.getSize();
  state.playable = item.getReadyForProgressivePlayback();
  state.ticket = item.getTicket();
  return state;
}

bool isStateOf(const ItemState& state, const VeskPlayerX::DownloadItemInterface& item) {
  return state.id == item.getId() && state.status == item.getStatus() &&
         state.percent == shownPercent(item) && state.size == item.getSize() &&
         state.playable == item.getReadyForProgressivePlayback() &&
         isSameText(state.path, item.getPath()) && isSameText(state.url, item.getUrl()) &&
         isSameText(state.title, item.getTitle()) && state.ticket == item.getTicket() &&
         isSameText(state.provider, item.getContentProviderDisplayName());
}

QueueCopy copyOf(VeskPlayerX::DownloadManagerInterface& manager) {
  return {manager.getCopyofQueue(), [&manager](auto* copy) { manager.deleteCopyOfQueue(copy); }};
}

std::vector<ItemState> snapshotOf(VeskPlayerX::DownloadManagerInterface& manager) {
  const QueueCopy copy = copyOf(manager);
  std::vector<ItemState> states;
  states.reserve(copy->size());
  for (const VeskPlayerX::DownloadItemInterface* item : *copy) states.push_back(stateOf(*item));
  return states;
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
