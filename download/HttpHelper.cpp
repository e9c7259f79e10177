#include "download/HttpHelper.h"

#include <QByteArray>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <new>
#include <set>
#include <string_view>
#include <utility>

#include "download/HttpCallback.h"
#include "kvsc/HttpStatus.h"
#include "kvsc/SSLClient.h"

std::atomic<std::int32_t> HttpHelper::sDownloadCancelled{0};

namespace {

constexpr int kInfoRedirects = 10;
constexpr int kTransferRedirects = 1;
constexpr int kPauseBetweenReads = 1;  // milliseconds
constexpr std::chrono::milliseconds kLookInterval{100};

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

HttpHelper::HttpHelper() = default;

HttpHelper::~HttpHelper() { abort(); }

bool HttpHelper::setup(const std::string& url, const std::string& clientArg) {
  endTransfer();
  url_ = url;
  method_.clear();
  client_ = std::make_unique<kvsc::SSLClient>(clientArg);
  session_ = std::make_unique<kvsc::SSLSession>();
  session_->setMaxRedirectCount(kInfoRedirects);
  session_->setDownloadLoopSleep(kPauseBetweenReads);
  const kvpm::MutexLock lock(mutex_);
  progress_ = {};
  thread_ = std::make_unique<kvpm::Thread>(this);
  return true;
}

void HttpHelper::cancelDownload() {
  runningTransfers().cancelAll();
  const kvpm::MutexLock lock(mutex_);
  token_.cancel();
  progress_.aborted = true;
  changed_.notify_all();
}

void HttpHelper::abort() {
  const bool isRunning = [this] {
    const kvpm::MutexLock lock(mutex_);
    return thread_ != nullptr && !progress_.ended;
  }();
  if (isRunning) cancelDownload();
  endTransfer();
}

/// Ends the transfer and waits for its thread, unless that is the calling one.
void HttpHelper::endTransfer() {
  std::unique_ptr<kvpm::Thread> leaving;  // joined without the lock, which its callbacks may need
  const kvpm::MutexLock lock(mutex_);
  token_.cancel();
  if (runner_ == std::this_thread::get_id()) return;
  leaving = std::move(thread_);
  progress_.aborted = progress_.aborted || !progress_.ended;
  changed_.notify_all();
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
  if (infoToken_ == nullptr) token_.reset();
  kvsc::SSLSession session;
  session.setCheckCertificate(false);
  session.setMaxRedirectCount(kInfoRedirects);
  session.setCancelToken(infoToken_ != nullptr ? infoToken_ : &token_);
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

/// Returns a copy of the transfer's result: the transfer goes on writing its own, and the caller
/// may delete the copy at once.
std::unique_ptr<HttpResult> HttpHelper::transfer(const std::string& method,
                                                 const std::string& requestData,
                                                 HttpCallback* receiver) {
  if (!start(method, requestData, receiver)) return std::make_unique<HttpResult>();
  const kvpm::MutexLock lock(mutex_);
  waitForBody();
  auto result = std::make_unique<HttpResult>(transferResult_);
  if (!progress_.aborted) result->setResult(HTTP_RESULT_OK);
  return result;
}

/// Returns whether a transfer runs now; one that ran already goes on.
bool HttpHelper::start(const std::string& method, const std::string& requestData,
                       HttpCallback* receiver) {
  joinEnded();
  const kvpm::MutexLock lock(mutex_);
  if (thread_ == nullptr) return false;
  if (!progress_.ended) return true;
  method_ = method;
  requestData_ = requestData;
  prepareClient();
  token_.reset();
  progress_ = {};
  transferResult_ = HttpResult();
  transferResult_.setHttpCallbacks(receiver);
  currentResult_ = &transferResult_;
  progress_.ended = !thread_->start();
  return !progress_.ended;
}

/// A transfer that has told its end may be followed by the next one at once, although its thread
/// takes another moment to leave.
void HttpHelper::joinEnded() {
  std::unique_ptr<kvpm::Thread> leaving;  // joined without the lock, which its callbacks may need
  const kvpm::MutexLock lock(mutex_);
  if (thread_ == nullptr || !progress_.ended) return;
  leaving = std::exchange(thread_, std::make_unique<kvpm::Thread>(this));
}

void HttpHelper::waitForBody() {
  while (!progress_.bodyStarted && !progress_.ended && !progress_.aborted) {
    changed_.wait_for(mutex_, kLookInterval);
  }
}

void HttpHelper::prepareClient() {
  session_->setCheckCertificate(false);
  session_->setMaxRedirectCount(kTransferRedirects);
  session_->setRedirectCount(0);
  session_->setUserAgent("Vesk Player 2.0");
  session_->setCancelToken(&token_);
  client_->setBodyCallback(&HttpHelper::downloadBodyFunc);
  client_->setBodyContext(this);
  client_->setHeaderCallback(&HttpHelper::downloadHeaderFunc);
  client_->setHeaderContext(this);
  if (method_ == "get") client_->setProgressCallback(&HttpHelper::progressFunc);
}

void HttpHelper::runThread(kvpm::Thread*) {
  if (client_ == nullptr || method_.empty()) return;
  const bool isGet = method_ == "get";
  runner_ = std::this_thread::get_id();
  runningTransfers().enter(token_, isGet);
  const kvsc::HttpErrorIds exchanged = exchange();
  runningTransfers().leave(token_);
  HttpCallback* const receiver = isGet ? callbacks_.load() : nullptr;
  const kvsc::HttpErrorIds error = noteEnd(exchanged);
  if (receiver != nullptr) reportEnd(*receiver, error);
  runner_ = std::thread::id();
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

/// A piece of an error's text is not what `get` waits for: the failure follows it.
void HttpHelper::notePiece(bool refused) {
  const int status = client_ != nullptr ? client_->getResponseCode() : 0;
  const bool isError =
      !kvsc::isRedirect(status) && kvsc::outcomeOfStatus(status) != kvsc::HTTP_ERROR_NONE;
  const kvpm::MutexLock lock(mutex_);
  if (refused) {
    progress_.refused = true;
    token_.cancel();  // the client does not look at what its callbacks return
  } else if (!isError) {
    progress_.bodyStarted = true;
    changed_.notify_all();
  }
}

/// Returns the outcome of the transfer: one that was ended because its receiver refused the body
/// has failed, it was not cancelled.
kvsc::HttpErrorIds HttpHelper::noteEnd(kvsc::HttpErrorIds error) {
  const kvpm::MutexLock lock(mutex_);
  if (error == kvsc::HTTP_ERROR_CANCELLED && progress_.refused) error = kvsc::HTTP_ERROR_FAILED;
  if (error != kvsc::HTTP_ERROR_NONE) progress_.aborted = true;
  progress_.ended = true;
  changed_.notify_all();
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
  self.notePiece(taken != length);
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
