#include "download/HttpHelper.h"

#include <QByteArray>
#include <algorithm>
#include <cstdlib>
#include <new>
#include <set>
#include <string_view>
#include <utility>

#include "download/HttpCallback.h"
#include "download/HttpTransfer.h"
#include "kvsc/SSLClient.h"

std::atomic<std::int32_t> HttpHelper::sDownloadCancelled{0};

namespace {

constexpr int kInfoRedirects = 10;
constexpr int kTransferRedirects = 1;
constexpr int kPauseBetweenReads = 1;  // milliseconds

/// The transfers under way in this process. The flag is only looked at when bytes arrive; this is
/// how a cancel reaches those that wait for a dead server.
class RunningTransfers {
 public:
  /// `obeysFlag`: whether a cancel that came before the transfer was entered counts.
  void enter(kvsc::CancelToken& token, bool obeysFlag) {
    const kvpm::MutexLock lock(mutex_);
    tokens_.insert(&token);
    if (obeysFlag && HttpHelper::sDownloadCancelled != 0) token.cancel();
  }

  void leave(kvsc::CancelToken& token) {
    const kvpm::MutexLock lock(mutex_);
    tokens_.erase(&token);
  }

  void cancelAll() {
    const kvpm::MutexLock lock(mutex_);
    HttpHelper::sDownloadCancelled = -1;
    for (kvsc::CancelToken* const token : tokens_) token->cancel();
  }

 private:
  kvpm::Mutex mutex_;
  std::set<kvsc::CancelToken*> tokens_ KVPM_GUARDED_BY(mutex_);
};

RunningTransfers& runningTransfers() {
  static RunningTransfers transfers;
  return transfers;
}

void reportEnd(HttpCallback& receiver, kvsc::HttpErrorIds error) {
  if (error == kvsc::HTTP_ERROR_NONE) {
    receiver.transferComplete(1);
  } else if (error != kvsc::HTTP_ERROR_CANCELLED) {
    receiver.transferBroke(-1);
  }
}

/// The number at the beginning of `text` by the rules of `atoll`, limited to 64 bits.
unsigned long long leadingNumber(const std::string& text) {
  return static_cast<unsigned long long>(std::strtoll(text.c_str(), nullptr, 10));
}

/// What follows the first `position` characters, the line end included.
std::string valueAt(const std::string& line, std::size_t position) {
  return line.substr(std::min(position, line.size()));
}

/// Takes note of a length, its name in any case, or of a location in exactly this spelling. Their
/// values stand at fixed positions, whatever separates them from the name.
void noteHeader(const std::string& line, HttpResult& result) {
  constexpr std::string_view kLength = "content-length";
  constexpr std::string_view kLocation = "Location:";
  if (qstrnicmp(line.c_str(), kLength.data(), kLength.size()) == 0) {
    result.setContentLength(leadingNumber(valueAt(line, kLength.size() + 1)));
  } else if (line.starts_with(kLocation)) {
    result.setRedirection(valueAt(line, kLocation.size() + 1));
  }
}

HttpHelper* helperOf(void* context) { return static_cast<HttpHelper*>(context); }

}  // namespace

HttpHelper::HttpHelper() : transfer_(std::make_unique<download::HttpTransfer>(*this)) {}

HttpHelper::~HttpHelper() { abort(); }

bool HttpHelper::setup(const std::string& url, const std::string& clientArg) {
  transfer_->setUp();
  url_ = url;
  method_.clear();
  client_ = std::make_unique<kvsc::SSLClient>(clientArg);
  session_ = std::make_unique<kvsc::SSLSession>();
  session_->setMaxRedirectCount(kInfoRedirects);
  session_->setDownloadLoopSleep(kPauseBetweenReads);
  return true;
}

void HttpHelper::cancelDownload() {
  runningTransfers().cancelAll();
  transfer_->abort();
}

void HttpHelper::abort() {
  if (transfer_->isRunning()) cancelDownload();
  transfer_->end();
}

void HttpHelper::useResult(HttpResult& result) {
  const kvpm::MutexLock lock(mutex_);
  currentResult_ = &result;
}

HttpResult* HttpHelper::getInfo() {
  auto result = std::make_unique<HttpResult>();
  result->setHttpCallbacks(callbacks_);
  useResult(*result);
  if (client_ != nullptr) askForInfo(*result);
  return result.release();
}

void HttpHelper::askForInfo(HttpResult& result) {
  if (infoToken_ == nullptr) transfer_->token().reset();
  kvsc::SSLSession session;
  session.setCheckCertificate(false);
  session.setMaxRedirectCount(kInfoRedirects);
  session.setCancelToken(infoToken_ != nullptr ? infoToken_ : &transfer_->token());
  client_->setHeaderCallback(&HttpHelper::downloadHeaderFunc);
  client_->setHeaderContext(this);
  kvsc::HttpErrorIds error = kvsc::HTTP_ERROR_NONE;
  client_->httpHead(url_, 0, &error, &session, "text/xml", "", kvsc::SSLV3);
  result.setReturnCode(static_cast<unsigned int>(client_->getResponseCode()));
  if (error == kvsc::HTTP_ERROR_NONE) {
    evaluateInfo(result);
  } else {
    result.setErrorDescription(client_->getErrorString());
  }
}

