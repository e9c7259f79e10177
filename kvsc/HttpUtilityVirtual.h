#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "kvpm/Mutex.h"
#include "kvsc/HttpErrorIds.h"

namespace kvsc {

/// Collected UTF-8 bytes, not terminated. The array is from `new[]`; null when empty.
struct UTF8Data {
  unsigned char* data = nullptr;
  int length = 0;
};

/// Base class for collecting a response: callbacks for the client that fill memory or a file, a
/// progress relay, checks of the response, and escaping.
///
/// Owns what it collects. The callbacks run on the transfer's thread; every operation is safe on
/// any thread, and sees or makes each change as a whole. Byte arrays that are returned are copies
/// that the caller frees with `release`; arrays that are passed in become this object's. The
/// context that the client passes to a callback is a pointer to this class, not to a derived one.
/// Nothing here throws but `std::bad_alloc` where a string is returned.
class HttpUtilityVirtual {
 public:
  using Progress = int (*)(void* context, double downloaded, double total);

  HttpUtilityVirtual() = default;
  HttpUtilityVirtual(const HttpUtilityVirtual&) = delete;
  HttpUtilityVirtual& operator=(const HttpUtilityVirtual&) = delete;
  virtual ~HttpUtilityVirtual();

  /// Fetches `url` into this utility.
  virtual HttpErrorIds get(const std::string& url) = 0;

  /// Sends `data` to `url`; the answer is collected in this utility.
  virtual HttpErrorIds post(const std::string& url, const std::string& data) = 0;

  /// The same check for a response held in a string.
  virtual bool processServerResponse(std::string response, bool checkHtml, bool* ok,
                                     HttpErrorIds* error, std::string& message);

  /// Reads a response that is not terminated. Returns what is wrong with it, empty when it is good.
  virtual std::string parseResponse(const unsigned char* data, int length) = 0;

  /// Checks a response, one line end stripped off its end (`*length` shrinks by it). With
  /// `checkHtml` an HTML page, which proxies serve in place of the expected answer, is not ok and
  /// sets `*error`; without it `parseResponse` decides and `message` is its text. Returns `*ok`.
  /// `ok` and `error` may be null.
  bool processServerResponse(const unsigned char* data, int* length, bool checkHtml, bool* ok,
                             HttpErrorIds* error, std::string& message);

  /// Every collecting callback locks this mutex for its whole change. The thread that has locked it
  /// may call all other operations of this class.
  kvpm::Mutex& getMutex() const { return mutex_; }

  /// All header lines received, with their line ends.
  std::string getHeaders() const { return headers_.get(); }
  void setHeaders(const std::string& headers) { headers_.set(headers); }

  /// A copy of the collected bytes, its array freed by the caller with `release`.
  UTF8Data getUTF8Data() const;
  /// Becomes the owner of the array and frees the one before.
  void setUTF8Data(UTF8Data data) { utf8Data_.set(Collected(data.data, data.length)); }

  /// A copy of the collected bytes that the caller frees with `release`; null without any.
  unsigned char* getBuffer(int* length) const;
  /// Becomes the owner of the array and frees the one before.
  void setBuffer(unsigned char* data, int length) { buffer_.set(Collected(data, length)); }

  /// Frees an array that this class returned; null is allowed.
  static void release(unsigned char* data) { delete[] data; }

  /// The value of the private request header, "text/xml" unless set.
  std::string getResponseType() const { return responseType_.get(); }
  void setResponseType(const std::string& responseType) { responseType_.set(responseType); }

  /// The owner's note that it no longer wants the response, 0 at first.
  int getCancelled() const { return cancelled_; }
  void setCancelled(int cancelled) { cancelled_ = cancelled; }

  Progress getProgress() const { return progress_; }
  void setProgress(Progress progress) { progress_ = progress; }
  void* getProgressContext() const { return progressContext_; }
  void setProgressContext(void* context) { progressContext_ = context; }

  /// Bytes that earlier transfers of the same file received.
  double getAmountDownloadedSoFar() const { return amountDownloadedSoFar_; }
  void setAmountDownloadedSoFar(double bytes) { amountDownloadedSoFar_ = bytes; }

