#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VeskPlayerX/DownloadManagerViewInterface.h"
#include "VeskPlayerX/PlayerInterface.h"
#include "download/AttachedView.h"
#include "download/HttpDownloadThread.h"
#include "item/DownloadItem.h"
#include "kvpm/CritSection.h"
#include "kvpm/IRunnable.h"
#include "kvpm/Thread.h"
#include "plugin/Confirmations.h"
#include "plugin/DownloadManager.h"
#include "plugin/DownloadQueue.h"
#include "plugin/EventCount.h"
#include "plugin/OperationLock.h"
#include "plugin/ProgressReports.h"
#include "plugin/ProgressRules.h"
#include "plugin/ServicesLookup.h"

/// State and locks of the download manager, and the body of its scheduler thread.
///
/// Operations that have the name of one of the interface do what the interface says. They live in
/// one source file per theme: DownloadManagerImpl.cpp (life), ...Announcements, ...Queue, ...Moves,
/// ...Updates, ...Scheduler, ...Adding, ...Playback.
class DownloadManager::DownloadManagerImpl : public kvpm::IRunnable {
 public:
  DownloadManagerImpl(DownloadManager* owner, KPIM::Context* context);
  ~DownloadManagerImpl() override;

  /// Reads the queue and starts the scheduler. Called once.
  void open();

  /// Stops everything: once it returns, no thread of the module runs. Called once.
  void close();

  // Announcements. Each writes the queue file, then tells the view; without a view neither.

  void updateListChanged();
  void updateItemChanged(unsigned int id);

  // The queue and its items.

  void setViewInterface(View* view);
  std::vector<Item*>* getCopyofQueue();
  unsigned int getNumberOfVideosInQueue();
  Item* get(unsigned int id);
  Item* get(const std::wstring& url);
  Item* getByTicket(const std::string& ticket);
  Item* getByPath(const std::wstring& path);
  Item* at(unsigned int index);
  bool remove(unsigned int id);
  void clearCompletedDownloads();

  bool moveUp(unsigned int id);
  bool moveDown(unsigned int id);
  void moveToTop(unsigned int id);
  void moveToBottom(unsigned int id);

  bool updateStatus(unsigned int id, DownloadStatusEnumType status);
  bool updatePath(unsigned int id, const std::wstring& path);
  bool updateSize(unsigned int id, unsigned long long size);
  bool updateDownloadProgress(unsigned int id, int percent);
  bool updateSlotAssignment(unsigned int id, int slot);
  bool setTicketAlreadyTorn(unsigned int id);
  bool setDownloadUrl(unsigned int id, const std::wstring& url);
  bool setDownloadInfo(unsigned int id, const KPB::DownloadInfo& info);
  bool setPlayable(unsigned int id, bool playable);
  bool setTicketId(unsigned int id, long ticketId);

  // The scheduler.

  void runThread(kvpm::Thread* thread) override;
  bool isPaused() const { return paused_ || changingHead_; }
  void pauseByHost();
  void resumeByHost();
  void cancelByHost();
  void retry(unsigned int id);

  // Adding and playing.

  Item* add(const std::wstring& url, const std::wstring& title, const std::wstring& providerName);
  std::vector<Item*> addTicket(const std::wstring& ticketPath);
  void zpsFileOpenedForPlayback(const std::wstring& path,
                                const VeskDrmPlaybackAuthorizationResponse& response,
                                const VeskDrmTransactionRecord* record);
  void resumeDownloadingFile(const std::wstring& path);
  bool resumePlaybackForUrl(const std::wstring& url);
  bool play(unsigned int id);

 private:
  /// The transfer that the scheduler has picked and not yet recorded.
  struct Run {
    unsigned int id = 0;  ///< of its item; 0 for no transfer
    /// The item failed in it, and the host has queued the item anew since.
    bool superseded = false;
  };

  /// What the two items at the top are like at one moment.
  struct Top {
    unsigned int head = 0;
    unsigned int second = 0;
    DownloadStatusEnumType headStatus = DownloadStatusQueued;
    DownloadStatusEnumType secondStatus = DownloadStatusQueued;
  };

  /// What a look-up tells of an item, which may be gone by the time it is used.
  struct Known {
    unsigned int id = 0;
    DownloadStatusEnumType status = DownloadStatusQueued;
  };

  /// What `play` goes by.
  struct PlaybackState {
    DownloadStatusEnumType status = DownloadStatusQueued;
    int percent = 0;
  };

