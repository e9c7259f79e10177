#pragma once

#include <memory>
#include <string>
#include <vector>

#include "KPIM/Plugin.h"
#include "VeskPlayerX/DownloadManagerInterface.h"
#include "VeskPlayerX/DownloadStatus.h"
#include "VeskPlayerX/ShutdownInterface.h"
#include "plugin/QueueReader.h"

/// The plug-in: an ordered queue of downloads, of which one at a time is fetched in the background
/// and handed to the player.
///
/// Built by `getPlugin`, destroyed when the last reference is released. The host calls all
/// operations on one thread; the worker's reports come on others. A view may call operations on the
/// thread of its notice: on a thread that a stop of the host is waiting for, one that would have to
/// wait gives way, and `play` does not wait for a transfer to begin. `docs/threads.md` tells who
/// waits for whom. Nothing is thrown but what a view throws. After `Shutdown`, with an id that is
/// not queued, and where it gives way, an operation answers false, null or nothing.
///
/// Item pointers returned belong to the manager. They stay valid until the item is removed from the
/// queue (by `remove`, `clearCompletedDownloads`, or a new ticket for the same content) or, for an
/// item that `addTicket` returned though its ticket was queued already, until the next `addTicket`.
/// Other threads change the items behind them: only copies from `getCopyofQueue` stay as they are.
///
/// The order of the virtual operations is part of the interface.
class DownloadManager : public KPIM::Plugin,
                        public VeskPlayerX::DownloadManagerInterface,
                        public VeskPlayerX::ShutdownInterface,
                        public plugin::QueueReader {
  using Item = VeskPlayerX::DownloadItemInterface;
  using View = VeskPlayerX::DownloadManagerViewInterface;

 public:
  /// Reads the queue, that of an earlier release at the first start, begins to work on it, and
  /// takes a reference to this object, which `Shutdown` releases. `context` is not owned and
  /// outlives the plug-in; with a null one there is no download library, so every film fails.
  explicit DownloadManager(KPIM::Context* context);

  /// Shuts down if that has not been done, and deletes the shared preferences object.
  ~DownloadManager() override;

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override;

  void setViewInterface(View* view) override;
  void Shutdown() override;
  std::vector<Item*>* getCopyofQueue() override;
  void deleteCopyOfQueue(std::vector<Item*>* copy) override;
  unsigned int getNumberOfVideosInQueue() override;
  void zpsFileOpenedForPlayback(const std::wstring& path,
                                const VeskDrmPlaybackAuthorizationResponse* response,
                                const VeskDrmTransactionRecord* record) override;
  Item* add(const std::wstring& url, const std::wstring& title,
            const std::wstring& providerName) override;
  std::vector<Item*> addTicket(const std::wstring& ticketPath, bool) override;
  bool updateStatus(unsigned int id, DownloadStatusEnumType status) override;
  bool updatePath(unsigned int id, const std::wstring& path) override;
  bool updateSize(unsigned int id, unsigned long long size) override;
  bool updateDownloadProgress(unsigned int id, int percent) override;
  bool updateSlotAssignment(unsigned int id, int slot) override;
  bool setTicketAlreadyTorn(unsigned int id) override;
  bool setDownloadUrl(unsigned int id, std::wstring url) override;
  bool setDownloadInfo(unsigned int id, KPB::DownloadInfo info) override;
  bool setPlayable(unsigned int id, bool playable) override;
  bool setTicketId(unsigned int id, long ticketId) override;
  bool isPaused() override;
  void pause() override;
  void resume() override;
  void cancel() override;
  void clearCompletedDownloads() override;
  bool remove(unsigned int id) override;
  void retry(unsigned int id) override;
  bool play(unsigned int id) override;
  bool moveUp(unsigned int id) override;
  bool moveDown(unsigned int id) override;
  void moveToTop(unsigned int id) override;
  void moveToBottom(unsigned int id) override;
  void resumeDownloadingFile(const std::wstring& path) override;
  bool resumePlaybackForUrl(const std::wstring& url) override;
  Item* get(unsigned int id) override;
  Item* get(const std::wstring& url) override;

  /// The item at a position of the queue; null past the end.
  Item* at(unsigned int index);

  /// The first item with exactly this ticket text.
  Item* getByTicket(const std::string& ticket);

  /// The first item with this local path, whatever the case of its letters and the kind of its
  /// separators.
  Item* getByPath(const std::wstring& path);

 private:
  class DownloadManagerImpl;
  using Impl = DownloadManagerImpl;

  void doShutdown();

  /// Runs an operation of one part; returns false, null or nothing after `Shutdown`.
  template <class Part, class Operation, class... Arguments>
  auto forward(Part Impl::*part, Operation operation, const Arguments&... arguments);

  /// Shared with the operations that are running: a host that shuts down inside one, from its event
  /// loop or its view, finds the manager shut down, and the operation still has its state.
  std::shared_ptr<Impl> impl_;
};
