#pragma once

#include <QObject>
#include <QStringList>

#include "playerx/window/model/QueueUpdate.h"
#include "playerx/window/queue/QueueMessages.h"

namespace playerx::window {

/// Where films are moved.
enum class Move { kUp, kDown, kToTop, kToBottom };

/// The download queue as the window acts on it, wherever it runs: in this process or in another.
///
/// Used on the UI thread. Every operation returns at once; what it did arrives with a signal, the
/// first `changed` with the whole queue. Ids that are not queued are passed over.
class WindowQueue : public QObject {
  Q_OBJECT

 public:
  using Ids = QList<FilmId>;

  using QObject::QObject;

  /// Queues addresses and ticket files in this order; answered by `inputsTaken`.
  virtual void add(const QStringList& inputs) = 0;

  /// Reads a ticket without queueing it; answered by `ticketRead`.
  virtual void readTicket(const QString& path) = 0;

  /// Parks the whole queue; lets it go on.
  virtual void pauseAll() = 0;
  virtual void resumeAll() = 0;

  /// Stops these films, so that the queue passes them over; queues them again.
  virtual void stop(const Ids& ids) = 0;
  virtual void goOn(const Ids& ids) = 0;

  /// Queues failed films again; other films are left alone.
  virtual void retry(const Ids& ids) = 0;

  /// Drops the films and what has arrived of those that are not complete; with `withFiles` the
  /// complete films are deleted from the disk too.
  virtual void remove(const Ids& ids, bool withFiles) = 0;

  /// Moves the films one step or as far as they go, keeping their order.
  virtual void move(const Ids& ids, Move where) = 0;

  /// Moves the films in front of the film `before`; to the end when that is 0.
  virtual void moveBefore(const Ids& ids, FilmId before) = 0;

  /// Puts the film first and has it played as soon as enough of it is there; answered by
  /// `playRequested`.
  virtual void play(FilmId id) = 0;

  /// Answers a `slotAsked`; below 0 declines.
  virtual void chooseSlot(int question, int slot) = 0;

  /// Stores the preferences and lets running transfers follow.
  virtual void setPreferences(const QueuePreferences& preferences) = 0;

 Q_SIGNALS:
  void changed(const playerx::window::QueueUpdate& update);

  /// Some of a long list of inputs have been added; `left` wait for their turn.
  void adding(int left);
  void inputsTaken(const playerx::window::InputReport& report);
  void ticketRead(const playerx::window::TicketReport& report);
  void noticed(const playerx::window::Notice& notice);
  void slotAsked(const playerx::window::SlotQuestion& question);

  /// The player was started once more, with these inputs, and is to come to the front.
  void shown(const QStringList& inputs);

  /// The queue wants a film played: a film's id, or else a path or an address.
  void playRequested(playerx::window::FilmId id, const QString& location);

  /// Answers the first connection and every `setPreferences`.
  void preferencesRead(const playerx::window::QueuePreferences& preferences);

  /// Free space in the media folder, now and then.
  void roomKnown(const QString& folder, quint64 freeBytes);

  /// The queue cannot be reached; one sentence says why. `changed` follows when it is back.
  void lost(const QString& sentence);
};

}  // namespace playerx::window
