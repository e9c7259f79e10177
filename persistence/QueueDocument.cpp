#include "persistence/QueueDocument.h"

#include <array>
#include <cstdint>
#include <memory>
#include <utility>

#include "kvpm/StringTools.h"
#include "persistence/DownloadManagerPersistence.h"
#include "persistence/ItemAttributes.h"
#include "persistence/XmlDocument.h"
#include "persistence/XmlText.h"

namespace persistence {
namespace {

using kvpm::StringTools;
using VeskPlayerX::DownloadItemInterface;

constexpr const char* kXmlVersion = "1.0";
constexpr const char* kRoot = "DownloadQueue";
constexpr const char* kElement = "DownloadItem";

/// UTF-8 of wide text, as much of it as XML carries within `limit` bytes.
std::string writtenText(const std::wstring& text, std::size_t limit) {
  const std::unique_ptr<unsigned char[]> bytes(
      DownloadManagerPersistence::wstringToUtf8(carriedByXml(text, limit)));
  return reinterpret_cast<const char*>(bytes.get());
}

/// A signed value printed as an unsigned one of 64 bits: -1 becomes 18446744073709551615.
std::string writtenSignExtended(std::int32_t value) {
  return StringTools::uint64ToString(static_cast<std::uint64_t>(std::int64_t{value}));
}

std::wstring readText(const char* text) {
  return DownloadManagerPersistence::utf8ToWstring(xmlText(text));
}

struct WrittenAttribute {
  const char* name;
  std::string (*text)(const DownloadItemInterface& item, std::size_t limit);
};

constexpr std::array<WrittenAttribute, 12> kWrittenAttributes{{
    {"title", [](const auto& item, auto limit) { return writtenText(item.getTitle(), limit); }},
    {"contentEncryptionUsageID",
     [](const auto& item, auto) {
       return writtenSignExtended(static_cast<std::int32_t>(item.getContentEncryptionUsageId()));
     }},
    {"status", [](const auto& item, auto) { return StringTools::int32ToString(item.getStatus()); }},
    {"fileSize",
     [](const auto& item, auto) { return StringTools::uint64ToString(item.getSize()); }},
    {"percentDownloaded",
     [](const auto& item, auto) { return writtenSignExtended(item.getPercentDownloaded()); }},
    {"filePath", [](const auto& item, auto limit) { return writtenText(item.getPath(), limit); }},
    {"ticket", [](const auto& item, auto limit) { return carriedByXml(item.getTicket(), limit); }},
    {"timeRemaining",
     [](const auto& item, auto) {
       return StringTools::int32ToString(static_cast<std::int32_t>(item.getTimeRemaining()));
     }},
    {"contentProviderDisplayName",
     [](const auto& item, auto limit) {
       return writtenText(item.getContentProviderDisplayName(), limit);
     }},
    {"encrypted",
     [](const auto& item, auto) { return StringTools::boolToString(item.getEncrypted()); }},
    {"ticketAlreadyTorn",
     [](const auto& item, auto) { return StringTools::boolToString(item.getTicketAlreadyTorn()); }},
    {"url", [](const auto& item, auto limit) { return writtenText(item.getUrl(), limit); }},
}};

/// An item that was held when the player ended is taken for one that was downloading.
void readStatus(DownloadItem& item, const char* text) {
  const auto status = static_cast<DownloadStatusEnumType>(StringTools::stringToInt32(text));
  item.setStatus(status == DownloadStatusHeld ? DownloadStatusDownloading : status);
}

/// Written sign-extended, so read as 64 bits.
void readPercentDownloaded(DownloadItem& item, const char* text) {
  item.setPercentDownloaded(static_cast<std::int32_t>(StringTools::stringToUint64(text)));
}

constexpr std::array<ItemAttribute, 12> kReadAttributes{{
    {"contentEncryptionUsageID", readContentEncryptionUsageId},
    {"status", readStatus},
    {"fileSize", readFileSize},
    {"percentDownloaded", readPercentDownloaded},
    {"title", readTitle<readText>},
    {"ticket", readTicket},
    {"filePath", readFilePath<readText>},
    {"timeRemaining", readTimeRemaining},
    {"contentProviderDisplayName", readContentProviderDisplayName<readText>},
    {"encrypted", readEncrypted},
    {"ticketAlreadyTorn", readTicketAlreadyTorn},
    {"url", readUrl<readText>},
}};

bool appendItem(xmlNode& root, const DownloadItemInterface& item, std::size_t limit) {
  xmlNode* const element = xmlNewChild(&root, nullptr, xmlText(kElement), nullptr);
  if (element == nullptr) return false;
  for (const WrittenAttribute& attribute : kWrittenAttributes) {
    const std::string text = attribute.text(item, limit);
    const auto* added = xmlNewProp(element, xmlText(attribute.name), xmlText(text.c_str()));
    if (added == nullptr) return false;
  }
  return true;
}

/// A document with an empty root; null when there is no memory.
XmlDocument newDocument() {
  XmlDocument document(xmlNewDoc(xmlText(kXmlVersion)));
  xmlNode* const root = document ? xmlNewNode(nullptr, xmlText(kRoot)) : nullptr;
  if (root == nullptr) return nullptr;
  xmlDocSetRootElement(document.get(), root);
  return document;
}

}  // namespace

std::size_t longestValueIn(const std::vector<DownloadItemInterface*>& items) {
  std::vector<std::size_t> lengths;
  lengths.reserve(items.size() * 5);
  for (const DownloadItemInterface* item : items) {
    lengths.insert(lengths.end(),
                   {item->getTitle().size(), item->getPath().size(), item->getUrl().size(),
                    item->getTicket().size(), item->getContentProviderDisplayName().size()});
  }
  return longestValueFor(lengths);
}

std::optional<std::string> writeQueueElement(const DownloadItemInterface& item, std::size_t limit) {
  const XmlReports reports;
  const XmlDocument document = newDocument();
  if (document == nullptr) return std::nullopt;
  if (!appendItem(*xmlDocGetRootElement(document.get()), item, limit)) return std::nullopt;
  std::optional<std::string> text = serialiseXml(*document, reports);
  if (!text) return std::nullopt;
  const std::size_t length = text->size() - kQueueBeginning.size() - kQueueEnd.size();
  return text->substr(kQueueBeginning.size(), length);
}

std::optional<ItemList> readQueueDocument(std::string bytes) {
  return readItems(std::move(bytes), {kRoot, kElement, nullptr, kReadAttributes});
}

}  // namespace persistence
