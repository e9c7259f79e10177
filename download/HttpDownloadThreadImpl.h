#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "KPB/DownloadCallback.h"
#include "KPB/DownloadInfo.h"
#include "KPB/DownloadInterface.h"
#include "VeskPlayerX/PlayerInterface.h"
#include "download/Authorisation.h"
#include "download/Host.h"
#include "download/HttpDownloadThread.h"
#include "download/RunState.h"
#include "download/SessionGate.h"
#include "download/SharedPreferences.h"
#include "download/SideThread.h"
#include "kvpm/CritSection.h"
#include "kvpm/Mutex.h"

/// The run of the worker: its item, the library's session for it, and the library's reports.
///
/// Three kinds of thread meet here. The scheduler's runs `downloadVideo` and holds the run lock for
/// all of it. The library's bring reports, one at a time under the callback mutex, and touch the
/// item only while the session gate is open; meanwhile the run only waits. Any thread stops. Calls
/// that may block for long are made on side threads, so that a stop need not wait for them.
class HttpDownloadThread::HttpDownloadThreadImpl : public KPB::DownloadCallback {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;
  using Playback = std::function<bool(unsigned int id)>;

  HttpDownloadThreadImpl(HttpDownloadThread& owner, KPIM::Context* context);
  ~HttpDownloadThreadImpl() override;

  Item* getItem() const { return currentItem_; }
  DownloadStatusEnumType downloadVideo(Item* item);
  void stop();
  void stopDownload(unsigned long long uid);
  void setPlayback(Playback playback) { playback_ = std::move(playback); }
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
  bool loadLibrary();
  bool findSource(Transfer& transfer);
  bool authorise(Transfer& transfer);
  bool measure(const Transfer& transfer);
  void fetch(Transfer& transfer);
  void describe(Transfer& transfer);
  void startSession(const Transfer& transfer);
  void openGate();
  void closeGate();
  void finishCompleted();
  bool fail();
  void reportStatus(DownloadStatusEnumType status);

  // The end of a session and of a run.
  void releaseSession(VeskPlayerX::PlayerInterface* player);
  void releaseLastSession();
  void stopItemSession();
  void endRun();

  // The library's reports, under the callback mutex.
  void receive(const download::LibraryReport& report);
  void handle(const download::LibraryReport& report) KVPM_REQUIRES(callbackMutex_);
  void handleProgress(int percent);
  void handleBroken();
  bool playIfRequested();
  Playback playback() const;

  const download::SharedPreferences preferences_;  // first, so that it outlives all else

  // Constant once a run has begun.
  HttpDownloadThread& owner_;
  Playback playback_;  // empty: the manager plays

  // Synchronised by themselves.
  download::Host host_;
  download::RunState state_;
  std::atomic<Item*> currentItem_{nullptr};
  std::atomic<KPB::DownloadInterface*> currentLibrary_{nullptr};  // never changes once it is set
  std::atomic<bool> closed_{false};
  std::atomic<std::thread::id> reportingThread_{};  // the one inside a report

  kvpm::CritSection runLock_;

  // Used by the thread that holds the run lock.
  std::shared_ptr<Item> item_;  // by the callbacks too while the gate is open
  std::unique_ptr<KPIM::Helper<KPB::DownloadInterface>> library_;
  std::uint64_t totalSize_ = 0;        // bytes
  unsigned long long sessionUid_ = 0;  // a session yet to be released, 0 without one

  kvpm::Mutex callbackMutex_;
  download::SessionGate gate_ KVPM_GUARDED_BY(callbackMutex_);

  // Last, so that they end before anything that their calls use.
  download::Authorisation authorisation_;
  download::SideThread playThread_;
};
