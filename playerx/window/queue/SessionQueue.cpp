#include "playerx/window/queue/SessionQueue.h"

#include <utility>

#include "playerx/window/queue/SessionWorker.h"

namespace playerx::window {

using Action = session::Request::Action;

SessionQueue::SessionQueue(const session::SessionOptions& options, QObject* parent)
    : WindowQueue(parent),
      options_(options),
      slotDesk_([this](const SlotQuestion& question) { Q_EMIT slotAsked(question); }) {
  thread_.setObjectName(QStringLiteral("session"));
  gate_.moveToThread(&thread_);
  thread_.start();
}

SessionQueue::~SessionQueue() {
  slotDesk_.close();
  thread_.requestInterruption();
  QMetaObject::invokeMethod(
      &gate_,
      [this] {
        worker_.reset();
        thread_.quit();
      },
      Qt::QueuedConnection);
  thread_.wait();
}

void SessionQueue::open(bool staysPaused) {
  QMetaObject::invokeMethod(
      &gate_, [this, staysPaused] { begin(staysPaused); }, Qt::QueuedConnection);
}

/// Does this with the worker, on its thread, if it is running.
template <class Deed>
void SessionQueue::post(Deed deed) {
  QMetaObject::invokeMethod(
      &gate_,
      [this, deed] {
        if (worker_) deed(*worker_);
      },
      Qt::QueuedConnection);
}

template <class MakeRequests>
void SessionQueue::ask(MakeRequests requests) {
  post([requests](SessionWorker& worker) { worker.carryOut(requests); });
}

void SessionQueue::begin(bool staysPaused) {
  worker_ = std::make_unique<SessionWorker>(options_, slotDesk_);
  const SessionWorker* const worker = worker_.get();
  connect(worker, &SessionWorker::changed, this, &WindowQueue::changed);
  connect(worker, &SessionWorker::adding, this, &WindowQueue::adding);
  connect(worker, &SessionWorker::inputsTaken, this, &WindowQueue::inputsTaken);
  connect(worker, &SessionWorker::ticketRead, this, &WindowQueue::ticketRead);
  connect(worker, &SessionWorker::noticed, this, &WindowQueue::noticed);
  connect(worker, &SessionWorker::shown, this, &WindowQueue::shown);
  connect(worker, &SessionWorker::playRequested, this, &WindowQueue::playRequested);
  connect(worker, &SessionWorker::preferencesRead, this, &WindowQueue::preferencesRead);
  connect(worker, &SessionWorker::roomKnown, this, &WindowQueue::roomKnown);
  connect(worker, &SessionWorker::lost, this, &WindowQueue::lost);
  worker_->open(staysPaused);
}

void SessionQueue::add(const QStringList& inputs) {
  post([inputs](SessionWorker& worker) { worker.add(inputs); });
}

void SessionQueue::readTicket(const QString& path) {
  post([path](SessionWorker& worker) { worker.readTicket(path); });
}

void SessionQueue::pauseAll() {
  ask([](const FilmRequests&) { return FilmRequests::Requests{{.action = Action::kPause}}; });
}

void SessionQueue::resumeAll() {
  ask([](const FilmRequests&) { return FilmRequests::Requests{{.action = Action::kResume}}; });
}

void SessionQueue::stop(const Ids& ids) {
  ask([ids](const FilmRequests& films) { return films.stop(ids); });
}

void SessionQueue::goOn(const Ids& ids) {
  ask([ids](const FilmRequests& films) { return films.goOn(ids); });
}

void SessionQueue::retry(const Ids& ids) {
  ask([ids](const FilmRequests& films) { return films.retry(ids); });
}

void SessionQueue::remove(const Ids& ids, bool withFiles) {
  ask([ids, withFiles](const FilmRequests& films) { return films.remove(ids, withFiles); });
}

void SessionQueue::move(const Ids& ids, Move where) {
  ask([ids, where](const FilmRequests& films) { return films.move(ids, where); });
}

void SessionQueue::moveBefore(const Ids& ids, FilmId before) {
  ask([ids, before](const FilmRequests& films) { return films.moveBefore(ids, before); });
}

void SessionQueue::play(FilmId id) {
  post([id](SessionWorker& worker) { worker.play(id); });
}

void SessionQueue::chooseSlot(int question, int slot) { slotDesk_.answer(question, slot); }

void SessionQueue::setPreferences(const QueuePreferences& preferences) {
  post([preferences](SessionWorker& worker) { worker.setPreferences(preferences); });
}

}  // namespace playerx::window
