#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "kvpm/Mutex.h"
#include "kvsc/HttpErrorIds.h"

namespace kvsc {

/// Collected UTF-8 bytes, not terminated. The array is from `new[]`; null for none.
struct UTF8Data {
  unsigned char* data = nullptr;
  int length = 0;
};

/// Base class of whoever collects a response: callbacks for the client that fill memory or a file,
/// a progress relay, checks of the response, and escaping.
///
/// Owns what it collects. The callbacks run on the transfer's thread while other threads call the
/// accessors: every change and every copy is whole, so every operation except those of derived
/// classes is safe on any thread. Byte arrays that are handed out are copies that the
/// receiver frees with `release`; arrays that are handed in are taken over. The context that the
/// client passes to a callback is a pointer to this class, not to a derived one. Nothing here
/// throws but `std::bad_alloc` where a string is returned.
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
  /// `checkHtml` an HTML page, as proxies serve in the place of the expected answer, is not ok and
  /// sets `*error`; without it `parseResponse` decides and `message` is its text. Returns `*ok`.
  /// `ok` and `error` may be null.
  bool processServerResponse(const unsigned char* data, int* length, bool checkHtml, bool* ok,
                             HttpErrorIds* error, std::string& message);

  /// Keeps the collecting callbacks out while it is held; each takes it for its whole change. The
  /// holder may call every other operation of this class.
  kvpm::Mutex& getMutex() const { return mutex_; }

  /// All header lines received, with their line ends.
  std::string getHeaders() const;
  void setHeaders(const std::string& headers);

  /// A copy of the collected bytes; the receiver frees its array with `release`.
  UTF8Data getUTF8Data() const;
  /// Takes the array over and frees the one before. No copy holds on to it.
  void setUTF8Data(UTF8Data data);

  /// A copy of the collected bytes that the receiver frees with `release`, null for none.
  unsigned char* getBuffer(int* length) const;
  /// Takes the array over and frees the one before.
  void setBuffer(unsigned char* data, int length);

  /// Frees an array that this class handed out. Null is allowed.
  static void release(unsigned char* data);

  /// The value of the private request header, "text/xml" unless set.
  std::string getResponseType() const;
  void setResponseType(const std::string& responseType);

  /// The owner's mark that it no longer wants the response, 0 at first.
  int getCancelled() const;
  void setCancelled(int cancelled);

  Progress getProgress() const;
  void setProgress(Progress progress);
  void* getProgressContext() const;
  void setProgressContext(void* context);

  /// Bytes that earlier transfers of the same file brought.
  double getAmountDownloadedSoFar() const;
  void setAmountDownloadedSoFar(double bytes);

  /// Bytes of the whole file.
  double getTotalAmountToDownload() const;
  void setTotalAmountToDownload(double bytes);

  /// What the progress callback answered last, 0 at first.
  int getProgressResult() const;

  /// Client callbacks that append to the buffer, the UTF-8 data, the headers. They return the bytes
  /// taken: all of them, or 0 without a utility or memory.
  static std::size_t writeMemoryCallback(void* data, std::size_t size, std::size_t count,
                                         void* utility);
  static std::size_t writeUTF8MemoryCallback(void* data, std::size_t size, std::size_t count,
                                             void* utility);
  static std::size_t writeheadersCallback(void* data, std::size_t size, std::size_t count,
                                          void* utility);

  /// Client callback that appends to a `kvpm::File` open for writing. Returns the bytes taken: all
  /// of them, or 0 when not all could be written.
  static std::size_t multiWriteFile(void* data, std::size_t size, std::size_t count, void* file);

  /// Client callback that relays progress: the amount of earlier transfers counts as well, and the
  /// total is the owner's, because the transfer itself knows none. Returns the relay's answer; -1,
  /// which cancels the transfer, without a relay.
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
  using Bytes = std::unique_ptr<unsigned char[]>;

  /// An array with its length.
  struct Collected {
    Bytes data;
    int length = 0;
  };

  static Bytes copyOf(const Collected& collected);
  static bool appendTo(Collected& collected, const void* data, std::size_t length);

  mutable kvpm::Mutex mutex_;
  mutable kvpm::Mutex fieldsMutex_;  // taken last, and for nothing but the fields
  Collected utf8Data_ KVPM_GUARDED_BY(fieldsMutex_);
  Collected buffer_ KVPM_GUARDED_BY(fieldsMutex_);
  std::string headers_ KVPM_GUARDED_BY(fieldsMutex_);
  std::string responseType_ KVPM_GUARDED_BY(fieldsMutex_) = "text/xml";
  int cancelled_ KVPM_GUARDED_BY(fieldsMutex_) = 0;
  Progress progress_ KVPM_GUARDED_BY(fieldsMutex_) = nullptr;
  void* progressContext_ KVPM_GUARDED_BY(fieldsMutex_) = nullptr;
  double amountDownloadedSoFar_ KVPM_GUARDED_BY(fieldsMutex_) = 0;
  double totalAmountToDownload_ KVPM_GUARDED_BY(fieldsMutex_) = 0;
  int progressResult_ KVPM_GUARDED_BY(fieldsMutex_) = 0;
};

}  // namespace kvsc