  /// A report of progress that is not recorded yet.
  struct PendingReport {
    plugin::ProgressReports::Number number = 0;
    plugin::ProgressOfTicket progress;
  };

  using Change = std::function<void(Item&)>;

  /// Looks the item up and changes it in one step, so that a removed one is never written to.
  bool changeItem(unsigned int id, const Change& change);
  bool changeAndAnnounce(unsigned int id, const Change& change);

  /// Sets a status on the host's behalf, also that of a failed item whose transfer is still to be
  /// recorded.
  void setStatusForHost(Item& item, DownloadStatusEnumType status) KVPM_REQUIRES(queueLock_);
  bool requeueForHost(unsigned int id);
  std::optional<DownloadStatusEnumType> statusOf(unsigned int id);
  static std::optional<Known> known(const Item* item);
  static wchar_t pathSeparator();

  void writeQueue() KVPM_REQUIRES(queueLock_);
  void moveVideoToBottom(unsigned int id);
  void moveVideoToTop(unsigned int id);
  std::optional<Top> top();
  bool changeHead(const Top& top);

  void startDownloadManagerThread();
  void stopDownloadManagerThread();
  Item* getNextItemForDownload() KVPM_REQUIRES(queueLock_);
  bool runNext(kvpm::Thread* thread);
  std::unique_ptr<DownloadItem> pick();
  std::unique_ptr<DownloadItem> pickUnderLocks();
  std::optional<unsigned int> idOfNext();
  void recordOutcome(DownloadItem& copy, DownloadStatusEnumType result);
  Run takeRun();
  bool enterDownloadLock(kvpm::Thread* thread)
      KVPM_TRY_ACQUIRE(true, downloadLock_) KVPM_NO_ANALYSIS;
  void pause();
  void resume();
  void cancelCurrentDownload();
  void stopWorker();
  std::optional<PendingReport> beginProgress(unsigned int id, int percent);
  void endProgress(unsigned int id, const PendingReport& pending);
  void confirmDownload(long ticketId, unsigned long long bytes);
  void tellServices(long ticketId, unsigned long long bytes);
  void tellPlayerOfFinished(const std::wstring& path, unsigned long long uid);

  Item* addAndResume(std::unique_ptr<Item> item);
  Item* addNewItemToEnd(std::unique_ptr<Item> item);
  void putFirst(std::unique_ptr<Item> item);
  std::vector<Item*> addClearTicket(const std::wstring& path);
  std::vector<Item*> addEncryptedTicket(const std::vector<VeskDrmTicketData*>& records,
                                        const std::wstring& path);
  void dropEnded(long contentEncryptionUsageId);
  void continueFirst(unsigned int id);

  std::optional<DownloadStatusEnumType> startPlayback(unsigned int id);
  std::optional<PlaybackState> playbackState(unsigned int id);
  DownloadStatusEnumType restartWith(unsigned int id, int percent);
  bool waitUntilFlowing(unsigned int id);
  std::optional<std::wstring> locationOf(unsigned int id, bool isComplete);
  std::optional<std::wstring> locationOfRunning(unsigned int id);

  /// `play` as the worker means it: the item flows already, only the player has to be told. Takes
  /// no lock but the queue's.
  bool playRunning(unsigned int id);

  // Constant once `open` has returned.
  DownloadManager* const owner_;
  KPIM::Context* const context_;
  std::wstring queueFile_;

  // Synchronised by themselves.
  /// Something has changed that the scheduler, or `play`, may wait for.
  plugin::EventCount events_;
  download::AttachedView view_;
  plugin::ServicesLookup services_;
  plugin::Confirmations confirmations_;
  std::atomic<bool> paused_{false};        ///< by the user
  std::atomic<bool> changingHead_{false};  ///< for the length of a move of the first item
  std::atomic<bool> closing_{false};
  std::atomic<int> stops_{0};  ///< of the worker, under way
  HttpDownloadThread worker_;

  // The locks, in the order in which they are taken.
  plugin::OperationLock controlLock_{events_};
  plugin::OperationLock downloadLock_{events_};
  kvpm::CritSection queueLock_;

  plugin::DownloadQueue queue_ KVPM_GUARDED_BY(queueLock_);
  /// Items that the queue refused: the host was given pointers to them.
  std::vector<std::unique_ptr<Item>> refused_ KVPM_GUARDED_BY(queueLock_);
  Run run_ KVPM_GUARDED_BY(queueLock_);
  plugin::ProgressReports progressReports_ KVPM_GUARDED_BY(queueLock_);

  // Last, so that it ends before anything that it uses.
  kvpm::Thread thread_;
};