  /// Bytes of the whole file.
  double getTotalAmountToDownload() const { return totalAmountToDownload_; }
  void setTotalAmountToDownload(double bytes) { totalAmountToDownload_ = bytes; }

  /// What the progress callback returned last, 0 at first.
  int getProgressResult() const { return progressResult_; }

  /// Client callbacks that append to the buffer, the UTF-8 data, the headers. They return the bytes
  /// taken: all of them, or 0 when there is no utility or no memory.
  static std::size_t writeMemoryCallback(void* data, std::size_t size, std::size_t count,
                                         void* utility);
  static std::size_t writeUTF8MemoryCallback(void* data, std::size_t size, std::size_t count,
                                             void* utility);
  static std::size_t writeheadersCallback(void* data, std::size_t size, std::size_t count,
                                          void* utility);

  /// Client callback that appends to a `kvpm::File` open for writing. Returns the bytes taken: all
  /// of them, or 0 when not all could be written.
  static std::size_t multiWriteFile(void* data, std::size_t size, std::size_t count, void* file);

  /// Client callback that relays progress: the bytes of earlier transfers are added, and the total
  /// is the owner's, because the transfer itself knows none. Returns what the progress callback
  /// returns; -1, which cancels the transfer, without a callback.
  static int progressFunction(void* utility, double downloadTotal, double downloadNow,
                              double uploadTotal, double uploadNow);

  /// Escapes all but ASCII letters, digits and - _ . ! ~ ( ) as '%' with two upper-case hex digits.
  /// Returns an array, not terminated, that the receiver frees with `release`; null with length 0
  /// for no data, or no memory.
  static unsigned char* urlEncode(const unsigned char* data, int length, int* outLength);
  static std::string urlEncode(const std::string& text);

  /// The address of `path` on a server of this system: the port decides the scheme, and is named
  /// only where it is one that the servers use beside the usual ones.
  static std::string generateUrl(std::string host, unsigned int port, std::string path);

  /// `text` with "&" as "&amp;" and "'" as "&apos;"; nothing else is touched.
  static std::string replaceCharactersWithHtmlKeyWords(std::string text);

  /// Takes one "\n" or "\r\n" off the end of more than two bytes.
  static void stripCarriageReturnLineFeed(const unsigned char* data, int* length);
  static void stripCarriageReturnLineFeed(std::string& text);

 private:
  /// A value that any thread may read or change as a whole. Its lock is the innermost.
  template <typename T>
  class Guarded {
   public:
    explicit Guarded(T value = T()) : value_(std::move(value)) {}

    T get() const {
      return with([](const T& value) { return value; });
    }
    void set(T value) {
      with([&](T& current) { std::swap(current, value); });
    }
    template <typename Operation>
    auto with(Operation operation) const {
      const kvpm::MutexLock lock(mutex_);
      return operation(value_);
    }

   private:
    mutable kvpm::Mutex mutex_;
    mutable T value_ KVPM_GUARDED_BY(mutex_);
  };

  /// An array from `new[]` with its length.
  struct Collected {
    Collected() = default;
    Collected(unsigned char* bytes, int count);

    unsigned char* copy(int* count) const;
    bool append(const void* bytes, std::size_t count);

    std::unique_ptr<unsigned char[]> data;
    int length = 0;
  };

  template <typename Append>
  static std::size_t collect(void* utility, std::size_t length, Append append);

  mutable kvpm::Mutex mutex_;  // held by the callbacks around each change
  Guarded<Collected> utf8Data_;
  Guarded<Collected> buffer_;
  Guarded<std::string> headers_;
  Guarded<std::string> responseType_{"text/xml"};
  std::atomic<int> cancelled_{0};
  std::atomic<Progress> progress_{nullptr};
  std::atomic<void*> progressContext_{nullptr};
  std::atomic<double> amountDownloadedSoFar_{0};
  std::atomic<double> totalAmountToDownload_{0};
  std::atomic<int> progressResult_{0};
};

}  // namespace kvsc
