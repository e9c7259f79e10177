#include "playerx/transfers/FetchLoop.h"

#include <algorithm>
#include <climits>
#include <utility>
#include <vector>

namespace playerx::transfers {
namespace {

// Never undone: the library's other users in the process may still need it.
CURLM* newMulti() {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  return curl_multi_init();
}

}  // namespace

FetchLoop::FetchLoop() : multi_(newMulti()) {}

void FetchLoop::add(Fetch& fetch, FetchSink& sink) {
  running_[fetch.handle()] = {&fetch, &sink};
  fetch.setLimit(limit_);
  curl_multi_add_handle(multi_.get(), fetch.handle());
}

void FetchLoop::remove(Fetch& fetch) {
  if (running_.erase(fetch.handle()) == 0) return;
  curl_multi_remove_handle(multi_.get(), fetch.handle());
}

void FetchLoop::setRateLimit(std::uint64_t bytesPerSecond) {
  limit_.set(bytesPerSecond, RateLimit::Clock::now());
}

void FetchLoop::goOnWithKeptBack() {
  std::vector<CURL*> keptBack;
  for (const auto& [handle, running] : running_) {
    if (running.fetch->isKeptBack()) keptBack.push_back(handle);
  }
  for (CURL* const handle : keptBack) {
    const auto found = running_.find(handle);
    if (found == running_.end() || !limit_.isOpen(RateLimit::Clock::now())) continue;
    const CURLcode code = found->second.fetch->goOn();
    if (code != CURLE_OK) finish(handle, code);
  }
}

void FetchLoop::finish(CURL* handle, CURLcode code) {
  const auto found = running_.find(handle);
  if (found == running_.end()) return;
  const Running running = found->second;
  running.sink->onOver(running.fetch->outcomeOf(code));
}

void FetchLoop::perform() {
  goOnWithKeptBack();
  int stillRunning = 0;
  curl_multi_perform(multi_.get(), &stillRunning);
  std::vector<std::pair<CURL*, CURLcode>> over;
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
    if (message->msg == CURLMSG_DONE) over.emplace_back(message->easy_handle, message->data.result);
  }
  for (const auto& [handle, code] : over) finish(handle, code);
}

void FetchLoop::wait(std::chrono::milliseconds longest, int descriptor) {
  const bool isOneKeptBack = std::any_of(running_.begin(), running_.end(), [](const auto& entry) {
    return entry.second.fetch->isKeptBack();
  });
  if (const auto opensAt = limit_.opensAt(); opensAt && isOneKeptBack) {
    longest = std::min(
        longest, std::chrono::ceil<std::chrono::milliseconds>(*opensAt - RateLimit::Clock::now()));
  }
  const auto bounded = std::clamp<std::chrono::milliseconds::rep>(longest.count(), 0, INT_MAX);
  curl_waitfd watched{descriptor, CURL_WAIT_POLLIN, 0};
  curl_multi_poll(multi_.get(), &watched, descriptor < 0 ? 0 : 1, static_cast<int>(bounded),
                  nullptr);
}

void FetchLoop::wakeUp() { curl_multi_wakeup(multi_.get()); }

}  // namespace playerx::transfers
