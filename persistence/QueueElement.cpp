#include "persistence/QueueElement.h"

#include <algorithm>

#include "persistence/ItemAttributes.h"
#include "persistence/QueueDocument.h"
#include "persistence/WideText.h"
#include "persistence/XmlText.h"

namespace persistence {
namespace {

bool isAsciiUnit(wchar_t c) { return c >= 0 && c < 0x80; }

/// Writes each field as the value of an attribute.
class ValueWriter : public FieldSink {
 public:
  ValueWriter(std::string& document, std::size_t limit) : document_(document), limit_(limit) {}

  void takeText(const std::wstring& text) override {
    // Most texts are ASCII, which is the same in both.
    if (std::all_of(text.begin(), text.end(), isAsciiUnit)) {
      return takeBytes({text.begin(), text.end()});
    }
    appendEscaped(document_, utf8Of(carriedByXml(text, limit_)));
  }

  void takeBytes(const std::string& bytes) override {
    appendEscaped(document_, carriedByXml(bytes, limit_));
  }

  void takeValue(const std::string& value) override { document_ += value; }

 private:
  std::string& document_;
  const std::size_t limit_;
};

class TextLengths : public FieldSink {
 public:
  explicit TextLengths(std::vector<std::size_t>& lengths) : lengths_(lengths) {}

  void takeText(const std::wstring& text) override { lengths_.push_back(text.size()); }
  void takeBytes(const std::string& bytes) override { lengths_.push_back(bytes.size()); }
  void takeValue(const std::string& /*value*/) override {}

 private:
  std::vector<std::size_t>& lengths_;
};

}  // namespace

void appendElement(std::string& document, const VeskPlayerX::DownloadItemInterface& item,
                   std::size_t limit) {
  ValueWriter writer(document, limit);
  document.append("<").append(kItemElement);
  for (const ItemAttribute& attribute : kItemAttributes) {
    document.append(" ").append(attribute.name).append("=\"");
    attribute.write(item, writer);
    document.append("\"");
  }
  document.append("/>");
}

void appendTextLengths(std::vector<std::size_t>& lengths,
                       const VeskPlayerX::DownloadItemInterface& item) {
  TextLengths measure(lengths);
  for (const ItemAttribute& attribute : kItemAttributes) attribute.write(item, measure);
}

}  // namespace persistence
