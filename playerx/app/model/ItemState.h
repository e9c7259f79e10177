#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "VeskPlayerX/DownloadStatus.h"

namespace VeskPlayerX {
class DownloadItemInterface;
class DownloadManagerInterface;
}  // namespace VeskPlayerX

namespace playerx::model {

/// What the player shows of one queued item: a copy, text in UTF-8.
struct ItemState {
  unsigned int id = 0;  ///< valid within this run
  std::string title;
  std::string provider;
  std::string url;
  std::string path;  ///< empty until the module has chosen one
  DownloadStatusEnumType status = DownloadStatusQueued;
  int percent = 0;         ///< 0..100
  std::uint64_t size = 0;  ///< bytes; 0 until known
  bool playable = false;   ///< playback may begin before the whole film is there
  std::string ticket;      ///< opaque bytes; empty for an item without ticket

  bool operator==(const ItemState&) const = default;
};

/// The state of one item of a copied queue.
ItemState stateOf(const VeskPlayerX::DownloadItemInterface& item);

/// The whole queue in its order. May be called from any thread that may call the manager.
std::vector<ItemState> snapshotOf(VeskPlayerX::DownloadManagerInterface& manager);

/// What people know an item by: its title, or else its address.
std::string displayName(const ItemState& item);

/// One word for a status: "paused", "queued", "starting", "downloading", "completed", "stopped",
/// "failed", "held"; "unknown" for any other value.
const char* statusWord(DownloadStatusEnumType status);

/// Whether the module will still work on an item of this status by itself.
bool isUnfinished(DownloadStatusEnumType status);

}  // namespace playerx::model
