#include "download/HttpHelper.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

#include "download/AnnouncedHeader.h"
#include "download/HttpCallback.h"
#include "kvsc/HttpStatus.h"

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
  auto fresh = std::make_shared<Transfer>();
  fresh->url = url;
  fresh->client = std::make_unique<kvsc::SSLClient>(clientArg);
  fresh->session = std::make_unique<kvsc::SSLSession>();
  fresh->session->setMaxRedirectCount(kInfoRedirects);
  fresh->session->setDownloadLoopSleep(kPauseBetweenReads);
  {
    const kvpm::MutexLock lock(mutex_);
    retire();
    transfer_->progress.superseded = true;
    if (!transfer_->progress.ended) transfer_->progress.aborted = true;
    progressed_.notify_all();
    transfer_ = std::move(fresh);
    thread_ = std::make_unique<kvpm::Thread>(this);
  }
  joinRetired();
  return true;
}

HttpHelper::Held HttpHelper::present() const {
  const kvpm::MutexLock lock(mutex_);
  return transfer_;
}

/// The transfer whose thread this is; on any other thread the present one.
HttpHelper::Held HttpHelper::mine() const {
  const auto self = std::this_thread::get_id();
  const auto found = std::find_if(retired_.begin(), retired_.end(), [self](const Retired& retired) {
    return retired.transfer->runner == self;
  });
  return found != retired_.end() ? found->transfer : transfer_;
}

bool HttpHelper::isOnOwnThread() const { return mine()->runner == std::this_thread::get_id(); }

HttpResult* HttpHelper::getInfo() {
  auto result = std::make_unique<HttpResult>();
  result->setHttpCallbacks(callbacks_);
  {
    const kvpm::MutexLock lock(mutex_);
    currentResult_ = result.get();
  }
  const Held transfer = present();
  if (transfer->client != nullptr) askForInfo(*transfer, *result);
  return result.release();
}

void HttpHelper::askForInfo(Transfer& transfer, HttpResult& result) {
  if (infoToken_ == nullptr) transfer.token.reset();
  kvsc::SSLClient& client = *transfer.client;
  kvsc::SSLSession session;
  session.setCheckCertificate(false);
  session.setMaxRedirectCount(kInfoRedirects);
  session.setCancelToken(infoToken_ != nullptr ? infoToken_ : &transfer.token);
  client.setHeaderCallback(&HttpHelper::downloadHeaderFunc);
  client.setHeaderContext(this);
  kvsc::HttpErrorIds error = kvsc::HTTP_ERROR_NONE;
  client.httpHead(transfer.url, 0, &error, &session, "text/xml", "", kvsc::SSLV3);
  result.setReturnCode(static_cast<unsigned int>(client.getResponseCode()));
  if (error != kvsc::HTTP_ERROR_NONE) {
    result.setResult(HTTP_RESULT_FAILED);
    result.setErrorDescription(client.getErrorString());
    return;
  }
  judgeInfo(client, result);
}

void HttpHelper::judgeInfo(kvsc::SSLClient& client, HttpResult& result) {
  const std::string length = client.getResponseValue("Content-length");
  if (!length.empty()) {
    result.setContentLength(static_cast<unsigned long long>(download::leadingNumber(length)));
  }
  const std::string location = client.getResponseValue("Location:");
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
  if (present()->url.empty() || callbacks_ == nullptr) {
    result->setResult(HTTP_RESULT_FAILED);
    return result.release();
  }
  result->setHttpCallbacks(callbacks_);
  {
    const kvpm::MutexLock lock(mutex_);
    requestData_ = requestData;
  }
  const Held transfer = startTransfer("get", *result);
  const Progress progress = transfer != nullptr ? waitForBody(*transfer, true) : Progress();
  const bool cancelledEarly = progress.cancelled && !progress.bodyStarted;
  if (transfer == nullptr || progress.aborted || cancelledEarly) {
    result->setResult(HTTP_RESULT_FAILED);
  }
  return handOver(std::move(result));
}

HttpResult* HttpHelper::post() {
  auto result = std::make_unique<HttpResult>();
  result->setResult(HTTP_RESULT_OK);
  if (const Held transfer = startTransfer("post", *result)) waitForBody(*transfer, false);
  return handOver(std::move(result));
}

/// Prepares the client for the transfer that is about to start.
void HttpHelper::configure(Transfer& transfer) {
  kvsc::SSLSession& session = *transfer.session;
  session.setCheckCertificate(false);
  session.setMaxRedirectCount(kTransferRedirects);
  session.setRedirectCount(0);
  session.setUserAgent("Vesk Player 2.0");
  session.setCancelToken(&transfer.token);
  kvsc::SSLClient& client = *transfer.client;
  client.setBodyCallback(&HttpHelper::downloadBodyFunc);
  client.setBodyContext(this);
  client.setHeaderCallback(&HttpHelper::downloadHeaderFunc);
  client.setHeaderContext(this);
  if (transfer.method == "get") client.setProgressCallback(&HttpHelper::progressFunc);
}

HttpHelper::Progress HttpHelper::waitForBody(Transfer& transfer, bool untilAborted) {
  const kvpm::MutexLock lock(mutex_);
  const Progress& progress = transfer.progress;
  while (!progress.bodyStarted && !progress.ended && !(untilAborted && progress.aborted)) {
    progressed_.wait_for(mutex_, kPoll);
  }
  if (untilAborted) waitForVerdict(transfer);
  return progress;
}

/// The text of an error is followed at once by the end of the transfer. That of an answer which
/// leads elsewhere may be followed by silence, so it is given one look more.
void HttpHelper::waitForVerdict(Transfer& transfer) {
  const Progress& progress = transfer.progress;
  const auto lastLook = std::chrono::steady_clock::now() + kPoll;
  while (kvsc::outcomeOfStatus(progress.status) != kvsc::HTTP_ERROR_NONE && !progress.ended &&
         !progress.aborted) {
    if (!kvsc::isRedirect(progress.status)) {
      progressed_.wait_for(mutex_, kPoll);
    } else if (progressed_.wait_until(mutex_, lastLook) == std::cv_status::timeout) {
      return;
    }
  }
}

/// Gives the result to the caller, who may do with it what he likes: header lines that come after
/// this go to a record of the helper's own.
HttpResult* HttpHelper::handOver(std::unique_ptr<HttpResult> result) {
  const kvpm::MutexLock lock(mutex_);
  if (currentResult_ == result.get()) {  // not that of a transfer started meanwhile
    ownResult_ = *result;
    currentResult_ = &ownResult_;
  }
  return result.release();
}

std::size_t HttpHelper::takeHeader(const std::string& line) {
  HttpCallback* receiver = nullptr;
  {
    const kvpm::MutexLock lock(mutex_);
    if (currentResult_ == nullptr || mine()->progress.superseded) return 0;
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
  HttpCallback* receiver = callbacks_;
  Held transfer;
  {
    const kvpm::MutexLock lock(mutex_);
    transfer = mine();
    if (transfer->progress.superseded) receiver = nullptr;
  }
  const std::size_t taken = receiver != nullptr ? receiver->bodyReceived(data, length) : 0;
  const bool refused = taken != length;
  if (refused) {
    transfer->bodyRefused = true;
    transfer->token.cancel();
  }
  if (receiver == nullptr) return 0;
  const kvpm::MutexLock lock(mutex_);
  Progress& progress = transfer->progress;
  progress.bodyStarted = true;
  if (transfer->client != nullptr) progress.status = transfer->client->getResponseCode();
  if (refused && transfer->method == "get") progress.aborted = true;
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
