#pragma once

#include <memory>
#include <string>

#include "item/DownloadItem.h"

namespace plugin {

/// A queued item for the film at `url`, whose stored address is percent-escaped. An empty `title`
/// becomes the file name in the address, an empty `providerName` its host. Null when the extension
/// is none of .vesk, .xvid, .avi and .mkv, in any case. Pure.
std::unique_ptr<DownloadItem> makeDownload(const std::wstring& url, const std::wstring& title,
                                           const std::wstring& providerName);

}  // namespace plugin
