#include "download/HttpHelper.h"

#include <algorithm>
#include <new>
#include <set>

#include "download/HttpCallback.h"
#include "download/ResultHeaders.h"
#include "kvpm/Mutex.h"
#include "kvsc/HttpStatus.h"
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

/// A piece of an error's text is not what `get` waits for: the failure follows it.
bool isError(int status) {
  return !kvsc::isRedirect(status) && kvsc::outcomeOfStatus(status) != kvsc::HTTP_ERROR_NONE;
}

HttpHelper* helperOf(void* context) { return static_cast<HttpHelper*>(context); }

}  // namespace

HttpHelper::HttpHelper() = default;

HttpHelper::~HttpHelper() { abort(); }

bool HttpHelper::setup(const std::string& url, const std::string& clientArg) {
  transfer_.end();
  url_ = url;
  method_.clear();
  client_ = std::make_unique<kvsc::SSLClient>(clientArg);
  session_ = std::make_unique<kvsc::SSLSession>();
  session_->setMaxRedirectCount(kInfoRedirects);
  session_->setDownloadLoopSleep(kPauseBetweenReads);
  transfer_.allow();
  return true;
}

void HttpHelper::cancelDownload() {
  runningTransfers().cancelAll();
  transfer_.cancel();
}

void HttpHelper::abort() {
  if (transfer_.isRunning()) cancelDownload();
  transfer_.end();
}

HttpResult* HttpHelper::getInfo() {
  auto result = std::make_unique<HttpResult>();
  result->setHttpCallbacks(callbacks_);
  transfer_.fill(*result);
  if (client_ != nullptr) askForInfo(*result);
  return result.release();
}

void HttpHelper::askForInfo(HttpResult& result) {
  if (infoToken_ == nullptr) transfer_.token().reset();
  kvsc::SSLSession session;
  session.setCheckCertificate(false);
  session.setMaxRedirectCount(kInfoRedirects);
  session.setCancelToken(infoToken_ != nullptr ? infoToken_ : &transfer_.token());
  client_->setHeaderCallback(&HttpHelper::downloadHeaderFunc);
  client_->setHeaderContext(this);
  kvsc::HttpErrorIds error = kvsc::HTTP_ERROR_NONE;
  client_->httpHead(url_, 0, &error, &session, "text/xml", "", kvsc::SSLV3);
  result.setReturnCode(static_cast<unsigned int>(client_->getResponseCode()));
  if (error == kvsc::HTTP_ERROR_NONE) {
    download::judgeInfo(client_->getResponseValue("Content-length"),
                        client_->getResponseValue("Location:"), result);
  } else {
    result.setErrorDescription(client_->getErrorString());
  }
}

HttpResult* HttpHelper::get(const std::string& requestData) {
  sDownloadCancelled = 0;
  HttpCallback* const receiver = callbacks_;
  if (url_.empty() || receiver == nullptr) return new HttpResult;
  return transfer("get", requestData, receiver).release();
}

HttpResult* HttpHelper::post() {
  auto result = transfer("post", requestData_, nullptr);
  result->setResult(HTTP_RESULT_OK);
  return result.release();
}

std::unique_ptr<HttpResult> HttpHelper::transfer(const std::string& method,
                                                 const std::string& requestData,
                                                 HttpCallback* receiver) {
  const bool isRunning = transfer_.start(receiver, [&] {
    method_ = method;
    requestData_ = requestData;
    prepareClient();
  });
  return isRunning ? transfer_.waitForBody() : std::make_unique<HttpResult>();
}

void HttpHelper::prepareClient() {
  session_->setCheckCertificate(false);
  session_->setMaxRedirectCount(kTransferRedirects);
  session_->setRedirectCount(0);
  session_->setUserAgent("Vesk Player 2.0");
  session_->setCancelToken(&transfer_.token());
  client_->setBodyCallback(&HttpHelper::downloadBodyFunc);
  client_->setBodyContext(this);
  client_->setHeaderCallback(&HttpHelper::downloadHeaderFunc);
  client_->setHeaderContext(this);
  if (method_ == "get") client_->setProgressCallback(&HttpHelper::progressFunc);
}

void HttpHelper::runThread(kvpm::Thread*) {
  if (client_ == nullptr || method_.empty()) return;
  const bool isGet = method_ == "get";
  transfer_.enter();
  runningTransfers().enter(transfer_.token(), isGet);
  const kvsc::HttpErrorIds exchanged = exchange();
  runningTransfers().leave(transfer_.token());
  HttpCallback* const receiver = isGet ? callbacks_.load() : nullptr;
  const kvsc::HttpErrorIds error = transfer_.noteEnd(exchanged);
  if (receiver != nullptr) reportEnd(*receiver, error);
  transfer_.leave();
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
  const auto receiver = helperOf(helper)->transfer_.noteHeader(text);
  if (!receiver) return 0;
  if (*receiver != nullptr) (*receiver)->headerReceived(text);
  return text.size();
}

std::size_t HttpHelper::downloadBodyFunc(void* data, std::size_t size, std::size_t count,
                                         void* helper) {
  HttpHelper& self = *helperOf(helper);
  HttpCallback* const receiver = self.callbacks_;
  const std::size_t length = size * count;
  const std::size_t taken =
      receiver != nullptr ? receiver->bodyReceived(static_cast<const char*>(data), length) : 0;
  if (taken != length) {
    self.transfer_.noteRefusal();
  } else if (self.client_ == nullptr || !isError(self.client_->getResponseCode())) {
    self.transfer_.notePiece();
  }
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
