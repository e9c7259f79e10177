#pragma once

#include <functional>
#include <optional>
#include <string>

#include "plugin/TransferControl.h"

namespace plugin {

/// Where items stand in the queue: moved up and down, or taken out of it.
///
/// The first item is the one that is downloaded, so a move that changes it stops the transfer and
/// gives the two items that change places the states of their new ones. Operations of the
/// interface, for all threads; each takes the operation lock by itself, and does nothing when it
/// has to give way.
class Moves {
 public:
  /// Nothing is owned, and all outlives this object.
  Moves(SharedQueue& queue, OperationLock& lock, TransferControl& transfers)
      : queue_(queue), lock_(lock), transfers_(transfers) {}

  bool moveUp(unsigned int id);
  bool moveDown(unsigned int id);
  void moveToTop(unsigned int id);
  void moveToBottom(unsigned int id);
  void resumeDownloadingFile(const std::wstring& path);
  bool remove(unsigned int id);
  void clearCompletedDownloads();

 private:
  using Step = std::function<bool(DownloadQueue&)>;

  /// The two items at the top.
  struct Top {
    ItemState head;
    ItemState second;
  };

  std::optional<Top> top();
  bool move(const std::optional<Top>& changing, const Step& step) KVPM_REQUIRES(kOperationLock);
  void swapStates(const Top& top, bool isPaused) KVPM_REQUIRES(kOperationLock);

  SharedQueue& queue_;
  OperationLock& lock_;
  TransferControl& transfers_;
};

}  // namespace plugin
