// Random documents are read as the tree that the XML library builds of them.
#include <gmock/gmock.h>
#include <libxml/parser.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "persistence/QueueDocument.h"

namespace persistence {
namespace {

using Texts = std::vector<std::string>;

bool hasName(const xmlNode& node, const char* name) {
  return xmlStrEqual(node.name, reinterpret_cast<const xmlChar*>(name)) != 0;
}

std::string ticketOf(const xmlNode& node) {
  const std::unique_ptr<xmlChar, xmlFreeFunc> value(
      xmlGetProp(&node, reinterpret_cast<const xmlChar*>("ticket")), xmlFree);
  return value ? reinterpret_cast<const char*>(value.get()) : "";
}

Texts ticketsInTree(const std::string& bytes) {
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
      xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), "noname.xml", nullptr,
                    XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
      xmlFreeDoc);
  const xmlNode* const root = document ? xmlDocGetRootElement(document.get()) : nullptr;
  if (root == nullptr || !hasName(*root, "DownloadQueue")) return {};
  Texts tickets;
  for (const xmlNode* node = root->children; node != nullptr; node = node->next) {
    const bool isItem = node->type == XML_ELEMENT_NODE && hasName(*node, "DownloadItem");
    if (isItem) tickets.push_back(ticketOf(*node));
  }
  return tickets;
}

Texts ticketsRead(const std::string& bytes) {
  Texts tickets;
  for (const auto& item : readQueueDocument(bytes, QueueFormat::kCurrent).items) {
    tickets.push_back(item->getTicket());
  }
  return tickets;
}

/// Builds documents out of pieces of markup, most of them well-formed.
class RandomDocuments {
 public:
  std::string next() {
    const std::string root = any({"DownloadQueue", "DownloadQueue", "x:DownloadQueue", "Other"});
    std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    document += any({"", "<!-- c --><?p?>", "<!DOCTYPE DownloadQueue>",
                     "<!DOCTYPE q [<!ATTLIST DownloadItem ticket NMTOKENS #IMPLIED>]>"});
    document += "<" + root + any({"", " xmlns:x='r'", " xmlns='d'", " a='1'"}) + ">";
    for (std::size_t count = random_() % 6; count > 0; --count) document += any(kPieces);
    return document + "</" + root + ">" + (random_() % 8 == 0 ? any(kPieces) : "\n");
  }

 private:
  std::string any(const Texts& texts) { return texts[random_() % texts.size()]; }

  const Texts kPieces{"<DownloadItem ticket='1'/>",
                      "<DownloadItem ticket=\"&amp;&lt;&quot;&#10;&#x41;>\"/>",
                      "<DownloadItem ticket='  a\n\t b '>",
                      "</DownloadItem>",
                      "<DownloadItem xmlns:x='k' x:ticket='2' ticket='3'/>",
                      "<x:DownloadItem y:ticket='4'/>",
                      "<other>",
                      "</other>",
                      "<!-- <DownloadItem/> -->",
                      "<![CDATA[<DownloadItem/>]]>",
                      "<?p <DownloadItem/>?>",
                      " text &gt; ",
                      "&unknown;",
                      "\xC3\xA4",
                      "\xFF",
                      "<"};
  std::mt19937 random_{1};
};

TEST(LibraryTree, HoldsTheItemsThatAreRead) {
  RandomDocuments documents;
  int filled = 0;
  for (int count = 0; count < 20'000; ++count) {
    const std::string document = documents.next();
    const Texts tickets = ticketsInTree(document);
    ASSERT_EQ(ticketsRead(document), tickets) << document;
    if (!tickets.empty()) ++filled;
  }
  EXPECT_GT(filled, 1'000);
}

std::string queueOf(const std::string& content) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>" + content +
         "</DownloadQueue>\n";
}

TEST(LibraryTree, ElementsAreReadAsDeepAsItHasThem) {
  for (const std::size_t depth : {100U, 254U, 255U, 256U, 257U, 258U, 1'000U}) {
    std::string nested = "<DownloadItem ticket='1'/>";
    for (std::size_t i = 0; i < depth; ++i) nested = "<a>" + nested + "</a>";
    const std::string document = queueOf("<DownloadItem ticket='2'/>" + nested);
    EXPECT_EQ(ticketsRead(document), ticketsInTree(document)) << depth;
  }
}

TEST(LibraryTree, ValuesAreReadAsLongAsItHasThem) {
  for (const std::size_t length : {9'000'000U, 10'000'001U, 20'000'000U}) {
    const std::string document =
        queueOf("<DownloadItem ticket='1'/><DownloadItem ticket='" + std::string(length, 'a') +
                "'/><DownloadItem ticket='2'/>");
    EXPECT_TRUE(ticketsRead(document) == ticketsInTree(document)) << length;
  }
}

}  // namespace
}  // namespace persistence
