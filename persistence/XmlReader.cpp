#include "persistence/XmlReader.h"

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "persistence/XmlGuard.h"

namespace persistence {
namespace {

/// The library counts bytes in an int.
constexpr std::uint64_t kLargestDocument = std::numeric_limits<int>::max();

/// Bytes that are read at once. The processor's cache holds them until they are parsed.
constexpr std::size_t kPiece = std::size_t{1} << 16U;

constexpr const char* kDocumentName = "noname.xml";

/// Has the library decode the references in values, "&amp;" too. There are no entities to expand:
/// their declarations are refused. Without its limits, because one of them is on what it buffers,
/// and would be reached by an element of several long values; those that are kept follow.
constexpr int kOptions = XML_PARSE_NOENT | XML_PARSE_HUGE;

/// The library's own limits: bytes of a value, and elements around one.
constexpr std::size_t kLongestValue = 10'000'000;
constexpr int kDeepest = 256;

/// The library's layout of an attribute: local name, prefix, namespace, value, and its end.
constexpr int kPointersPerAttribute = 5;

std::string_view textOf(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

/// The local name; empty for a prefix that is not declared, which makes the prefix a part of the
/// name.
std::string_view localName(const xmlChar* name, const xmlChar* prefix, const xmlChar* uri) {
  return prefix != nullptr && uri == nullptr ? std::string_view() : textOf(name);
}

std::string_view valueOf(const xmlChar** attribute) {
  return {reinterpret_cast<const char*>(attribute[3]), reinterpret_cast<const char*>(attribute[4])};
}

/// Replaces the calling thread's error handler of the library during its lifetime, so that nothing
/// is printed.
class XmlReports {
 public:
  XmlReports() : formerHandler_(xmlStructuredError), formerContext_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(this, onReport);
  }
  XmlReports(const XmlReports&) = delete;
  XmlReports& operator=(const XmlReports&) = delete;
  ~XmlReports() { xmlSetStructuredErrorFunc(formerContext_, formerHandler_); }

  bool outOfMemory() const { return outOfMemory_; }

 private:
  static void onReport(void* reports, xmlErrorPtr report) {
    if (report != nullptr && report->code != XML_ERR_NO_MEMORY) return;
    static_cast<XmlReports*>(reports)->outOfMemory_ = true;
  }

  const xmlStructuredErrorFunc formerHandler_;
  void* const formerContext_;
  bool outOfMemory_ = false;
};

struct FreeContext {
  void operator()(xmlParserCtxt* context) const {
    // The library creates a document of its own for an entity declaration.
    xmlFreeDoc(context->myDoc);
    xmlFreeParserCtxt(context);
  }
};

/// One run of the parser. The library is C, so its callbacks let no exception through.
class Parser {
 public:
  Parser(const XmlSource& source, XmlHandler& handler) : source_(source), handler_(handler) {}

  XmlResult parse() {
    const XmlReports reports;
    if (!connect()) return XmlResult::kOutOfMemory;
    prepare();
    xmlParseDocument(context_.get());
    if (isUnreadable_) return XmlResult::kUnreadable;
    if (outOfMemory_ || reports.outOfMemory()) return XmlResult::kOutOfMemory;
    return context_->wellFormed != 0 && !isRefused_ ? XmlResult::kRead : XmlResult::kRefused;
  }

 private:
  /// Has the library read from the source. `xmlCreateIOParserCtxt` leaves the buffer behind when
  /// memory is short. False when it is.
  bool connect() {
    context_.reset(xmlNewParserCtxt());
    xmlParserInputBuffer* const buffer =
        xmlParserInputBufferCreateIO(onRead, nullptr, this, XML_CHAR_ENCODING_NONE);
    xmlParserInput* const input =
        context_ != nullptr && buffer != nullptr
            ? xmlNewIOInputStream(context_.get(), buffer, XML_CHAR_ENCODING_NONE)
            : nullptr;
    if (input == nullptr) xmlFreeParserInputBuffer(buffer);
    return input != nullptr && inputPush(context_.get(), input) >= 0;
  }

  void prepare() {
    xmlCtxtUseOptions(context_.get(), kOptions);
    context_->input->filename =
        reinterpret_cast<char*>(xmlStrdup(reinterpret_cast<const xmlChar*>(kDocumentName)));
    xmlSAXHandler callbacks{};
    callbacks.initialized = XML_SAX2_MAGIC;
    callbacks.startElementNs = onStart;
    callbacks.endElementNs = onEnd;
    callbacks.entityDecl = onEntity;
    callbacks.unparsedEntityDecl = onUnparsedEntity;
    *context_->sax = callbacks;
    context_->userData = this;
  }

