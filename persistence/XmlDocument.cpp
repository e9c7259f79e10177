#include "persistence/XmlDocument.h"

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/xmlIO.h>
#include <libxml/xmlsave.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

#include "persistence/XmlGuard.h"

namespace persistence {
namespace {

constexpr const char* kDocumentName = "noname.xml";
constexpr const char* kEncoding = "UTF-8";
constexpr int kNoOptions = 0;
constexpr int kNoFormatting = 0;

/// Near the end of its input the library refuses to go on when more than 10,000,000 bytes lie
/// behind the last place where it let go of input, and it lets go only between pieces of markup
/// that stand less than 500 bytes before the end. Comments behind the root give it such places, so
/// that long values are read wherever they stand.
constexpr std::size_t kLookBack = 9'000'000;
constexpr const char* kRestingPlace = "\n<!---->";
constexpr int kRestingPlaces = 128;

void appendRestingPlaces(std::string& bytes) {
  bytes.reserve(bytes.size() + kRestingPlaces * std::strlen(kRestingPlace));
  for (int place = 0; place < kRestingPlaces; ++place) bytes += kRestingPlace;
}

/// Takes the next bytes of a document. The library's own dump into memory moves what is left of a
/// document for every piece that it converts, which takes minutes for a large one.
int appendTo(void* text, const char* bytes, int count) {
  try {
    static_cast<std::string*>(text)->append(bytes, static_cast<std::size_t>(count));
    return count;
  } catch (const std::bad_alloc&) {
    return -1;
  }
}

}  // namespace

XmlReports::XmlReports()
    : formerHandler_(xmlStructuredError), formerContext_(xmlStructuredErrorContext) {
  xmlSetStructuredErrorFunc(this, onReport);
}

XmlReports::~XmlReports() { xmlSetStructuredErrorFunc(formerContext_, formerHandler_); }

void XmlReports::onReport(void* reports, xmlErrorPtr report) {
  auto& self = *static_cast<XmlReports*>(reports);
  self.any_ = true;
  if (report == nullptr || report->code == XML_ERR_NO_MEMORY) self.outOfMemory_ = true;
}

XmlDocument parseXml(std::string bytes, const XmlReports& /*reports*/) {
  if (!isHarmlessXml(bytes)) return nullptr;
  if (bytes.size() > kLookBack) appendRestingPlaces(bytes);
  if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return nullptr;
  return XmlDocument(xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), kDocumentName,
                                   nullptr, kNoOptions));
}

std::optional<std::string> serialiseXml(xmlDoc& document, const XmlReports& reports) {
  std::string text;
  xmlOutputBuffer* const output = xmlOutputBufferCreateIO(appendTo, nullptr, &text, nullptr);
  // Frees `output`, whatever happens.
  const int size = xmlSaveFormatFileTo(output, &document, kEncoding, kNoFormatting);
  if (size < 0 || reports.any()) return std::nullopt;
  return text;
}

bool isElement(const xmlNode& node, const char* name) {
  return node.type == XML_ELEMENT_NODE && xmlStrEqual(node.name, xmlText(name)) != 0;
}

XmlString attributeOf(const xmlNode& element, const char* name) {
  return XmlString(xmlGetProp(&element, xmlText(name)));
}

}  // namespace persistence
