#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>

#include "playerx/transfers/Fetch.h"

namespace playerx::transfers {

/// Runs many requests at once on one thread, by libcurl's multi interface; connections are kept for
/// requests to come.
///
/// Used by one thread, but for `wakeUp`.
class FetchLoop {
 public:
  FetchLoop();
  FetchLoop(const FetchLoop&) = delete;
  FetchLoop& operator=(const FetchLoop&) = delete;

  /// Starts a request; not owned. It must be removed before it is destroyed.
  void add(Fetch& fetch, FetchSink& sink);

  /// Ends a request at once, without a further call of its sink.
  void remove(Fetch& fetch);

  /// Bytes per second of all requests together; 0: no limit.
  void setRateLimit(std::uint64_t bytesPerSecond);

  /// Does what can be done without waiting, and calls the sinks. A sink may add and remove
  /// requests from within `onOver`.
  void perform();

  /// Waits until there is something to do, `wakeUp` is called, there is something to read from
  /// `descriptor` (-1: none), or the time is over.
  void wait(std::chrono::milliseconds longest, int descriptor = -1);

  /// Ends a `wait`, the present or the next one. From any thread.
  void wakeUp();

 private:
  struct MultiCleanup {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
  };
  struct Running {
    Fetch* fetch;
    FetchSink* sink;
  };

  void goOnWithKeptBack();
  void finish(CURL* handle, CURLcode code);

  std::unique_ptr<CURLM, MultiCleanup> multi_;
  std::map<CURL*, Running> running_;
  RateLimit limit_;
};

}  // namespace playerx::transfers
