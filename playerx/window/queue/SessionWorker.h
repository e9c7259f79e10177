#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QSet>
#include <QTimer>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>

#include "playerx/app/session/PlayerSession.h"
#include "playerx/window/queue/FilmBook.h"
#include "playerx/window/queue/FilmRequests.h"
#include "playerx/window/queue/InputAdder.h"
#include "playerx/window/queue/LookClock.h"
#include "playerx/window/queue/QueueEnd.h"
#include "playerx/window/queue/QueueMessages.h"
#include "playerx/window/queue/RoomClock.h"
#include "playerx/window/queue/SlotDesk.h"
#include "playerx/window/queue/WindowPlayer.h"

namespace playerx::window {

class OwnQueue;

/// The queue behind the window: that of a session in this process, or, while another process has
/// the data folder, that of the other one. On a thread of its own, because it may block.
///
/// Lives on that thread, which is the host's thread for the download manager. Made, opened, used
/// and destroyed there.
class SessionWorker : public QObject {
  Q_OBJECT

 public:
  using Requests = FilmRequests::Requests;

  /// `slotDesk` answers questions that the download manager waits for; not owned, outlives the
  /// worker.
  SessionWorker(const session::SessionOptions& options, SlotDesk& slotDesk);
  ~SessionWorker() override;

  /// Opens the queue here, and begins to download unless it is to stay paused, or else finds the
  /// process that has it. Emits `lost` when neither can be, and tries again as long as another
  /// process is in the way.
  void open(bool staysPaused);

  /// Adds the inputs, a long list little by little; `inputsTaken` says when it is done. Those that
  /// are left when the worker is destroyed are added then; those that are refused, or that no queue
  /// can be told of, are counted on standard error. For what the online services are to read, they
  /// are waited for two seconds.
  void add(const QStringList& inputs) { adder_.add(inputs); }

  void readTicket(const QString& path);

  /// Has the queue do something with its films.
  void carryOut(const std::function<Requests(const FilmRequests&)>& requests);

  void play(FilmId film);
  void setPreferences(const QueuePreferences& preferences);

 Q_SIGNALS:
  void changed(const playerx::window::QueueUpdate& update);
  void adding(int left);
  void inputsTaken(const playerx::window::InputReport& report);
  void ticketRead(const playerx::window::TicketReport& report);
  void noticed(const playerx::window::Notice& notice);
  void shown(const QStringList& inputs);
  void playRequested(playerx::window::FilmId id, const QString& location);
  void preferencesRead(const playerx::window::QueuePreferences& preferences);
  void roomKnown(const QString& folder, quint64 freeBytes);
  void lost(const QString& sentence);

 private:
  void tryToOpen();
  void openHere();
  void beginBook();
  session::Reply ask(const session::Request& request);
  std::optional<session::Reply> askReached(const session::Request& request);
  void take(const session::QueueEvent& event);
  void answerSoon();
  void look();

  SlotDesk& slotDesk_;
  std::atomic<bool> isAnswerDue_{false};
  bool staysPaused_ = false;
  QSet<FilmId> playWishes_;  // films to be played as soon as enough of them is there
  InputAdder adder_;
  std::optional<QDeadlineTimer> servicesDeadline_;  // for the tickets left at the end
  LookClock clock_;
  RoomClock roomClock_;
  QTimer retry_;
  WindowPlayer player_;
  std::unique_ptr<session::PlayerSession> session_;
  std::unique_ptr<FilmBook> book_;
  std::unique_ptr<QueueEnd> end_;  // uses all of the above
  OwnQueue* own_ = nullptr;        // the end, when it is in this process
};

}  // namespace playerx::window
