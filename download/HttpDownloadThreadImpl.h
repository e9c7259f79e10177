#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "KPB/DownloadCallback.h"
#include "KPB/DownloadInfo.h"
#include "download/Authorisation.h"
#include "download/AutomaticPlayback.h"
#include "download/Host.h"
#include "download/HttpDownloadThread.h"
#include "download/LibrarySession.h"
#include "download/ReportHandler.h"
#include "download/RunState.h"
#include "download/SharedPreferences.h"
#include "kvpm/CritSection.h"

/// The run of the worker: its item, the library's session for it, and the library's reports.
///
/// Three kinds of thread meet here. The scheduler's runs `downloadVideo` and holds the run lock for
/// all of it. The library's bring reports, one at a time, and touch the item only between `open`
/// and `close` of the report handler; meanwhile the run only waits. Any thread stops. Calls that
/// may block for long are made on side threads, so that a stop need not wait for them.
class HttpDownloadThread::HttpDownloadThreadImpl : public KPB::DownloadCallback {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;
  using Playback = download::AutomaticPlayback::Playback;

  explicit HttpDownloadThreadImpl(KPIM::Context* context);
  ~HttpDownloadThreadImpl() override;

  Item* getItem() const { return currentItem_; }
  DownloadStatusEnumType downloadVideo(Item* item);
  void stop();
  void stopDownload(unsigned long long uid);
  void setPlayback(Playback playback) { playback_.setPlayback(std::move(playback)); }
  void close();

  download::Host& host() { return host_; }
  download::RunState& state() { return state_; }

  /// The full local path for the film behind `url`: a free name in the media folder.
  static std::wstring getLocalFilePath(const std::string& url);

  void httpTransferBegan(unsigned long long uid,
                         const std::basic_string<unsigned char>& signature) override;
  void updateProgress(unsigned long long uid, int percent) override;
  void httpTransferComplete(unsigned long long uid) override;
  void httpTransferBroke(unsigned long long uid, int code) override;
  void httpHeaderReceived(unsigned long long uid, const std::string& line) override;

 private:
  /// What the library is to be given.
  struct Transfer {
    std::string url;
    KPB::DownloadInfo info;
  };

  // The run, step by step. A step that answers false has ended the run, or found it ended.
  void runItem(Item* item);
  void takeSteps();
  bool findSource(Transfer& transfer);
  bool authorise(Transfer& transfer);
  bool measure(const Transfer& transfer);
  void fetch(Transfer& transfer);
  void describe(Transfer& transfer);
  void startSession(const Transfer& transfer);
  void finishCompleted();
  void reportStatus(DownloadStatusEnumType status);
  void endRun();

  const download::SharedPreferences preferences_;  // first, so that it outlives all else

  // Synchronised by themselves.
  download::Host host_;
  download::RunState state_;
  std::atomic<Item*> currentItem_{nullptr};
  std::atomic<bool> closed_{false};

  kvpm::CritSection runLock_;

  // Used by the thread that holds the run lock.
  std::unique_ptr<Item> unshared_;  // what the run was given, until `item_` is that
  std::shared_ptr<Item> item_;      // by the reports too while they are handled
  std::uint64_t totalSize_ = 0;     // bytes
  download::LibrarySession session_;

  // Last, so that they end before anything that their calls use.
  download::Authorisation authorisation_;
  download::AutomaticPlayback playback_;
  download::ReportHandler reports_;
};
