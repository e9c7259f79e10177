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
#include "KPIM/Helper.h"
#include "VeskPlayerX/DownloadManagerInterface.h"
#include "download/AttachedView.h"
#include "download/HttpDownloadThread.h"
#include "download/RunState.h"
#include "download/SessionGate.h"
#include "download/SharedPreferences.h"
#include "download/SideThread.h"
#include "kvpm/CritSection.h"
#include "kvpm/Mutex.h"

namespace download {
class Authorisation;
}

/// What the worker is made of: the item it carries, the library's session for it, and whom it
/// tells.
///
/// Three kinds of thread meet here. The scheduler's runs `downloadVideo` and holds the run lock for
/// all of it. The library's bring reports, one at a time under the callback mutex, and touch the
/// item only while the session gate is open; meanwhile the run only waits. Any thread stops. Two
/// threads of the worker's own make the calls that may block for long, so that a stop need not wait
/// for them.
class HttpDownloadThread::HttpDownloadThreadImpl : public KPB::DownloadCallback {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;
  using Manager = VeskPlayerX::DownloadManagerInterface;
  using Playback = std::function<bool(unsigned int id)>;

  HttpDownloadThreadImpl(HttpDownloadThread& owner, KPIM::Context* context);
  ~HttpDownloadThreadImpl() override;

  Item* getItem() const { return presentItem_; }
  DownloadStatusEnumType downloadVideo(Item* item);
  void stop();
  void stopDownload(unsigned long long uid);
  void close();

  void setInterfaces(Manager* manager, download::AttachedView::View* view);
  void setPlayback(Playback playback) { playback_ = std::move(playback); }

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
  DownloadStatusEnumType runLocked(Item* item);
  void takeOver(Item* item);
  void runItem();
  bool loadLibrary();
  bool findSource(Transfer& transfer);
  bool measure(const Transfer& transfer);
  bool choosePlace(const Transfer& transfer);
  bool claimMediaFolder();
  bool checkPresentFile();
  void fetch(Transfer& transfer);
  void describe(Transfer& transfer);
  void startSession(const Transfer& transfer);
  void openSession();
  void closeSession();
  void finishCompleted();
  void releaseUnlessPlaying();

  // Rights-managed items.
  bool authorise(Transfer& transfer);
  bool hold(const std::shared_ptr<download::Authorisation>& talk);
  bool accept(const download::Authorisation& talk, Transfer& transfer);

  // The library's reports, under the callback mutex.
  void receive(const download::LibraryReport& report);
  void dealWith(const download::LibraryReport& report) KVPM_REQUIRES(callbackMutex_);
  void takeProgress(int percent);
  void takeBroken();

  /// Calls `report(manager)` when there is a manager.
  template <class Report>
  void tellManager(Report report) {
    if (Manager* const manager = manager_) report(*manager);
  }

  bool fail();
  bool tooLittleSpace(const std::wstring& where);
  void reportStatus(DownloadStatusEnumType status);
  void usePath(const std::wstring& path);
  void reportPath(const std::wstring& path);
  bool playAsWished();
  Playback playback();
  bool play();
  void endRun();
  void stopPresentSession();

  template <class I>
  std::unique_ptr<KPIM::Helper<I>> load(const char* interfaceId) const;

  const download::SharedPreferences preferences_;  // first, so that it outlives all else
  std::unique_ptr<Item> item_;  // the run's; the callbacks' while the gate is open
  kvpm::Mutex callbackMutex_;
  kvpm::CritSection runLock_;
  std::unique_ptr<KPIM::Helper<KPB::DownloadInterface>> library_;  // the run's
  std::uint64_t totalSize_ = 0;                                    // the run's, in bytes
  unsigned long long openUid_ = 0;                                 // the run's, while it fetches
  download::RunState state_;
  std::atomic<Manager*> manager_{nullptr};  // not owned
  download::AttachedView view_;
  std::int32_t ticketId_ = 0;  // the run's
  KPIM::Context* const context_;
  Playback playback_;  // constant once a run has begun
  HttpDownloadThread& owner_;

  std::atomic<Item*> presentItem_{nullptr};
  std::atomic<KPB::DownloadInterface*> presentLibrary_{nullptr};  // never changes once it is set
  std::atomic<bool> closed_{false};
  std::atomic<std::thread::id> reporting_{};  // the thread that is inside a report
  download::SessionGate gate_ KVPM_GUARDED_BY(callbackMutex_);
  download::SideThread talks_;  // with the online services
  download::SideThread plays_;  // the manager's `play`
};

template <class I>
std::unique_ptr<KPIM::Helper<I>> HttpDownloadThread::HttpDownloadThreadImpl::load(
    const char* interfaceId) const {
  auto helper = std::make_unique<KPIM::Helper<I>>(interfaceId);
  const KPIM::Context::PluginInterfaceFilter filter(interfaceId);
  const KPIM::Context::SimplePluginInfoSelector selector;
  if (helper->loadPlugin(context_, filter, selector, true) != KPIM::kSuccess) return nullptr;
  return helper;
}
