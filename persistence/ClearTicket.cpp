#include "persistence/ClearTicket.h"

#include <string_view>
#include <utility>

#include "item/DownloadItem.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "kvsc/HttpRequest.h"
#include "persistence/TicketParserImpl.h"
#include "persistence/URLEscape.h"

namespace persistence {
namespace {

using kvpm::StringTools;
using Impl = TicketParser::TicketParserImpl;

constexpr std::wstring_view kLineEnds = L"\n\r";
constexpr float kVersion = 1.0F;

std::wstring hostOf(const std::wstring& url) {
  std::string host;
  std::string port;
  std::string path;
  bool isHttps = false;
  kvsc::HttpRequest::parseUri(URLEscape::unescape(StringTools::wStringToString(url)), &host, &port,
                              &path, &isHttps);
  return StringTools::stringToWString(host);
}

/// Gives a finished item what its block has left open.
void complete(DownloadItem& item) {
  if (item.getTitle().empty()) item.setTitle(kvpm::PathTools::getFileName(item.getUrl()));
  if (item.getContentProviderDisplayName().empty()) {
    item.setContentProviderDisplayName(hostOf(item.getUrl()));
  }
}

/// Reads the lines behind the first.
class Body {
 public:
  void read(const std::wstring& line) {
    // Trimmed once more, as `parseLine` does: that may take off what the first time laid bare.
    const std::wstring word = Impl::stripBeginingAndEndWhiteSpace(line);
    if (word == Impl::START_STRING) {
      open();
    } else if (word == Impl::END_STRING) {
      close();
    } else if (item_ != nullptr && Impl::parseLine(line, key_, value_)) {
      set();
    }
  }

  ItemList takeItems() { return std::move(items_); }

 private:
  void open() {
    item_ = std::make_unique<DownloadItem>();
    item_->setStatus(DownloadStatusQueued);
  }

  void close() {
    if (item_ != nullptr && !item_->getUrl().empty()) {
      complete(*item_);
      items_.push_back(std::move(item_));
    }
    item_.reset();
  }

  void set() {
    if (key_ == L"title") {
      item_->setTitle(value_);
    } else if (key_ == L"contentProvider") {
      item_->setContentProviderDisplayName(value_);
    } else if (key_ == L"url") {
      item_->setUrl(value_);
    }
  }

  ItemList items_;
  std::unique_ptr<DownloadItem> item_;  ///< of the open block; null outside a block
  std::wstring key_;
  std::wstring value_;
};

/// Takes the next line off `text`, trimmed, passing over those that are then empty. Empty at the
/// end.
std::wstring takeLine(std::wstring_view& text) {
  std::wstring line;
  std::wstring_view token;
  do {
    token = Impl::takeToken(text, kLineEnds);
    line = Impl::stripBeginingAndEndWhiteSpace(std::wstring(token));
  } while (line.empty() && !token.empty());
  return line;
}

/// A first line that cannot be parsed counts as none at all.
bool isOfThisFormat(const std::wstring& firstLine) {
  std::wstring key;
  std::wstring value;
  if (!Impl::parseLine(firstLine, key, value)) return true;
  return key == Impl::VERSION_STRING && StringTools::wstringToFloat(value) == kVersion;
}

}  // namespace

ItemList readClearTicket(const std::basic_string<unsigned char>& bytes) {
  const std::wstring text = StringTools::uStringToWstring(bytes);
  std::wstring_view rest = text;
  const std::wstring firstLine = takeLine(rest);
  if (firstLine.empty() || !isOfThisFormat(firstLine)) return {};
  Body body;
  for (std::wstring line = takeLine(rest); !line.empty(); line = takeLine(rest)) body.read(line);
  return body.takeItems();
}

}  // namespace persistence
