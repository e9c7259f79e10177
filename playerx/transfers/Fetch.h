#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "playerx/settings/TrustedAuthorities.h"
#include "playerx/transfers/RateLimit.h"
#include "playerx/transfers/ResumePlan.h"
#include "playerx/transfers/TransferFailure.h"
#include "playerx/transfers/TransferSettings.h"

namespace playerx::transfers {

/// One request for a file, or for the rest of it. A record.
struct FetchSpec {
  std::string url;
  RangeRequest range{};
  TrustedAuthorities trust;
  FilmOptions options;
  std::chrono::milliseconds connectTimeout{30'000};  ///< name, connection and handshake
  bool freshConnection = false;                      ///< not one that an earlier request has used
};

/// How the transport of a request ended.
struct FetchOutcome {
  TransferFailure failure = TransferFailure::kNone;  ///< kNone: an answer came, to its proper end
  std::string detail;
};

/// Receives what a request brings, on the thread that runs the `FetchLoop`.
class FetchSink {
 public:
  FetchSink() = default;
  FetchSink(const FetchSink&) = delete;
  FetchSink& operator=(const FetchSink&) = delete;
  virtual ~FetchSink() = default;

  /// One raw header line of any answer, redirects included; false ends the request.
  virtual bool onHeaderLine(std::string_view line) = 0;

  /// A piece of the final answer's body; false ends the request.
  virtual bool onBody(const char* data, std::size_t length) = 0;

  /// The request is over. The last call; the sink may destroy the request now.
  virtual void onOver(const FetchOutcome& outcome) = 0;
};

/// One GET by libcurl: http and https only, also after redirects, of which it follows ten; peer and
/// host name verified; proxies as libcurl's environment variables say; the body as it is, never
/// compressed.
class Fetch {
 public:
  /// Prepares the request; `FetchLoop` runs it. `sink` is not owned.
  Fetch(const FetchSpec& spec, FetchSink& sink);
  Fetch(const Fetch&) = delete;
  Fetch& operator=(const Fetch&) = delete;

  CURL* handle() const { return handle_.get(); }

  /// Has the bytes of the body kept back while the limit, which outlives the request, is not open.
  void setLimit(RateLimit& limit) { limit_ = &limit; }

  /// Whether bytes are being kept back.
  bool isKeptBack() const { return isKeptBack_; }

  /// Takes what was kept back, as far as the limit is open. Returns how that ended.
  CURLcode goOn();

  /// Translates the library's result.
  FetchOutcome outcomeOf(CURLcode code) const;

 private:
  struct EasyCleanup {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  };
  struct ListFree {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  void setSafety();
  void setCredentials(const FilmOptions& options);
  void setRange(const RangeRequest& range);
  void setOptions(const FilmOptions& options);
  void addHeader(const std::string& line);
  std::size_t takeBody(const char* data, std::size_t length);
  static std::size_t passBody(char* data, std::size_t size, std::size_t count, void* fetch);

  FetchSink& sink_;
  RateLimit* limit_ = nullptr;
  bool isKeptBack_ = false;
  std::unique_ptr<curl_slist, ListFree> headers_;
  char error_[CURL_ERROR_SIZE] = {};
  std::unique_ptr<CURL, EasyCleanup> handle_;
};

}  // namespace playerx::transfers
