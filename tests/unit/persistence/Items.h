#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace persistence {

/// What a queue file keeps of an item, as a value that compares and prints. The defaults are those
/// of a new item.
struct Fields {
  std::wstring title;
  std::int32_t contentEncryptionUsageId = 0;
  std::int32_t status = 1;
  std::uint64_t fileSize = 0;
  std::int32_t percentDownloaded = 0;
  std::wstring filePath;
  std::string ticket;
  std::uint32_t timeRemaining = 0;
  std::wstring contentProviderDisplayName;
  bool encrypted = false;
  bool ticketAlreadyTorn = false;
  std::wstring url;

  bool operator==(const Fields&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Fields& fields);

/// A queue like the manager's: it owns its items and passes them on as interfaces.
class Queue {
 public:
  explicit Queue(const std::vector<Fields>& fields);

  const std::vector<VeskPlayerX::DownloadItemInterface*>& items() const { return items_; }

 private:
  std::vector<std::unique_ptr<VeskPlayerX::DownloadItemInterface>> owned_;
  std::vector<VeskPlayerX::DownloadItemInterface*> items_;
};

/// The fields of items that a reader has returned; deletes the items.
std::vector<Fields> takeFields(const std::vector<VeskPlayerX::DownloadItemInterface*>& items);

Fields fieldsOf(const VeskPlayerX::DownloadItemInterface& item);

/// No field has its default.
Fields everyFieldSet();

/// The defaults, except for the title.
Fields titled(const std::wstring& title);

}  // namespace persistence
