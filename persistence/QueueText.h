#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "persistence/EditedText.h"
#include "persistence/QueueFile.h"

namespace persistence {

/// The document of a queue, kept between saves: the queue is saved at every change of one item, and
/// only that item's element is written anew.
///
/// A `DownloadItem` counts its changes, so one that stays as it was costs a comparison of two
/// numbers. Any other kind of item is written anew each time. Nothing of the items themselves is
/// remembered. Used by one thread at a time.
class QueueText {
 public:
  using Items = std::vector<VeskPlayerX::DownloadItemInterface*>;

  /// Makes the text that of `items`, in their order. Returns whether it has changed. When
  /// `std::bad_alloc` is thrown, some of the changes are missing in it until the next update.
  bool update(const Items& items);

  /// The bytes [begin, end) of the text that the last update may have changed. Those behind them
  /// have another place when the text is longer or shorter than before.
  const ByteRange& change() const { return change_; }

  /// The whole document; empty before the first update.
  std::string_view text() const { return text_.view(); }

 private:
  /// An item's element in the text.
  struct Element {
    std::uint64_t version;     ///< of the item; 0 for one that does not count its changes
    std::uint32_t length;      ///< bytes
    std::uint32_t characters;  ///< of the item's texts, as `fitsDocument` wants them

    bool isOf(const VeskPlayerX::DownloadItemInterface& item) const;
  };

  /// Elements in a row, and what comes in their place.
  struct Edit {
    std::size_t first = 0;  ///< index of the first element
    std::size_t count = 0;
    std::size_t begin = 0;  ///< their place in the text
    std::size_t length = 0;
    std::vector<Element> elements;
    std::string text;

    void append(const VeskPlayerX::DownloadItemInterface& item, std::size_t limit,
                std::uint32_t characters);
  };

  class EditWriter;

  std::optional<bool> updateElements(const Items& items);
  Edit rewrite(const Items& items) const;
  bool apply(Edit edit);

  EditedText text_;
  ByteRange change_;
  std::vector<Element> elements_;  // of the items, in order; empty when no text can be kept
  std::uint64_t characters_ = 0;   // of all elements
};

}  // namespace persistence
