#pragma once

#include <cstdint>
#include <string>

class HttpCallback;

/// How an operation of `HttpHelper` ended.
enum HttpResultType : std::int32_t {
  HTTP_RESULT_OK = 0,        ///< the request succeeded; after `getInfo` a length is known
  HTTP_RESULT_FAILED = 1,    ///< transport error, cancelled transfer or empty answer
  HTTP_RESULT_REDIRECT = 2,  ///< the answer names another address and no length
};

/// Outcome of an operation of `HttpHelper`: a plain record, owned by the caller of that operation.
class HttpResult {
 public:
  virtual ~HttpResult() = default;

  HttpResultType getResult() const { return result_; }
  void setResult(HttpResultType result) { result_ = result; }

  /// HTTP status of the answer; 0 before there is one.
  unsigned int getReturnCode() const { return returnCode_; }
  void setReturnCode(unsigned int code) { returnCode_ = code; }

  /// Bytes of the body, as the server announced them; 0 for unknown.
  unsigned long long getContentLength() const { return contentLength_; }
  void setContentLength(unsigned long long length) { contentLength_ = length; }

  /// The address that the answer points to, exactly as received.
  std::string getRedirection() const { return redirection_; }
  void setRedirection(const std::string& redirection) { redirection_ = redirection; }

  /// What went wrong, in words.
  std::string getErrorDescription() const { return errorDescription_; }
  void setErrorDescription(const std::string& description) { errorDescription_ = description; }

  /// Receiver of the transfer, not owned; may be null.
  HttpCallback* getHttpCallbacks() const { return callbacks_; }
  void setHttpCallbacks(HttpCallback* callbacks) { callbacks_ = callbacks; }

 private:
  HttpResultType result_ = HTTP_RESULT_FAILED;
  std::uint32_t returnCode_ = 0;
  std::uint64_t contentLength_ = 0;
  std::string redirection_;
  std::string errorDescription_;
  HttpCallback* callbacks_ = nullptr;
};
