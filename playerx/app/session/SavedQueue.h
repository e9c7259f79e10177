#pragma once

#include <QByteArray>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "playerx/app/model/ItemState.h"

namespace VeskPlayerX {
class DownloadManagerInterface;
}

namespace playerx {

/// What the queue file says of one item, as far as the player compares it.
struct SavedItem {
  int status = 0;
  int percent = 0;
  std::uint64_t size = 0;  ///< bytes
  std::string url;

  bool operator==(const SavedItem&) const = default;
};

/// The items of a queue file with this content; none when it is no queue file.
std::optional<std::vector<SavedItem>> savedItems(const QByteArray& content);

/// Whether they are these items, in this order. Of an address that is not plain text, which the
/// file may spell in another way, nothing is asked.
bool holds(const std::vector<SavedItem>& saved, const std::vector<ItemState>& queue);

/// Watches over the queue file, which the module writes without a word when writing fails. Used on
/// the main thread.
class SavedQueue {
 public:
  /// `folder` is the player's data folder.
  explicit SavedQueue(const std::string& folder);

  /// Tries to write a new queue file and takes it away again. Returns one sentence on what prevents
  /// it; an empty text when nothing does.
  std::string obstacle() const;

  /// Has the module, to which a view is attached, write the queue once more. Returns one sentence
  /// when the file does not hold the queue all the same; an empty text when it does.
  std::string loss(VeskPlayerX::DownloadManagerInterface& manager) const;

 private:
  int tryToReplace() const;
  bool holdsNow(const std::vector<ItemState>& queue) const;

  const std::string file_;
};

}  // namespace playerx
