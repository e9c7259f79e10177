#include "download/HttpHelper.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

#include "download/AnnouncedHeader.h"
#include "download/HttpCallback.h"

namespace {

constexpr int kInfoRedirects = 10;
constexpr int kTransferRedirects = 1;
constexpr int kPauseBetweenReads = 1;  // milliseconds
constexpr std::chrono::milliseconds kPoll{100};

HttpHelper* helperOf(void* context) { return static_cast<HttpHelper*>(context); }

}  // namespace

HttpHelper::HttpHelper() = default;

HttpHelper::~HttpHelper() { abort(); }

bool HttpHelper::setup(const std::string& url, const std::string& clientArg) {
  abort();
  client_ = std::make_unique<kvsc::SSLClient>(clientArg);
  session_ = std::make_unique<kvsc::SSLSession>();
  session_->setMaxRedirectCount(kInfoRedirects);
  session_->setDownloadLoopSleep(kPauseBetweenReads);
  url_ = url;
  const kvpm::MutexLock lock(mutex_);
  thread_ = std::make_unique<kvpm::Thread>(this);
  return true;
}

HttpResult* HttpHelper::getInfo() {
  auto result = std::make_unique<HttpResult>();
  result->setHttpCallbacks(callbacks_);
  {
    const kvpm::MutexLock lock(mutex_);
    currentResult_ = result.get();
  }
  if (client_ != nullptr) askForInfo(*result);
  return result.release();
}

void HttpHelper::askForInfo(HttpResult& result) {
  if (infoToken_ == nullptr) ownToken_.reset();
  kvsc::SSLSession session;
  session.setCheckCertificate(false);
  session.setMaxRedirectCount(kInfoRedirects);
  session.setCancelToken(infoToken_ != nullptr ? infoToken_ : &ownToken_);
  client_->setHeaderCallback(&HttpHelper::downloadHeaderFunc);
  client_->setHeaderContext(this);
  kvsc::HttpErrorIds error = kvsc::HTTP_ERROR_NONE;
  client_->httpHead(url_, 0, &error, &session, "text/xml", "", kvsc::SSLV3);
  result.setReturnCode(static_cast<unsigned int>(client_->getResponseCode()));
  if (error != kvsc::HTTP_ERROR_NONE) {
    result.setResult(HTTP_RESULT_FAILED);
    result.setErrorDescription(client_->getErrorString());
    return;
  }
  judgeInfo(result);
}

void HttpHelper::judgeInfo(HttpResult& result) {
  const std::string length = client_->getResponseValue("Content-length");
  if (!length.empty()) {
    result.setContentLength(static_cast<unsigned long long>(download::leadingNumber(length)));
  }
  const std::string location = client_->getResponseValue("Location:");
  if (!location.empty()) result.setRedirection(location);
  if (result.getContentLength() != 0) {
    result.setResult(HTTP_RESULT_OK);
  } else if (!result.getRedirection().empty()) {
    result.setResult(HTTP_RESULT_REDIRECT);
  } else {
    result.setResult(HTTP_RESULT_FAILED);
    result.setErrorDescription("Empty response from server.");
  }
}

HttpResult* HttpHelper::get(const std::string& requestData) {
  auto result = std::make_unique<HttpResult>();
  result->setResult(HTTP_RESULT_OK);
  allowTransfers();
  if (url_.empty() || callbacks_ == nullptr) {
    result->setResult(HTTP_RESULT_FAILED);
    return result.release();
  }
  const bool started = startTransfer("get", requestData, *result);
  const Progress progress = started ? waitForBody(true) : Progress();
  const bool cancelledEarly = progress.cancelled && !progress.bodyStarted;
  if (!started || progress.aborted || cancelledEarly) {
    result->setResult(HTTP_RESULT_FAILED);
  }
  return handOver(std::move(result));
}

HttpResult* HttpHelper::post() {
  auto result = std::make_unique<HttpResult>();
  result->setResult(HTTP_RESULT_OK);
  if (startTransfer("post", requestData_, *result)) waitForBody(false);
  return handOver(std::move(result));
}

/// Prepares the client for the transfer that is about to start.
void HttpHelper::configure(HttpResult& result) {
  session_->setCheckCertificate(false);
  session_->setMaxRedirectCount(kTransferRedirects);
  session_->setRedirectCount(0);
  session_->setUserAgent("Vesk Player 2.0");
  session_->setCancelToken(&ownToken_);
  client_->setBodyCallback(&HttpHelper::downloadBodyFunc);
  client_->setBodyContext(this);
  client_->setHeaderCallback(&HttpHelper::downloadHeaderFunc);
  client_->setHeaderContext(this);
  if (method_ != "get") return;
  client_->setProgressCallback(&HttpHelper::progressFunc);
  result.setHttpCallbacks(callbacks_);
}

HttpHelper::Progress HttpHelper::waitForBody(bool untilAborted) {
  const kvpm::MutexLock lock(mutex_);
  while (!progress_.bodyStarted && !progress_.ended && !(untilAborted && progress_.aborted)) {
    progressed_.wait_for(mutex_, kPoll);
  }
  return progress_;
}

/// Gives the result to the caller, who may do with it what he likes: header lines that come after
/// this go to a record of the helper's own.
HttpResult* HttpHelper::handOver(std::unique_ptr<HttpResult> result) {
  const kvpm::MutexLock lock(mutex_);
  ownResult_ = *result;
  currentResult_ = &ownResult_;
  return result.release();
}

std::size_t HttpHelper::takeHeader(const std::string& line) {
  HttpCallback* receiver = nullptr;
  {
    const kvpm::MutexLock lock(mutex_);
    if (currentResult_ == nullptr) return 0;
    if (const auto length = download::announcedLength(line)) {
      currentResult_->setContentLength(static_cast<unsigned long long>(*length));
    } else if (const auto location = download::announcedLocation(line)) {
      currentResult_->setRedirection(*location);
    }
    receiver = currentResult_->getHttpCallbacks();
  }
  if (receiver != nullptr) receiver->headerReceived(line);
  return line.size();
}

std::size_t HttpHelper::takeBody(const char* data, std::size_t length) {
  HttpCallback* const receiver = callbacks_;
  const std::size_t taken = receiver != nullptr ? receiver->bodyReceived(data, length) : 0;
  if (taken != length) refuseBody();
  if (receiver == nullptr) return 0;
  const kvpm::MutexLock lock(mutex_);
  progress_.bodyStarted = true;
  progressed_.notify_all();
  return taken;
}

std::size_t HttpHelper::downloadHeaderFunc(void* line, std::size_t size, std::size_t count,
                                           void* helper) {
  return helperOf(helper)->takeHeader(std::string(static_cast<const char*>(line), size * count));
}

std::size_t HttpHelper::downloadBodyFunc(void* data, std::size_t size, std::size_t count,
                                         void* helper) {
  return helperOf(helper)->takeBody(static_cast<const char*>(data), size * count);
}

std::size_t HttpHelper::downloadDirectBodyFunc(void* data, std::size_t size, std::size_t count,
                                               void* helper) {
  if (helper == nullptr) return 0;
  const auto* const bytes = static_cast<const char*>(data);
  const auto* const end = std::find(bytes, bytes + size * count, '\0');
  try {
    helperOf(helper)->scratchText_.append(bytes, end);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return size * count;
}

std::size_t HttpHelper::downloadDummyBodyFunc(void*, std::size_t, std::size_t, void*) { return 0; }

int HttpHelper::progressFunc(void*, double, double, double, double) { return sDownloadCancelled; }
