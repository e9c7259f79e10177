#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace persistence {

/// Writes a queue as an XML document, one element per item in their order, and remembers each
/// item's element: the queue is written anew at every change of one item, and the others need not
/// be turned into XML again.
///
/// Remembers no more items than the queue that was written last holds. Used by one thread at a
/// time.
class WrittenQueue {
 public:
  /// The whole document; nothing when it could not be built whole.
  std::optional<std::string> document(
      const std::vector<VeskPlayerX::DownloadItemInterface*>& items);

 private:
  /// Everything that an element depends on.
  struct Fields {
    std::wstring title;
    std::wstring path;
    std::wstring provider;
    std::wstring url;
    std::string ticket;
    std::uint64_t size;
    long usageId;
    unsigned long timeRemaining;
    std::int32_t status;
    int percent;
    bool encrypted;
    bool torn;
    std::size_t limit;

    Fields(const VeskPlayerX::DownloadItemInterface& item, std::size_t limit);
    bool operator==(const Fields&) const = default;
  };

  struct Element {
    Fields fields;
    std::string text;
  };

  using Elements = std::unordered_map<unsigned int, Element>;

  const std::string* elementOf(const VeskPlayerX::DownloadItemInterface& item, std::size_t limit,
                               Elements& kept);

  Elements elements_;  // by the item's id
};

}  // namespace persistence
