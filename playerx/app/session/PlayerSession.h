#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "KPIM/Helper.h"
#include "VeskPlayerX/DownloadManagerInterface.h"
#include "VeskPlayerX/QueueReaderInterface.h"
#include "playerx/app/session/DataFolderLock.h"
#include "playerx/app/session/FilmOptionsFile.h"
#include "playerx/app/session/Messages.h"
#include "playerx/app/session/Places.h"
#include "playerx/app/session/QueueView.h"
#include "playerx/app/session/SavedQueue.h"
#include "playerx/app/session/SessionEnd.h"
#include "playerx/framework/PluginContext.h"
#include "playerx/transfers/FilmRecovery.h"
#include "playerx/transfers/TransferReports.h"
#include "playerx/transfers/TransferSettings.h"

namespace playerx::session {

/// How a session talks to its face. Called on any thread of the player; empty functions are not
/// allowed.
struct SessionListener {
  /// There may be changes, notices or messages to take. Must not wait: a window posts an event.
  std::function<void()> wake;

  /// Asks the user for a slot to give up for the film of this title; returns its number, below 0
  /// to decline. May wait for the user. Not called on the session's own thread.
  QueueView::SlotQuestion askForSlot;

  /// Whether the user wants the player to end, although the session's thread may be waiting for the
  /// online services: asked then, several times a second, to break that off.
  std::function<bool()> isToEnd = [] { return false; };
};

/// The player behind a face, from its start to its end: folders and preferences, plug-ins, the
/// download manager with its view, and the queue file.
///
/// Used on one thread, which the download manager takes for the host's: a window gives it a thread
/// of its own, because loading, ending and most operations of the manager may wait for the disk.
/// One session at a time in a process; needs a `QCoreApplication` with the names of organisation
/// and application. Operations that can fail return one sentence on what is wrong, empty otherwise.
///
///     PlayerSession session(options, listener);
///     session.plugins().add(...);                    // plug-ins of the face's own, if any
///     problem = session.open(PlayerSession::Access::kChange);
///     session.start();                               // films are downloaded from here on
///     session.manager().add(...);
///     ...
///     session.pause();
///     problem = session.saveAgain();
class PlayerSession {
 public:
  /// What the session may do to the queue.
  enum class Access {
    kLook,    ///< at a copy of the queue: nothing is locked or written, whatever others do
    kChange,  ///< alone on the data folder, and every change is saved and announced
    kFree,    ///< as kChange, even when the disk has no room to save: what is done makes some
  };

  /// Sets folders and preferences up and reads the descriptions of the plug-ins; loads nothing.
  PlayerSession(const SessionOptions& options, SessionListener listener);
  PlayerSession(const PlayerSession&) = delete;
  PlayerSession& operator=(const PlayerSession&) = delete;

  /// Ends what was opened: stops transfers and threads, unloads the plug-ins, gives the data folder
  /// back. What is running is not parked in the queue file; call `pause` first if it should be. A
  /// film that the online services are being asked for would count as refused.
  ~PlayerSession();

  /// Loads the download manager, with its scheduler held back, and attaches the view. After a
  /// problem nothing is open and no file has been changed. Once per session, but for the attempts
  /// that find the data folder taken.
  std::string open(Access access);

  /// Whether `open` has failed because another process has the data folder.
  bool isTaken() const { return isTaken_; }

  /// Lets the scheduler work. Loads the download library first, has it trust the authorities of the
  /// preferences and take back films whose completion was lost.
  void start();
  bool isStarted() const { return isStarted_; }

  /// Pauses the queue. Takes back the film whose last byte came just then: the manager, which no
  /// longer listens, would fetch it beside itself.
  void pause();

  /// Takes back the film of an address that is to be added: the queue that knew of it may be lost.
  /// After `start` only, which does so for the films of the queue.
  void takeFilmBack(const std::string& address);

  /// The queue calls the film of this address complete: it need not be found again.
  void confirmFilm(const std::string& address) const;

  /// The download manager; after a successful `open` only.
  VeskPlayerX::DownloadManagerInterface& manager() { return *manager_->get(); }

  /// The same manager, for those who follow its queue.
  VeskPlayerX::QueueReaderInterface& reader() { return *reader_; }

  PluginContext& plugins() { return plugins_; }
  const Places& places() const { return places_; }

  /// Adds to how the film of this address is fetched, now and in later runs.
  void addFilmOptions(const std::string& address, const FilmOptions& options);

  /// Forgets how the film of this address was to be fetched.
  void forgetFilmOptions(const std::string& address);

  /// Forgets how films are fetched that are complete or have left the queue.
  void pruneFilmOptions();

  /// Bytes per second that all transfers together receive, until the session ends; 0: no limit.
  /// After `start` only.
  void setRateLimit(std::uint64_t bytesPerSecond);

  /// Whether a queue that could not be read lies in the data folder.
  bool hasQueueSetAside() const { return saved_->hasFileSetAside(); }

  /// What the manager announces to. After `open` only.
  QueueView& view() { return view_; }

  /// What plug-ins and session told the user since the last call, oldest first. Any thread.
  std::vector<std::string> takeMessages() { return messages_.take(); }

  /// The last transfer of this address (UTF-8); nullopt when there was none, or before `start`. Any
  /// thread once `start` has returned.
  std::optional<TransferReport> findTransfer(const std::string& address) const;

  /// Saves the queue once more. Returns one sentence when the file still lacks changes, else "".
  std::string saveAgain() { return saved_->saveAgain(manager(), reader()); }

  /// The same when the last save has failed, at next to no cost when it has not.
  std::string saveProblem() { return saved_->saveProblem(manager(), reader()); }

 private:
  std::string openForChange(Access access);
  std::string openCopy();
  void awaitRecord();
  std::string loadManager();
  void takeFilmsBack(const std::function<bool(DownloadStatusEnumType)>& isToTakeBack);
  void close();

  const Places places_;
  SessionEnd end_;
  Messages messages_;
  QueueView view_;
  std::unique_ptr<DataFolderLock> lock_;
  std::unique_ptr<SavedQueue> saved_;
  PluginContext plugins_;
  const std::string searchedFolders_;  ///< for plug-ins, in words
  std::unique_ptr<KPIM::Helper<VeskPlayerX::DownloadManagerInterface>> manager_;
  VeskPlayerX::QueueReaderInterface* reader_ = nullptr;
  std::unique_ptr<KPIM::Helper<TransferReports>> transfers_;
  std::unique_ptr<KPIM::Helper<TransferSettings>> settings_;
  std::unique_ptr<KPIM::Helper<FilmRecovery>> recovery_;
  std::unique_ptr<FilmOptionsFile> filmOptions_;  ///< with access to change
  bool isTaken_ = false;
  bool isStarted_ = false;
};

}  // namespace playerx::session
