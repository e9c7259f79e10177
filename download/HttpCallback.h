#pragma once

#include <cstddef>
#include <string>

/// Receiver of a transfer that `HttpHelper` runs. Called on the transfer's thread; not owned by the
/// helper, outlives the transfer. The order of the virtual operations is part of the interface.
class HttpCallback {
 public:
  HttpCallback() = default;
  HttpCallback(const HttpCallback&) = delete;
  HttpCallback& operator=(const HttpCallback&) = delete;
  virtual ~HttpCallback() = default;

  /// One raw line of the response header, as the client delivered it.
  virtual void headerReceived(const std::string& line) = 0;

  /// One piece of the body. Returns the bytes taken; fewer than `length` end the transfer.
  virtual size_t bodyReceived(const char* data, size_t length) = 0;

  /// The transfer ended normally; `code` is 1.
  virtual void transferComplete(int code) = 0;

  /// The transfer failed; `code` is -1.
  virtual void transferBroke(int code) = 0;
};
