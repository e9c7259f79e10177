#pragma once

#include <QObject>
#include <QSet>
#include <QTimer>
#include <atomic>
#include <memory>

#include "playerx/app/reasons/FailureExplainer.h"
#include "playerx/app/session/PlayerSession.h"
#include "playerx/window/queue/FilmBook.h"
#include "playerx/window/queue/QueueClient.h"
#include "playerx/window/queue/QueueMessages.h"
#include "playerx/window/queue/SlotDesk.h"
#include "playerx/window/queue/WindowPlayer.h"

namespace playerx::window {

/// The player's session behind the window, on a thread of its own, where waiting hurts nobody.
///
/// Lives on that thread, which is the host's thread for the download manager. Made, opened, used
/// and destroyed there.
class SessionWorker : public QObject {
  Q_OBJECT

 public:
  using Ids = QList<FilmId>;

  /// `slotDesk` answers questions that the download manager waits for; not owned, outlives the
  /// worker.
  SessionWorker(const session::SessionOptions& options, SlotDesk& slotDesk);
  ~SessionWorker() override;

  /// Begins to download. False, after `lost` was emitted, when that cannot be.
  bool open();

  void add(const QStringList& inputs);
  void readTicket(const QString& path);
  void pauseAll();
  void resumeAll();
  void stop(const Ids& ids);
  void goOn(const Ids& ids);
  void retry(const Ids& ids);
  void remove(const Ids& ids, bool withFiles);
  void move(const Ids& ids, Move where);
  void moveBefore(const Ids& ids, FilmId before);
  void play(FilmId id);
  void setPreferences(const QueuePreferences& preferences);

 Q_SIGNALS:
  void changed(const playerx::window::QueueUpdate& update);
  void inputsTaken(const playerx::window::InputReport& report);
  void ticketRead(const playerx::window::TicketReport& report);
  void noticed(const playerx::window::Notice& notice);
  void playRequested(playerx::window::FilmId id, const QString& location);
  void preferencesRead(const playerx::window::QueuePreferences& preferences);
  void roomKnown(const QString& folder, quint64 freeBytes);
  void lost(const QString& sentence);

 private:
  void lookSoon();
  void look();
  void follow(const std::vector<model::ItemState>& before);
  void passMessagesOn();
  void explain(const model::ItemState& item);
  void playWhatIsReady(const QueueUpdate& update);
  void keepStopped();
  void tellRoom();
  VeskPlayerX::DownloadManagerInterface& manager() { return session_->manager(); }

  SlotDesk& slotDesk_;
  std::atomic<bool> isLookDue_{false};
  std::string lastWords_;    // what the online services said since the last failure
  QSet<FilmId> stopped_;     // what the user has stopped
  QSet<FilmId> playWishes_;  // films to be played as soon as enough of them is there
  std::vector<model::ItemState> queue_;
  QTimer clock_;
  QTimer rest_;
  QTimer roomClock_;
  WindowPlayer player_;
  std::unique_ptr<session::PlayerSession> session_;
  std::unique_ptr<FilmBook> book_;
  std::unique_ptr<reasons::FailureExplainer> explainer_;
};

}  // namespace playerx::window
