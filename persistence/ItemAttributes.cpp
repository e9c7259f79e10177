#include "persistence/ItemAttributes.h"

#include <cstdint>
#include <utility>

#include "kvpm/StringTools.h"
#include "persistence/XmlDocument.h"

namespace persistence {
namespace {

using kvpm::StringTools;

bool isOfFormat(const xmlNode& root, const ItemFormat& format) {
  if (!isElement(root, format.rootName)) return false;
  if (format.version == nullptr) return true;
  const XmlString version = attributeOf(root, format.version);
  return version != nullptr && StringTools::stringToInt32(plainText(version)) == 1;
}

std::unique_ptr<DownloadItem> readItem(const xmlNode& element,
                                       std::span<const ItemAttribute> attributes) {
  auto item = std::make_unique<DownloadItem>();
  for (const ItemAttribute& attribute : attributes) {
    const XmlString value = attributeOf(element, attribute.name);
    const char* const text = value != nullptr ? plainText(value) : attribute.whenAbsent;
    if (text != nullptr) attribute.read(*item, text);
  }
  return item;
}

}  // namespace

std::optional<ItemList> readItems(std::string bytes, const ItemFormat& format) {
  const XmlReports reports;
  const XmlDocument document = parseXml(std::move(bytes), reports);
  if (document == nullptr) return std::nullopt;
  const xmlNode* const root = xmlDocGetRootElement(document.get());
  if (root == nullptr || !isOfFormat(*root, format)) return std::nullopt;
  ItemList items;
  for (const xmlNode* child = root->children; child != nullptr; child = child->next) {
    if (!isElement(*child, format.elementName)) continue;
    items.push_back(readItem(*child, format.attributes));
  }
  if (reports.outOfMemory()) return std::nullopt;
  return items;
}

void readContentEncryptionUsageId(DownloadItem& item, const char* text) {
  item.setContentEncryptionUsageId(StringTools::stringToInt32(text));
}

void readFileSize(DownloadItem& item, const char* text) {
  item.setSize(StringTools::stringToUint64(text));
}

void readTicket(DownloadItem& item, const char* text) { item.setTicket(text); }

void readTimeRemaining(DownloadItem& item, const char* text) {
  item.setTimeRemaining(static_cast<std::uint32_t>(StringTools::stringToUint64(text)));
}

void readEncrypted(DownloadItem& item, const char* text) {
  item.setEncrypted(StringTools::stringToBool(text));
}

void readTicketAlreadyTorn(DownloadItem& item, const char* text) {
  item.setTicketAlreadyTorn(StringTools::stringToBool(text));
}

}  // namespace persistence
