#include "persistence/QueueElement.h"

#include <algorithm>

#include "kvpm/StringTools.h"
#include "persistence/ItemAttributes.h"
#include "persistence/QueueDocument.h"
#include "persistence/WideText.h"
#include "persistence/XmlText.h"

namespace persistence {
namespace {

using kvpm::StringTools;

bool isAsciiUnit(wchar_t c) { return c >= 0 && c < 0x80; }

/// Whether a character of wide text or byte of narrow text stands for itself in a document.
constexpr auto isPlain = [](wchar_t c) {
  return c >= ' ' && c < 0x7F && c != '"' && c != '<' && c != '>' && c != '&';
};

/// Writes each field as the value of an attribute.
class ValueWriter : public FieldSink {
 public:
  ValueWriter(std::string& document, std::size_t limit) : document_(document), limit_(limit) {}

  void takeText(const std::wstring& text) override {
    if (appendPlain(text)) return;
    // ASCII is the same in both, and often all there is.
    if (std::all_of(text.begin(), text.end(), isAsciiUnit)) {
      return takeBytes(std::string(text.begin(), text.end()));
    }
    appendEscaped(document_, utf8Of(carriedByXml(text, limit_)));
  }

  void takeBytes(std::string_view bytes) override {
    if (!appendPlain(bytes)) appendEscaped(document_, carriedByXml(std::string(bytes), limit_));
  }

  void takeSigned(std::int32_t value) override { document_ += StringTools::int32ToString(value); }
  void takeUnsigned(std::uint64_t value) override {
    document_ += StringTools::uint64ToString(value);
  }
  void takeFlag(bool value) override { document_ += StringTools::boolToString(value); }

 private:
  /// Most texts are plain throughout. Returns false for any other, and for one that has to be cut.
  template <class Text>
  bool appendPlain(const Text& text) {
    if (text.size() > limit_ || !std::all_of(text.begin(), text.end(), isPlain)) return false;
    const std::size_t end = document_.size();
    document_.resize(end + text.size());
    std::copy(text.begin(), text.end(), document_.begin() + static_cast<std::ptrdiff_t>(end));
    return true;
  }

  std::string& document_;
  const std::size_t limit_;
};

/// Adds up the lengths of the texts.
class TextLengths : public FieldSink {
 public:
  explicit TextLengths(std::size_t limit) : limit_(limit) {}

  std::uint64_t sum() const { return sum_; }

  void takeText(const std::wstring& text) override { sum_ += std::min(text.size(), limit_); }
  void takeBytes(std::string_view bytes) override { sum_ += std::min(bytes.size(), limit_); }
  void takeSigned(std::int32_t /*value*/) override {}
  void takeUnsigned(std::uint64_t /*value*/) override {}
  void takeFlag(bool /*value*/) override {}

 private:
  const std::size_t limit_;
  std::uint64_t sum_ = 0;
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

std::uint64_t charactersOf(const VeskPlayerX::DownloadItemInterface& item, std::size_t limit) {
  TextLengths lengths(limit);
  for (const ItemAttribute& attribute : kItemAttributes) attribute.write(item, lengths);
  return lengths.sum();
}

}  // namespace persistence
