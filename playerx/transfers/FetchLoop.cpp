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
  curl_multi_add_handle(multi_.get(), fetch.handle());
}

void FetchLoop::remove(Fetch& fetch) {
  if (running_.erase(fetch.handle()) == 0) return;
  curl_multi_remove_handle(multi_.get(), fetch.handle());
}

void FetchLoop::perform() {
  int stillRunning = 0;
  curl_multi_perform(multi_.get(), &stillRunning);
  std::vector<std::pair<CURL*, CURLcode>> over;
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
    if (message->msg == CURLMSG_DONE) over.emplace_back(message->easy_handle, message->data.result);
  }
  for (const auto& [handle, code] : over) {
    const auto found = running_.find(handle);
    if (found == running_.end()) continue;
    const Running running = found->second;
    running.sink->onOver(running.fetch->outcomeOf(code));
  }
}

void FetchLoop::wait(std::chrono::milliseconds longest) {
  const auto bounded = std::clamp<std::chrono::milliseconds::rep>(longest.count(), 0, INT_MAX);
  curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(bounded), nullptr);
}

void FetchLoop::wakeUp() { curl_multi_wakeup(multi_.get()); }

}  // namespace playerx::transfers
