#include "plugin/NewDownload.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "kvsc/HttpRequest.h"
#include "persistence/URLEscape.h"

namespace plugin {
namespace {

using kvpm::StringTools;

constexpr std::array<std::wstring_view, 4> kSupportedTypes{L".vesk", L".xvid", L".avi", L".mkv"};

bool isSupported(const std::wstring& url) {
  const std::wstring type = StringTools::toLower(kvpm::PathTools::getExtension(url));
  return std::find(kSupportedTypes.begin(), kSupportedTypes.end(), type) != kSupportedTypes.end();
}

std::wstring hostOf(const std::string& url) {
  std::string host;
  std::string port;
  std::string path;
  bool isHttps = false;
  if (kvsc::HttpRequest::parseUri(url, &host, &port, &path, &isHttps) != 0) return {};
  return StringTools::stringToWString(host);
}

}  // namespace

std::unique_ptr<DownloadItem> makeDownload(const std::wstring& url, const std::wstring& title,
                                           const std::wstring& providerName) {
  if (!isSupported(url)) return nullptr;
  const std::string escaped = URLEscape::escape(StringTools::wStringToString(url));
  auto item = std::make_unique<DownloadItem>();
  item->setStatus(DownloadStatusQueued);
  item->setTitle(title.empty() ? kvpm::PathTools::getFileName(url) : title);
  item->setContentProviderDisplayName(providerName.empty() ? hostOf(escaped) : providerName);
  item->setEncrypted(false);
  item->setUrl(StringTools::stringToWString(escaped));
  return item;
}

std::unique_ptr<DownloadItem> makeDownload(const std::wstring& path,
                                           const VeskDrmPlaybackAuthorizationResponse& response,
                                           const VeskDrmTransactionRecord* record) {
  auto item = std::make_unique<DownloadItem>();
  if (record != nullptr) item->setContentEncryptionUsageId(record->contentEncryptionUsageId);
  item->setPath(path);
  item->setSize(response.fileSize);
  item->setStatus(DownloadStatusQueued);
  item->setTitle(response.title);
  item->setTicket(response.ticket);
  item->setEncrypted(true);
  return item;
}

}  // namespace plugin
