#include "kvsc/HttpUtilityVirtual.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <new>

#include "kvpm/File.h"

namespace kvsc {
namespace {

/// The length of a piece as the client hands it over; 0 for one that no memory can hold.
std::size_t bytesIn(std::size_t size, std::size_t count) {
  return size != 0 && count > std::numeric_limits<std::size_t>::max() / size ? 0 : size * count;
}

int lengthOf(const unsigned char* data, int length) {
  return data == nullptr ? 0 : std::max(length, 0);
}

}  // namespace

HttpUtilityVirtual::~HttpUtilityVirtual() = default;

std::string HttpUtilityVirtual::getHeaders() const {
  const kvpm::MutexLock lock(fieldsMutex_);
  return headers_;
}

void HttpUtilityVirtual::setHeaders(const std::string& headers) {
  const kvpm::MutexLock lock(fieldsMutex_);
  headers_ = headers;
}

UTF8Data HttpUtilityVirtual::getUTF8Data() const {
  const kvpm::MutexLock lock(fieldsMutex_);
  Bytes copy = copyOf(utf8Data_);
  const int length = copy ? utf8Data_.length : 0;
  return {copy.release(), length};
}

void HttpUtilityVirtual::setUTF8Data(UTF8Data data) {
  const kvpm::MutexLock lock(fieldsMutex_);
  utf8Data_ = {Bytes(data.data), lengthOf(data.data, data.length)};
}

unsigned char* HttpUtilityVirtual::getBuffer(int* length) const {
  const kvpm::MutexLock lock(fieldsMutex_);
  Bytes copy = copyOf(buffer_);
  *length = copy ? buffer_.length : 0;
  return copy.release();
}

void HttpUtilityVirtual::setBuffer(unsigned char* data, int length) {
  const kvpm::MutexLock lock(fieldsMutex_);
  buffer_ = {Bytes(data), lengthOf(data, length)};
}

void HttpUtilityVirtual::release(unsigned char* data) { delete[] data; }

std::string HttpUtilityVirtual::getResponseType() const {
  const kvpm::MutexLock lock(fieldsMutex_);
  return responseType_;
}

void HttpUtilityVirtual::setResponseType(const std::string& responseType) {
  const kvpm::MutexLock lock(fieldsMutex_);
  responseType_ = responseType;
}

int HttpUtilityVirtual::getCancelled() const {
  const kvpm::MutexLock lock(fieldsMutex_);
  return cancelled_;
}

void HttpUtilityVirtual::setCancelled(int cancelled) {
  const kvpm::MutexLock lock(fieldsMutex_);
  cancelled_ = cancelled;
}

HttpUtilityVirtual::Progress HttpUtilityVirtual::getProgress() const {
  const kvpm::MutexLock lock(fieldsMutex_);
  return progress_;
}

void HttpUtilityVirtual::setProgress(Progress progress) {
  const kvpm::MutexLock lock(fieldsMutex_);
  progress_ = progress;
}

void* HttpUtilityVirtual::getProgressContext() const {
  const kvpm::MutexLock lock(fieldsMutex_);
  return progressContext_;
}

void HttpUtilityVirtual::setProgressContext(void* context) {
  const kvpm::MutexLock lock(fieldsMutex_);
  progressContext_ = context;
}

double HttpUtilityVirtual::getAmountDownloadedSoFar() const {
  const kvpm::MutexLock lock(fieldsMutex_);
  return amountDownloadedSoFar_;
}

void HttpUtilityVirtual::setAmountDownloadedSoFar(double bytes) {
  const kvpm::MutexLock lock(fieldsMutex_);
  amountDownloadedSoFar_ = bytes;
}

double HttpUtilityVirtual::getTotalAmountToDownload() const {
  const kvpm::MutexLock lock(fieldsMutex_);
  return totalAmountToDownload_;
}

void HttpUtilityVirtual::setTotalAmountToDownload(double bytes) {
  const kvpm::MutexLock lock(fieldsMutex_);
  totalAmountToDownload_ = bytes;
}

int HttpUtilityVirtual::getProgressResult() const {
  const kvpm::MutexLock lock(fieldsMutex_);
  return progressResult_;
}

std::size_t HttpUtilityVirtual::writeMemoryCallback(void* data, std::size_t size, std::size_t count,
                                                    void* utility) {
  auto* self = static_cast<HttpUtilityVirtual*>(utility);
  if (self == nullptr) return 0;
  const std::size_t length = bytesIn(size, count);
  const kvpm::MutexLock lock(self->mutex_);
  const kvpm::MutexLock fields(self->fieldsMutex_);
  return appendTo(self->buffer_, data, length) ? length : 0;
}

std::size_t HttpUtilityVirtual::writeUTF8MemoryCallback(void* data, std::size_t size,
                                                        std::size_t count, void* utility) {
  auto* self = static_cast<HttpUtilityVirtual*>(utility);
  if (self == nullptr) return 0;
  const std::size_t length = bytesIn(size, count);
  const kvpm::MutexLock lock(self->mutex_);
  const kvpm::MutexLock fields(self->fieldsMutex_);
  return appendTo(self->utf8Data_, data, length) ? length : 0;
}

std::size_t HttpUtilityVirtual::writeheadersCallback(void* data, std::size_t size,
                                                     std::size_t count, void* utility) {
  auto* self = static_cast<HttpUtilityVirtual*>(utility);
  if (self == nullptr) return 0;
  const std::size_t length = bytesIn(size, count);
  const kvpm::MutexLock lock(self->mutex_);
  const kvpm::MutexLock fields(self->fieldsMutex_);
  try {
    self->headers_.append(static_cast<const char*>(data), length);
  } catch (const std::exception&) {
    return 0;
  }
  return length;
}

std::size_t HttpUtilityVirtual::multiWriteFile(void* data, std::size_t size, std::size_t count,
                                               void* file) {
  if (file == nullptr) {
    std::puts("No valid stream provided for writing");
    return 0;
  }
  const std::size_t length = bytesIn(size, count);
  const std::int64_t written = static_cast<kvpm::File*>(file)->write(data, length);
  return written >= 0 && static_cast<std::uint64_t>(written) == length ? length : 0;
}

int HttpUtilityVirtual::progressFunction(void* utility, double /*downloadTotal*/,
                                         double downloadNow, double /*uploadTotal*/,
                                         double /*uploadNow*/) {
  auto* self = static_cast<HttpUtilityVirtual*>(utility);
  if (self == nullptr) return -1;
  Progress progress = nullptr;
  void* context = nullptr;
  double downloaded = downloadNow;
  double total = 0;
  {
    const kvpm::MutexLock lock(self->fieldsMutex_);
    progress = self->progress_;
    context = self->progressContext_;
    downloaded += self->amountDownloadedSoFar_;
    total = self->totalAmountToDownload_;
  }
  // Unlocked: the relay may well ask this utility something.
  if (progress == nullptr) return -1;
  const int result = progress(context, downloaded, total);
  const kvpm::MutexLock lock(self->fieldsMutex_);
  self->progressResult_ = result;
  return result;
}

/// A copy of the bytes, null when there are none or no memory for them.
HttpUtilityVirtual::Bytes HttpUtilityVirtual::copyOf(const Collected& collected) {
  if (!collected.data) return nullptr;
  const auto length = static_cast<std::size_t>(collected.length);
  Bytes copy(new (std::nothrow) unsigned char[length]);
  if (copy) std::copy_n(collected.data.get(), length, copy.get());
  return copy;
}

/// Puts an array with the new bytes at its end in the place of the old one. Every piece copies all
/// that came before it: what is collected in memory is small, and is never larger than it must be.
bool HttpUtilityVirtual::appendTo(Collected& collected, const void* data, std::size_t length) {
  const auto oldLength = static_cast<std::size_t>(collected.length);
  if (length > static_cast<std::size_t>(std::numeric_limits<int>::max()) - oldLength) return false;
  Bytes joined(new (std::nothrow) unsigned char[oldLength + length]());
  if (!joined) return false;
  std::copy_n(collected.data.get(), oldLength, joined.get());
  std::copy_n(static_cast<const unsigned char*>(data), length, joined.get() + oldLength);
  collected = {std::move(joined), static_cast<int>(oldLength + length)};
  return true;
}

}  // namespace kvsc
