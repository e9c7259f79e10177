#include "tests/unit/persistence/LibraryDocument.h"

#include <libxml/tree.h>
#include <libxml/xmlsave.h>

#include <memory>

#include "persistence/DownloadManagerPersistence.h"
#include "persistence/XmlText.h"

namespace persistence {
namespace {

using VeskPlayerX::DownloadItemInterface;

const xmlChar* xmlText(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

std::string utf8(const std::wstring& text) {
  const std::unique_ptr<unsigned char[]> bytes(
      DownloadManagerPersistence::wstringToUtf8(carriedByXml(text)));
  return reinterpret_cast<const char*>(bytes.get());
}

std::string unsignedText(std::int32_t value) {
  return std::to_string(static_cast<std::uint64_t>(std::int64_t{value}));
}

void addItem(xmlNode* root, const DownloadItemInterface& item) {
  xmlNode* const element = xmlNewChild(root, nullptr, xmlText("DownloadItem"), nullptr);
  const auto add = [element](const char* name, const std::string& value) {
    xmlNewProp(element, xmlText(name), xmlText(value.c_str()));
  };
  add("title", utf8(item.getTitle()));
  add("contentEncryptionUsageID",
      unsignedText(static_cast<std::int32_t>(item.getContentEncryptionUsageId())));
  add("status", std::to_string(item.getStatus()));
  add("fileSize", std::to_string(item.getSize()));
  add("percentDownloaded", unsignedText(item.getPercentDownloaded()));
  add("filePath", utf8(item.getPath()));
  add("ticket", carriedByXml(item.getTicket()));
  add("timeRemaining", std::to_string(static_cast<std::int32_t>(item.getTimeRemaining())));
  add("contentProviderDisplayName", utf8(item.getContentProviderDisplayName()));
  add("encrypted", item.getEncrypted() ? "true" : "false");
  add("ticketAlreadyTorn", item.getTicketAlreadyTorn() ? "true" : "false");
  add("url", utf8(item.getUrl()));
}

}  // namespace

std::string libraryDocument(const std::vector<DownloadItemInterface*>& items) {
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(xmlNewDoc(xmlText("1.0")),
                                                                xmlFreeDoc);
  xmlNode* const root = xmlNewNode(nullptr, xmlText("DownloadQueue"));
  xmlDocSetRootElement(document.get(), root);
  for (const DownloadItemInterface* item : items) addItem(root, *item);
  xmlChar* text = nullptr;
  int size = 0;
  xmlDocDumpFormatMemoryEnc(document.get(), &text, &size, "UTF-8", 0);
  const std::string result(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
  xmlFree(text);
  return result;
}

}  // namespace persistence
