#include "persistence/QueueDocument.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "kvpm/StringTools.h"
#include "persistence/ItemAttributes.h"
#include "persistence/WideText.h"

namespace persistence {
namespace {

/// The shape of a format's documents.
struct DocumentFormat {
  std::string_view root;
  std::string_view
      version;  ///< attribute of the root that must read 1; empty when there is no such attribute
  std::string_view element;
  Spelling spelling;
};

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

std::wstring wideText(std::string_view value) {
  // Most texts are ASCII; the buffers of a conversion would fragment the memory of a long queue.
  if (std::all_of(value.begin(), value.end(), isAscii)) return {value.begin(), value.end()};
  return wideOf(value);
}

/// An item that was held when the player ended counts as one that was downloading.
DownloadStatusEnumType statusOf(std::int32_t value) {
  const auto status = static_cast<DownloadStatusEnumType>(value);
  return status == DownloadStatusHeld ? DownloadStatusDownloading : status;
}

DownloadStatusEnumType legacyStatus(std::int32_t value) {
  return static_cast<DownloadStatusEnumType>(value);
}

constexpr DocumentFormat kCurrentFormat{"DownloadQueue", {}, kItemElement, {wideText, statusOf}};

constexpr DocumentFormat kLegacyFormat{"DownloadManagerDataContainer",
                                       "version",
                                       "DownloadManagerVideoElement",
                                       {decodedText, legacyStatus}};

/// Builds the items of a document while it is read.
class ItemBuilder : public XmlHandler {
 public:
  explicit ItemBuilder(const DocumentFormat& format) : format_(format) {}

  bool onElement(int depth, std::string_view name, const XmlAttributes& attributes) override {
    if (depth == 0) return isRoot(name, attributes);
    if (depth == 1 && name == format_.element) items_.push_back(itemOf(attributes));
    return true;
  }

  ItemList takeItems() { return std::move(items_); }

 private:
  bool isRoot(std::string_view name, const XmlAttributes& attributes) const {
    if (name != format_.root) return false;
    if (format_.version.empty()) return true;
    const auto version = attributes.find(format_.version);
    return version && kvpm::StringTools::stringToInt32(std::string(*version)) == 1;
  }

  std::unique_ptr<DownloadItem> itemOf(const XmlAttributes& attributes) const {
    auto item = std::make_unique<DownloadItem>();
    for (const ItemAttribute& attribute : kItemAttributes) {
      const auto value = attributes.find(attribute.name);
      if (value) attribute.read(*value, format_.spelling, *item);
    }
    return item;
  }

  const DocumentFormat& format_;
  ItemList items_;
};

}  // namespace

QueueFormat formatOf(std::string_view head) {
  if (head.empty() || head == kEmptyQueueDocument) return QueueFormat::kEmpty;
  if (head.size() < kQueueHeadSize) return QueueFormat::kUnknown;
  if (head.starts_with(kLegacyHeader)) return QueueFormat::kLegacy;
  return head.starts_with(kQueueDeclaration) ? QueueFormat::kCurrent : QueueFormat::kUnknown;
}

QueueReading readQueueDocument(std::string_view bytes, QueueFormat format) {
  return readQueueDocument(sourceOf(bytes), format);
}

QueueReading readQueueDocument(const XmlSource& source, QueueFormat format) {
  ItemBuilder builder(format == QueueFormat::kLegacy ? kLegacyFormat : kCurrentFormat);
  switch (readXml(source, builder)) {
    case XmlResult::kRead:
      return {QueueOutcome::kRead, builder.takeItems()};
    case XmlResult::kRefused:
      return {QueueOutcome::kRefused, {}};
    case XmlResult::kOutOfMemory:
    case XmlResult::kUnreadable:
      break;
  }
  return {QueueOutcome::kUnavailable, {}};
}

}  // namespace persistence
