#pragma once

#include <memory>
#include <string>

#include "VeskPlayerX/VeskDrm.h"
#include "item/DownloadItem.h"

namespace plugin {

/// A queued item for the film at `url`, whose stored address is percent-escaped. An empty `title`
/// becomes the file name in the address, an empty `providerName` its host. Null unless the
/// extension is .vesk, .xvid, .avi or .mkv, in capital or small letters. Pure.
std::unique_ptr<DownloadItem> makeDownload(const std::wstring& url, const std::wstring& title,
                                           const std::wstring& providerName);

/// A queued, rights-protected item for the rest of the film at `path`, which the host has opened.
/// `record` may be null. Pure.
std::unique_ptr<DownloadItem> makeDownload(const std::wstring& path,
                                           const VeskDrmPlaybackAuthorizationResponse& response,
                                           const VeskDrmTransactionRecord* record);

}  // namespace plugin
