#pragma once

#include <optional>
#include <span>
#include <string>

#include "item/DownloadItem.h"
#include "persistence/ItemList.h"

/// What both queue formats share: documents whose root has one element per item, each with the
/// item's fields as attributes.
namespace persistence {

/// An attribute of an item's element and the field that it is read into.
struct ItemAttribute {
  const char* name;
  void (*read)(DownloadItem& item, const char* text);
  const char* whenAbsent = nullptr;  ///< read in its place; null: the item's default stays
};

/// The shape of a format.
struct ItemFormat {
  const char* rootName;
  const char* elementName;
  const char* version;  ///< attribute of the root that must read 1; null for none
  std::span<const ItemAttribute> attributes;  ///< in the order in which they are read
};

/// The items of a document in its order; nothing when it is malformed, has another root, or could
/// not be read whole for lack of memory.
std::optional<ItemList> readItems(std::string bytes, const ItemFormat& format);

void readContentEncryptionUsageId(DownloadItem& item, const char* text);
void readFileSize(DownloadItem& item, const char* text);
void readTicket(DownloadItem& item, const char* text);
void readTimeRemaining(DownloadItem& item, const char* text);
void readEncrypted(DownloadItem& item, const char* text);
void readTicketAlreadyTorn(DownloadItem& item, const char* text);

/// Wide text, which each format spells in its own way.
using TextReader = std::wstring (*)(const char* text);

template <TextReader kText>
void readTitle(DownloadItem& item, const char* text) {
  item.setTitle(kText(text));
}

template <TextReader kText>
void readFilePath(DownloadItem& item, const char* text) {
  item.setPath(kText(text));
}

template <TextReader kText>
void readContentProviderDisplayName(DownloadItem& item, const char* text) {
  item.setContentProviderDisplayName(kText(text));
}

template <TextReader kText>
void readUrl(DownloadItem& item, const char* text) {
  item.setUrl(kText(text));
}

}  // namespace persistence
