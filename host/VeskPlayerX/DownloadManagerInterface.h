#pragma once

#include <string>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

struct VeskDrmPlaybackAuthorizationResponse;
struct VeskDrmTransactionRecord;

namespace VeskPlayerX {

class DownloadManagerViewInterface;

/// The download manager as the host sees it, offered under `DIN_DownloadManager`.
///
/// The host calls all operations on one thread of its own. None waits for the network but
/// `addTicket`, which asks the online services, and `play`. Items are named by their id; an id that
/// is not queued makes an operation answer false or null, or do nothing. Item pointers returned are
/// those of the live queue, owned by it and gone when the item is removed. After
/// `ShutdownInterface::Shutdown` no operation may be called. The order of the virtual operations is
/// part of the interface.
///
/// A view may call operations from inside its notices, on whatever thread they come, but
/// `setViewInterface` and `Shutdown` on the host's thread alone. On another thread, an operation
/// that would have to wait while the host waits for that very thread gives way: it does nothing and
/// answers false, null or nothing. `play` answers false there when the film does not flow yet.
class DownloadManagerInterface {
 public:
  DownloadManagerInterface() = default;
  DownloadManagerInterface(const DownloadManagerInterface&) = delete;
  DownloadManagerInterface& operator=(const DownloadManagerInterface&) = delete;
  virtual ~DownloadManagerInterface() = default;

  /// Attaches the view, not owned; null detaches it. Without a view nothing is announced and the
  /// queue file is not written.
  virtual void setViewInterface(DownloadManagerViewInterface* view) = 0;

  /// A copy of every item in queue order, for display. Give it back with `deleteCopyOfQueue`.
  virtual std::vector<DownloadItemInterface*>* getCopyofQueue() = 0;

  /// Deletes such a copy and its items; null is allowed.
  virtual void deleteCopyOfQueue(std::vector<DownloadItemInterface*>* copy) = 0;

  /// Items of every status.
  virtual unsigned int getNumberOfVideosInQueue() = 0;

  /// The host has opened the protected file `path` for playback. When it is shorter than
  /// `response` says, its download is put first, or queued anew.
  virtual void zpsFileOpenedForPlayback(const std::wstring& path,
                                        const VeskDrmPlaybackAuthorizationResponse* response,
                                        const VeskDrmTransactionRecord* record) = 0;

  /// Queues a film by its address and restarts the queue. An empty title becomes the file name, an
  /// empty provider the host of the address. Returns the item, or null unless the extension is
  /// .vesk, .xvid, .avi or .mkv.
  virtual DownloadItemInterface* add(const std::wstring& url, const std::wstring& title,
                                     const std::wstring& providerName) = 0;

  /// Queues what the ticket file at `ticketPath` names; double quotes around the path are dropped.
  /// Returns the items, none when the ticket yields nothing or the online services cannot be
  /// loaded. A protected item whose ticket is queued already is among them, though not queued
  /// again; the manager keeps it until the next `addTicket`. The second argument is not used.
  virtual std::vector<DownloadItemInterface*> addTicket(const std::wstring& ticketPath, bool) = 0;

  /// Sets the status and announces the item. A completed or failed item moves to the bottom; a
  /// completed one is announced to the player.
  virtual bool updateStatus(unsigned int id, DownloadStatusEnumType status) = 0;

  /// Each sets one field and announces the item.
  virtual bool updatePath(unsigned int id, const std::wstring& path) = 0;
  virtual bool updateSize(unsigned int id, unsigned long long size) = 0;

  /// Records progress (0..100), estimates the time remaining, confirms the download of a ticket.
  virtual bool updateDownloadProgress(unsigned int id, int percent) = 0;

  /// Each sets one field; `setDownloadUrl`, `setDownloadInfo` and `setTicketId` do not announce it.
  virtual bool updateSlotAssignment(unsigned int id, int slot) = 0;
  virtual bool setTicketAlreadyTorn(unsigned int id) = 0;
  virtual bool setDownloadUrl(unsigned int id, std::wstring url) = 0;
  virtual bool setDownloadInfo(unsigned int id, KPB::DownloadInfo info) = 0;
  virtual bool setPlayable(unsigned int id, bool playable) = 0;
  virtual bool setTicketId(unsigned int id, long ticketId) = 0;

  /// Whether the user has paused the queue.
  virtual bool isPaused() = 0;

  /// Stops the running transfer and parks the queue; restarts it; stops the running transfer only.
  virtual void pause() = 0;
  virtual void resume() = 0;
  virtual void cancel() = 0;

  /// Drops all completed items.
  virtual void clearCompletedDownloads() = 0;

  /// Drops one item. A transfer that is running for it is not stopped by this.
  virtual bool remove(unsigned int id) = 0;

  /// Puts a failed item first and restarts the queue; other items are left alone.
  virtual void retry(unsigned int id) = 0;

  /// Plays the item, or arranges for it. Returns true when the player was given something. May take
  /// as long as a transfer needs to start; the host's event loop runs meanwhile.
  virtual bool play(unsigned int id) = 0;

  /// Each moves one place and returns whether the item moved; an item never moves down into the
  /// completed and failed ones at the bottom.
  virtual bool moveUp(unsigned int id) = 0;
  virtual bool moveDown(unsigned int id) = 0;

  /// Each moves as far as the single steps go.
  virtual void moveToTop(unsigned int id) = 0;
  virtual void moveToBottom(unsigned int id) = 0;

  /// Puts the unfinished item with this local path first.
  virtual void resumeDownloadingFile(const std::wstring& path) = 0;

  /// Plays the first item with exactly this address.
  virtual bool resumePlaybackForUrl(const std::wstring& url) = 0;

  /// The queue's own item; null if absent.
  virtual DownloadItemInterface* get(unsigned int id) = 0;
  virtual DownloadItemInterface* get(const std::wstring& url) = 0;
};

}  // namespace VeskPlayerX
