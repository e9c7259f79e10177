// A download library on libcurl, one thread for each session. Begins every film anew.

#include <curl/curl.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "KPB/DownloadCallback.h"
#include "KPB/DownloadInfo.h"
#include "KPB/DownloadInterface.h"
#include "KPIM/Plugin.h"

namespace {

namespace fs = std::filesystem;

class Downloads : public KPIM::Plugin, public KPB::DownloadInterface {
 public:
  explicit Downloads(KPIM::Context* context) : Plugin(context) {
    ::curl_global_init(CURL_GLOBAL_DEFAULT);
  }

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id != KPB::DIN_Download) return KPIM::kUnknownInterface;
    *out = static_cast<KPB::DownloadInterface*>(this);
    return KPIM::kSuccess;
  }

  void setCallback(KPB::DownloadCallback* callback) override {
    const std::lock_guard lock(reporting_);
    callback_ = callback;
  }

  int startSession(const std::string& url, const KPB::DownloadInfo& info,
                   unsigned long long* uid) override {
    const std::lock_guard lock(mutex_);
    *uid = ++last_;
    sessions_[last_] = std::jthread(
        [this, id = last_, url, info](std::stop_token stop) { fetch(id, url, info, stop); });
    return 1;
  }

  void stopSession(unsigned long long uid) override {
    const std::lock_guard lock(mutex_);
    const auto session = sessions_.find(uid);
    if (session != sessions_.end()) session->second.request_stop();
  }

 private:
  struct Progress {
    Downloads& downloads;
    const unsigned long long uid;
    const std::stop_token stop;
    curl_off_t percent = 0;
  };

  /// Reports come one at a time, and none once `setCallback(nullptr)` has returned.
  template <class... Declared, class... Given>
  void report(void (KPB::DownloadCallback::*operation)(Declared...), const Given&... arguments) {
    const std::lock_guard lock(reporting_);
    if (callback_ != nullptr) (callback_->*operation)(arguments...);
  }

  void fetch(unsigned long long uid, const std::string& url, const KPB::DownloadInfo& info,
             const std::stop_token& stop) {
    Progress progress{*this, uid, stop};
    const fs::path partial = fs::path(info.getDownloadDirectory()) / info.getOutputFilename();
    const fs::path film = fs::path(info.getMoviesDirectory()) / info.getOutputFilename();
    std::error_code failure;
    fs::create_directories(partial.parent_path(), failure);
    fs::create_directories(film.parent_path(), failure);
    const CURLcode code = write(url, partial, progress);
    if (stop.stop_requested()) return;
    if (code == CURLE_OK) fs::rename(partial, film, failure);
    if (code == CURLE_OK && !failure) {
      report(&KPB::DownloadCallback::httpTransferComplete, uid);
    } else {
      report(&KPB::DownloadCallback::httpTransferBroke, uid, static_cast<int>(code));
    }
  }

  static CURLcode write(const std::string& url, const fs::path& path, Progress& progress) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                               &std::fclose);
    const std::unique_ptr<CURL, void (*)(CURL*)> curl(::curl_easy_init(), &::curl_easy_cleanup);
    if (file == nullptr || curl == nullptr) return CURLE_WRITE_ERROR;
    ::curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    ::curl_easy_setopt(curl.get(), CURLOPT_FOLLOWLOCATION, 1L);
    ::curl_easy_setopt(curl.get(), CURLOPT_FAILONERROR, 1L);
    ::curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    ::curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, file.get());
    ::curl_easy_setopt(curl.get(), CURLOPT_NOPROGRESS, 0L);
    ::curl_easy_setopt(curl.get(), CURLOPT_XFERINFODATA, &progress);
    ::curl_easy_setopt(curl.get(), CURLOPT_XFERINFOFUNCTION, &Downloads::onBytes);
    const CURLcode code = ::curl_easy_perform(curl.get());
    return std::fflush(file.get()) == 0 ? code : CURLE_WRITE_ERROR;
  }

  static int onBytes(void* data, curl_off_t total, curl_off_t now, curl_off_t, curl_off_t) {
    auto& progress = *static_cast<Progress*>(data);
    const curl_off_t percent = total > 0 ? now * 100 / total : 0;
    if (percent > progress.percent) {
      progress.percent = percent;
      progress.downloads.report(&KPB::DownloadCallback::updateProgress, progress.uid,
                                static_cast<int>(percent));
    }
    return progress.stop.stop_requested() ? 1 : 0;
  }

  std::recursive_mutex reporting_;  // re-entrant: a report may call `setCallback`
  KPB::DownloadCallback* callback_ = nullptr;
  std::mutex mutex_;
  unsigned long long last_ = 0;
  std::map<unsigned long long, std::jthread> sessions_;  // the last to be built, the first to end
};

}  // namespace

extern "C" __attribute__((visibility("default"))) KPIM::VESK_RESULT getPlugin(
    KPIM::Context* context, void** out) {
  *out = static_cast<KPIM::Plugin*>(new Downloads(context));
  return KPIM::kSuccess;
}
