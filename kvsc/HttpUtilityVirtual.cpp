#include "kvsc/HttpUtilityVirtual.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <new>

#include "kvpm/File.h"

namespace kvsc {
namespace {

// The length of a piece as the client passes it; 0 for one that no memory can hold.
std::size_t bytesIn(std::size_t size, std::size_t count) {
  return size != 0 && count > std::numeric_limits<std::size_t>::max() / size ? 0 : size * count;
}

bool appendText(std::string& text, const void* data, std::size_t length) {
  try {
    text.append(static_cast<const char*>(data), length);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

HttpUtilityVirtual::~HttpUtilityVirtual() = default;

UTF8Data HttpUtilityVirtual::getUTF8Data() const {
  UTF8Data copied;
  copied.data = utf8Data_.with([&](const Collected& bytes) { return bytes.copy(&copied.length); });
  return copied;
}

unsigned char* HttpUtilityVirtual::getBuffer(int* length) const {
  return buffer_.with([&](const Collected& bytes) { return bytes.copy(length); });
}

template <typename Append>
std::size_t HttpUtilityVirtual::collect(void* utility, std::size_t length, Append append) {
  auto* self = static_cast<HttpUtilityVirtual*>(utility);
  if (self == nullptr) return 0;
  const kvpm::MutexLock lock(self->mutex_);
  return append(*self) ? length : 0;
}

std::size_t HttpUtilityVirtual::writeMemoryCallback(void* data, std::size_t size, std::size_t count,
                                                    void* utility) {
  const std::size_t length = bytesIn(size, count);
  return collect(utility, length, [&](HttpUtilityVirtual& self) {
    return self.buffer_.with([&](Collected& bytes) { return bytes.append(data, length); });
  });
}

std::size_t HttpUtilityVirtual::writeUTF8MemoryCallback(void* data, std::size_t size,
                                                        std::size_t count, void* utility) {
  const std::size_t length = bytesIn(size, count);
  return collect(utility, length, [&](HttpUtilityVirtual& self) {
    return self.utf8Data_.with([&](Collected& bytes) { return bytes.append(data, length); });
  });
}

std::size_t HttpUtilityVirtual::writeheadersCallback(void* data, std::size_t size,
                                                     std::size_t count, void* utility) {
  const std::size_t length = bytesIn(size, count);
  return collect(utility, length, [&](HttpUtilityVirtual& self) {
    return self.headers_.with(
        [&](std::string& headers) { return appendText(headers, data, length); });
  });
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
  const Progress progress = self != nullptr ? self->getProgress() : nullptr;
  if (progress == nullptr) return -1;
  const int result =
      progress(self->getProgressContext(), self->getAmountDownloadedSoFar() + downloadNow,
               self->getTotalAmountToDownload());
  self->progressResult_ = result;
  return result;
}

HttpUtilityVirtual::Collected::Collected(unsigned char* bytes, int count)
    : data(bytes), length(bytes == nullptr ? 0 : std::max(count, 0)) {}

// Null when there are no bytes, or no memory for them.
unsigned char* HttpUtilityVirtual::Collected::copy(int* count) const {
  const auto size = static_cast<std::size_t>(length);
  auto* copied = data ? new (std::nothrow) unsigned char[size] : nullptr;
  if (copied != nullptr) std::copy_n(data.get(), size, copied);
  *count = copied != nullptr ? length : 0;
  return copied;
}

// Every piece copies all that came before it: what is collected in memory is small, and the array
// is never larger than it must be.
bool HttpUtilityVirtual::Collected::append(const void* bytes, std::size_t count) {
  const auto oldLength = static_cast<std::size_t>(length);
  if (count > static_cast<std::size_t>(std::numeric_limits<int>::max()) - oldLength) return false;
  auto* joined = new (std::nothrow) unsigned char[oldLength + count]();
  if (joined == nullptr) return false;
  std::copy_n(data.get(), oldLength, joined);
  std::copy_n(static_cast<const unsigned char*>(bytes), count, joined + oldLength);
  data.reset(joined);
  length = static_cast<int>(oldLength + count);
  return true;
}

}  // namespace kvsc
