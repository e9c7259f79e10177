#include "download/MediaSize.h"

#include <algorithm>
#include <memory>

#include "download/HttpHelper.h"
#include "download/HttpResult.h"

namespace download {

std::string redirectTarget(const std::string& redirection) {
  constexpr std::size_t kLineEnd = 2;
  if (redirection.empty() || redirection.back() != '\n') return redirection;
  return redirection.substr(0, redirection.size() - std::min(kLineEnd, redirection.size()));
}

bool RedirectLimit::mayAsk(const std::string& url) {
  return ++steps_ <= kSteps && ++asked_[url] <= kSameAddress;
}

std::uint64_t totalMediaSize(const std::string& url, kvsc::CancelToken& cancel) {
  HttpHelper helper;
  helper.setCancelToken(&cancel);
  RedirectLimit limit;
  std::string address = url;
  while (!cancel.isCancelled() && limit.mayAsk(address)) {
    helper.setup(address, "");
    const std::unique_ptr<HttpResult> info(helper.getInfo());
    if (info->getResult() == HTTP_RESULT_OK) return info->getContentLength();
    if (info->getResult() != HTTP_RESULT_REDIRECT) return 0;
    address = redirectTarget(info->getRedirection());
  }
  return 0;
}

}  // namespace download
