#include "tests/support/LegacyQueueFile.h"

#include "persistence/RFCBase64Codec.h"

namespace support {
namespace {

constexpr const char* kHeader =
    "<drmAuth:DownloadManagerDataContainer xmlns:drmAuth=\"com.vesk.container\" version=\"1\" >";
constexpr const char* kFooter = "</drmAuth:DownloadManagerDataContainer>";
constexpr const char* kElement = "<drmAuth:DownloadManagerVideoElement";

std::string escaped(const std::string& value) {
  std::string text;
  for (const char c : value) {
    switch (c) {
      case '&':
        text += "&amp;";
        break;
      case '<':
        text += "&lt;";
        break;
      case '"':
        text += "&quot;";
        break;
      default:
        text += c;
    }
  }
  return text;
}

}  // namespace

LegacyQueueFile& LegacyQueueFile::item() {
  endItem();
  items_ += kElement;
  isItemOpen_ = true;
  return *this;
}

LegacyQueueFile& LegacyQueueFile::attribute(const std::string& name, const std::string& value) {
  items_ += " " + name + "=\"" + escaped(value) + "\"";
  return *this;
}

LegacyQueueFile& LegacyQueueFile::text(const std::string& name, const std::wstring& value) {
  return attribute(name, legacyText(value));
}

LegacyQueueFile& LegacyQueueFile::raw(const std::string& markup) {
  endItem();
  items_ += markup;
  return *this;
}

std::string LegacyQueueFile::document() const {
  return kHeader + items_ + (isItemOpen_ ? "/>" : "") + kFooter;
}

void LegacyQueueFile::endItem() {
  if (isItemOpen_) items_ += "/>";
  isItemOpen_ = false;
}

std::string legacyText(const std::wstring& text) {
  return kv64::RFCBase64Codec().encode(
      std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)));
}

}  // namespace support
