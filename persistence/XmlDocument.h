#pragma once

#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <memory>
#include <optional>
#include <string>

/// The door to the XML library: ownership, and what it reports.
namespace persistence {

/// Frees a whole document with all its nodes: pointers to them are good as long as it lives.
struct XmlDocumentFree {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using XmlDocument = std::unique_ptr<xmlDoc, XmlDocumentFree>;

/// Frees a text that the library handed over, with the library's own release.
struct XmlStringFree {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlString = std::unique_ptr<xmlChar, XmlStringFree>;

/// Takes the place of the calling thread's handler of the library's reports for as long as it
/// lives, so that nothing is printed and nothing that went wrong stays unknown.
class XmlReports {
 public:
  XmlReports();
  XmlReports(const XmlReports&) = delete;
  XmlReports& operator=(const XmlReports&) = delete;
  ~XmlReports();

  /// Whether the library has reported anything.
  bool any() const { return any_; }

  /// Whether it has reported that memory was missing; then content may be, too.
  bool outOfMemory() const { return outOfMemory_; }

 private:
  static void onReport(void* reports, xmlErrorPtr report);

  const xmlStructuredErrorFunc formerHandler_;
  void* const formerContext_;
  bool any_ = false;
  bool outOfMemory_ = false;
};

/// The document in `bytes`; null when they are not well-formed, not harmless, or too many. What
/// the library has to say goes to `reports`.
XmlDocument parseXml(std::string bytes, const XmlReports& reports);

/// The document as UTF-8 text without formatting; nothing when anything was reported since
/// `reports` began, for then a part of the document may be missing.
std::optional<std::string> serialiseXml(xmlDoc& document, const XmlReports& reports);

/// Whether `node` is an element of that local name.
bool isElement(const xmlNode& node, const char* name);

/// The value of an attribute; null when the element has none of that name.
XmlString attributeOf(const xmlNode& element, const char* name);

/// The library's view of a text.
inline const xmlChar* xmlText(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

/// The text of a value that is there.
inline const char* plainText(const XmlString& value) {
  return reinterpret_cast<const char*>(value.get());
}

}  // namespace persistence