void HttpHelper::evaluateInfo(HttpResult& result) {
  const std::string length = client_->getResponseValue("Content-length");
  if (!length.empty()) {
    result.setContentLength(leadingNumber(length));
  }
  const std::string location = client_->getResponseValue("Location:");
  if (!location.empty()) result.setRedirection(location);
  if (result.getContentLength() != 0) {
    result.setResult(HTTP_RESULT_OK);
  } else if (!result.getRedirection().empty()) {
    result.setResult(HTTP_RESULT_REDIRECT);
  } else {
    result.setErrorDescription("Empty response from server.");
  }
}

HttpResult* HttpHelper::get(const std::string& requestData) {
  auto result = std::make_unique<HttpResult>();
  sDownloadCancelled = 0;
  if (url_.empty() || callbacks_ == nullptr) return result.release();
  result->setHttpCallbacks(callbacks_);
  if (startTransfer("get", requestData, *result) && !transfer_->hasFailed()) {
    result->setResult(HTTP_RESULT_OK);
  }
  return handOver(std::move(result));
}

HttpResult* HttpHelper::post() {
  auto result = std::make_unique<HttpResult>();
  result->setResult(HTTP_RESULT_OK);
  startTransfer("post", requestData_, *result);
  return handOver(std::move(result));
}

/// Returns once the body flows or never will; false when no transfer could be started.
bool HttpHelper::startTransfer(const std::string& method, const std::string& requestData,
                               HttpResult& result) {
  useResult(result);
  const bool started = transfer_->start([&] {
    method_ = method;
    requestData_ = requestData;
    prepareClient();
  });
  if (started) transfer_->waitForBody();
  return started;
}

void HttpHelper::prepareClient() {
  session_->setCheckCertificate(false);
  session_->setMaxRedirectCount(kTransferRedirects);
  session_->setRedirectCount(0);
  session_->setUserAgent("Vesk Player 2.0");
  session_->setCancelToken(&transfer_->token());
  client_->setBodyCallback(&HttpHelper::downloadBodyFunc);
  client_->setBodyContext(this);
  client_->setHeaderCallback(&HttpHelper::downloadHeaderFunc);
  client_->setHeaderContext(this);
  if (method_ == "get") client_->setProgressCallback(&HttpHelper::progressFunc);
}

/// The caller may delete the result at once, so header lines that come later go to a record of the
/// helper's own.
HttpResult* HttpHelper::handOver(std::unique_ptr<HttpResult> result) {
  const kvpm::MutexLock lock(mutex_);
  ownResult_ = *result;
  currentResult_ = &ownResult_;
  return result.release();
}

void HttpHelper::runThread(kvpm::Thread*) {
  if (client_ == nullptr || method_.empty()) return;
  const bool isGet = method_ == "get";
  transfer_->enter();
  runningTransfers().enter(transfer_->token(), isGet);
  const kvsc::HttpErrorIds exchanged = exchange();
  runningTransfers().leave(transfer_->token());
  HttpCallback* const receiver = isGet ? callbacks_.load() : nullptr;
  const kvsc::HttpErrorIds error = transfer_->noteEnd(exchanged);
  if (receiver != nullptr) reportEnd(*receiver, error);
  transfer_->leave();
}

kvsc::HttpErrorIds HttpHelper::exchange() {
  kvsc::HttpErrorIds error = kvsc::HTTP_ERROR_NONE;
  if (method_ == "get") {
    client_->httpGet(url_, 0, &error, session_.get(), "", requestData_, kvsc::SSLV3);
  } else {
    client_->httpPost(url_, std::string(), &error, session_.get(), requestData_, "", kvsc::SSLV3,
                      false);
  }
  return error;
}

std::size_t HttpHelper::downloadHeaderFunc(void* line, std::size_t size, std::size_t count,
                                           void* helper) {
  const std::string text(static_cast<const char*>(line), size * count);
  HttpHelper& self = *helperOf(helper);
  HttpCallback* receiver = nullptr;
  {
    const kvpm::MutexLock lock(self.mutex_);
    if (self.currentResult_ == nullptr) return 0;
    noteHeader(text, *self.currentResult_);
    receiver = self.currentResult_->getHttpCallbacks();
  }
  if (receiver != nullptr) receiver->headerReceived(text);
  return text.size();
}

std::size_t HttpHelper::downloadBodyFunc(void* data, std::size_t size, std::size_t count,
                                         void* helper) {
  HttpHelper& self = *helperOf(helper);
  HttpCallback* const receiver = self.callbacks_;
  const std::size_t length = size * count;
  const std::size_t taken =
      receiver != nullptr ? receiver->bodyReceived(static_cast<const char*>(data), length) : 0;
  const int status = self.client_ != nullptr ? self.client_->getResponseCode() : 0;
  self.transfer_->notePiece(status, taken != length);
  return taken;
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
