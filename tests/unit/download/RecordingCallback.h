#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>

#include "download/HttpCallback.h"
#include "tests/support/fakes/EventLog.h"

namespace support {

/// Receives a transfer and writes it down. Log lines: "header LINE", "body BYTES", "complete CODE",
/// "broke CODE". Owner: the test; outlives the transfer.
class RecordingCallback : public HttpCallback {
 public:
  explicit RecordingCallback(EventLog& log) : log_(log) {}

  /// From now on takes no more than this of each piece.
  void takeAtMost(std::size_t bytes) { most_ = bytes; }

  /// Everything that was taken.
  std::string body() const {
    const std::lock_guard lock(mutex_);
    return body_;
  }

  void headerReceived(const std::string& line) override { log_.add("header " + line); }

  size_t bodyReceived(const char* data, size_t length) override {
    const std::size_t taken = std::min(length, most_.load());
    {
      const std::lock_guard lock(mutex_);
      body_.append(data, taken);
    }
    log_.add("body " + std::to_string(length));
    return taken;
  }

  void transferComplete(int code) override { log_.add("complete " + std::to_string(code)); }
  void transferBroke(int code) override { log_.add("broke " + std::to_string(code)); }

 private:
  EventLog& log_;
  std::atomic<std::size_t> most_{~std::size_t{0}};
  mutable std::mutex mutex_;
  std::string body_;
};

}  // namespace support
