#include "playerx/transfers/ChecksumRequest.h"

#include <utility>

#include "playerx/transfers/Checksum.h"

namespace playerx::transfers {
namespace {

constexpr std::size_t kLongestFile = std::size_t{1} << 20;
constexpr long kLongestTime = 60;  // seconds
constexpr long kStatusOk = 200;

}  // namespace

ChecksumRequest::ChecksumRequest(const FetchSpec& spec, std::string film, FetchLoop& loop,
                                 Then then)
    : film_(std::move(film)), loop_(loop), then_(std::move(then)) {
  FetchSink& sink = *this;
  fetch_ = std::make_unique<Fetch>(spec, sink);
  curl_easy_setopt(fetch_->handle(), CURLOPT_TIMEOUT, kLongestTime);
  loop_.add(*fetch_, sink);
}

ChecksumRequest::~ChecksumRequest() { loop_.remove(*fetch_); }

bool ChecksumRequest::onBody(const char* data, std::size_t length) {
  content_.append(data, length);
  return content_.size() <= kLongestFile;
}

void ChecksumRequest::onOver(const FetchOutcome& outcome) {
  const Then then = then_;
  if (outcome.failure != TransferFailure::kNone) return then(std::nullopt, outcome.detail);
  long status = 0;
  curl_easy_getinfo(fetch_->handle(), CURLINFO_RESPONSE_CODE, &status);
  if (status != kStatusOk) return then(std::nullopt, "HTTP " + std::to_string(status));
  const std::optional<std::string> sum = sumIn(content_, film_);
  then(sum, sum ? "" : "it names no sum of the film");
}

}  // namespace playerx::transfers
