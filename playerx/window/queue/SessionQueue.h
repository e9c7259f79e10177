#pragma once

#include <QThread>
#include <memory>

#include "playerx/app/session/Places.h"
#include "playerx/window/queue/SlotDesk.h"
#include "playerx/window/queue/WindowQueue.h"

namespace playerx::window {

class SessionWorker;

/// The queue of this process, or of another that has the data folder: hands everything to a worker
/// on a thread of its own.
class SessionQueue : public WindowQueue {
  Q_OBJECT

 public:
  explicit SessionQueue(const session::SessionOptions& options, QObject* parent = nullptr);

  /// Parks what runs and ends the session. Waits for that.
  ~SessionQueue() override;

  /// Loads the queue and begins to download unless it is to stay paused; `changed` or `lost`
  /// follows.
  void open(bool staysPaused);

  void add(const QStringList& inputs) override;
  void readTicket(const QString& path) override;
  void pauseAll() override;
  void resumeAll() override;
  void stop(const Ids& ids) override;
  void goOn(const Ids& ids) override;
  void retry(const Ids& ids) override;
  void remove(const Ids& ids, bool withFiles) override;
  void move(const Ids& ids, Move where) override;
  void moveBefore(const Ids& ids, FilmId before) override;
  void play(FilmId id) override;
  void chooseSlot(int question, int slot) override;
  void setPreferences(const QueuePreferences& preferences) override;

 private:
  template <class Deed>
  void post(Deed deed);
  template <class MakeRequests>
  void ask(MakeRequests requests);
  void begin(bool staysPaused);

  const session::SessionOptions options_;
  SlotDesk slotDesk_;
  QThread thread_;
  QObject gate_;                           // lives on the thread; what is posted passes it
  std::unique_ptr<SessionWorker> worker_;  // made, used and destroyed on the thread
};

}  // namespace playerx::window