  static int onRead(void* parser, char* buffer, int length) {
    auto& self = *static_cast<Parser*>(parser);
    try {
      return self.give(buffer, static_cast<std::size_t>(length));
    } catch (const std::bad_alloc&) {
      self.outOfMemory_ = true;
      return -1;
    }
  }

  /// Gives the library as many bytes as it wants: it takes fewer for the end of a piece of markup.
  int give(char* buffer, std::size_t length) {
    std::size_t given = 0;
    do {
      if (unread_.empty() && !fetch()) return -1;
      const std::size_t count = unread_.copy(buffer + given, length - given);
      unread_.remove_prefix(count);
      given += count;
      if (count == 0) break;
    } while (given < length);
    return static_cast<int>(given);
  }

  /// Gets the next piece. False when the library is not to read it.
  bool fetch() {
    piece_.resize(kPiece);
    const std::int64_t got = source_(piece_.data(), piece_.size());
    isUnreadable_ = got < 0;
    if (isUnreadable_) return false;
    unread_ = std::string_view(piece_).substr(0, static_cast<std::size_t>(got));
    read_ += unread_.size();
    isRefused_ = read_ > kLargestDocument || !guard_.take(unread_);
    return !isRefused_;
  }

  static void onStart(void* parser, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int /*namespaceCount*/, const xmlChar** /*namespaces*/, int count,
                      int defaultedCount, const xmlChar** attributes) {
    auto& self = *static_cast<Parser*>(parser);
    try {
      const bool isAccepted = self.isWithinLimits(attributes, count) &&
                              self.hasRoomForDefaults(attributes, count, defaultedCount) &&
                              self.handler_.onElement(self.depth_++, localName(name, prefix, uri),
                                                      XmlAttributes(attributes, count));
      if (!isAccepted) self.refuse();
    } catch (const std::bad_alloc&) {
      self.outOfMemory_ = true;
      xmlStopParser(self.context_.get());
    }
  }

  static void onEnd(void* parser, const xmlChar* /*name*/, const xmlChar* /*prefix*/,
                    const xmlChar* /*uri*/) {
    --static_cast<Parser*>(parser)->depth_;
  }

  static void onEntity(void* parser, const xmlChar* /*name*/, int /*type*/,
                       const xmlChar* /*publicId*/, const xmlChar* /*systemId*/,
                       xmlChar* /*content*/) {
    static_cast<Parser*>(parser)->refuse();
  }

  static void onUnparsedEntity(void* parser, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                               const xmlChar* /*systemId*/, const xmlChar* /*notation*/) {
    static_cast<Parser*>(parser)->refuse();
  }

  bool isWithinLimits(const xmlChar** attributes, int count) const {
    for (int i = 0; i < count; ++i) {
      if (valueOf(attributes + i * kPointersPerAttribute).size() > kLongestValue) return false;
    }
    return depth_ <= kDeepest;
  }

  /// Default values come after the others.
  bool hasRoomForDefaults(const xmlChar** attributes, int count, int defaultedCount) {
    for (int i = count - defaultedCount; i < count; ++i) {
      const std::size_t length = valueOf(attributes + i * kPointersPerAttribute).size();
      defaults_ += length;
      if (defaults_ > read_) return false;
    }
    return true;
  }

  void refuse() {
    isRefused_ = true;
    xmlStopParser(context_.get());
  }

  const XmlSource& source_;
  XmlHandler& handler_;
  std::unique_ptr<xmlParserCtxt, FreeContext> context_;
  XmlGuard guard_;
  std::string piece_;
  std::string_view unread_;     // of the piece
  std::uint64_t read_ = 0;      // bytes of the document
  std::uint64_t defaults_ = 0;  // bytes of default values
  int depth_ = 0;
  bool isRefused_ = false;
  bool isUnreadable_ = false;
  bool outOfMemory_ = false;
};

}  // namespace

std::optional<std::string_view> XmlAttributes::find(std::string_view name) const {
  for (int i = 0; i < count_; ++i) {
    const xmlChar** const attribute = attributes_ + i * kPointersPerAttribute;
    const bool mayBeIt = attribute[0][0] == static_cast<unsigned char>(name.front());
    if (mayBeIt && localName(attribute[0], attribute[1], attribute[2]) == name) {
      return valueOf(attribute);
    }
  }
  return std::nullopt;
}

XmlSource sourceOf(std::string_view bytes) {
  return [bytes](char* buffer, std::size_t size) mutable {
    const std::size_t count = bytes.copy(buffer, size);
    bytes.remove_prefix(count);
    return static_cast<std::int64_t>(count);
  };
}

XmlResult readXml(const XmlSource& source, XmlHandler& handler) {
  return Parser(source, handler).parse();
}

}  // namespace persistence
