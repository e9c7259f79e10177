#include "playerx/window/queue/SessionWorker.h"

#include <QThread>
#include <algorithm>
#include <iostream>
#include <utility>

#include "playerx/app/door/QueueOpening.h"
#include "playerx/app/inputs/InputText.h"
#include "playerx/app/reasons/ReasonFile.h"
#include "playerx/window/model/Sentences.h"
#include "playerx/window/queue/InputReports.h"
#include "playerx/window/queue/OtherQueue.h"
#include "playerx/window/queue/OwnQueue.h"
#include "playerx/window/queue/QueueNotices.h"
#include "playerx/window/queue/QueuePlaces.h"

namespace playerx::window {

using model::ItemState;
using session::QueueEvent;
using session::Reply;
using session::Request;
using Action = Request::Action;

namespace {

/// A process that has the data folder without serving its queue is waited for this long, and then
/// looked for again after this pause.
constexpr std::chrono::seconds kLongestOpening(3);
constexpr int kRetryMs = 3000;

/// How long the online services are waited for, for what is left to be added at the end.
constexpr int kLongestLastMs = 2000;

bool isEnding() { return QThread::currentThread()->isInterruptionRequested(); }

/// Sleeps; false when the window is closed meanwhile.
bool rest(std::chrono::milliseconds time) {
  QThread::msleep(static_cast<unsigned long>(time.count()));
  return !isEnding();
}

bool isAnyRunning(const std::vector<ItemState>& queue) {
  return std::any_of(queue.begin(), queue.end(), [](const ItemState& item) {
    return item.status == DownloadStatusStarting || item.status == DownloadStatusDownloading;
  });
}

bool namesTicket(const Request& request) {
  return std::any_of(request.inputs.begin(), request.inputs.end(), inputs::isTicketPath);
}

QStringList inputsOf(const std::vector<std::string>& inputs) {
  QStringList list;
  for (const std::string& input : inputs) list.append(QString::fromStdString(input));
  return list;
}

/// Takes the wishes out that can be fulfilled now, and returns their films.
QList<Film> takePlayable(QSet<FilmId>& wishes, const QList<Film>& films) {
  QList<Film> playable;
  for (const Film& film : films) {
    if (canBePlayed(film) && wishes.remove(film.id)) playable.append(film);
  }
  return playable;
}

}  // namespace

SessionWorker::SessionWorker(const session::SessionOptions& options, SlotDesk& slotDesk)
    : slotDesk_(slotDesk),
      adder_([this](const Request& request) { return askReached(request); }),
      player_([this](const QString& location) { Q_EMIT playRequested(0, location); }) {
  retry_.setSingleShot(true);
  connect(&adder_, &InputAdder::advanced, &clock_, &LookClock::lookIfRested);
  connect(&adder_, &InputAdder::advanced, this, &SessionWorker::adding);
  connect(&adder_, &InputAdder::allAdded, this, &SessionWorker::look);
  connect(&adder_, &InputAdder::failed, this,
          [this](const std::string& sentence) { take({.sentence = sentence}); });
  connect(&adder_, &InputAdder::reported, this, &SessionWorker::inputsTaken);
  connect(&clock_, &LookClock::due, this, &SessionWorker::look);
  connect(&clock_, &LookClock::ticked, this, [this] {
    if (own_ == nullptr || isAnyRunning(end_->queue())) look();
  });
  connect(&roomClock_, &RoomClock::known, this, &SessionWorker::roomKnown);
  connect(&retry_, &QTimer::timeout, this, &SessionWorker::tryToOpen);
  session::SessionListener listener;
  listener.wake = [this] { clock_.lookSoon(); };
  listener.askForSlot = [this](const std::string& title) { return slotDesk_.choose(title); };
  listener.isToEnd = [this, own = QThread::currentThread()] {
    const bool isTimeLeft = servicesDeadline_ && !servicesDeadline_->hasExpired();
    return own->isInterruptionRequested() && !isTimeLeft;
  };
  session_ = std::make_unique<session::PlayerSession>(options, std::move(listener));
  player_.offerTo(session_->plugins());
}

SessionWorker::~SessionWorker() {
  slotDesk_.close();
  const bool wasHere = session_->isStarted();
  if (wasHere) session_->pause();
  adder_.addRest();
  own_ = nullptr;
  end_.reset();
  const std::string problem = wasHere ? session_->saveAgain() : "";
  if (!problem.empty()) std::cerr << "playerx: " << problem << std::endl;
  const qsizetype left = adder_.left();
  if (left > 0) std::cerr << "playerx: " << left << " of the inputs were not added." << std::endl;
}

void SessionWorker::open(bool staysPaused) {
  staysPaused_ = staysPaused;
  Q_EMIT preferencesRead(storedPreferences());
  roomClock_.start();
  tryToOpen();
}

void SessionWorker::tryToOpen() {
  using Where = door::OpenedQueue::Where;
  door::OpenedQueue opened =
      door::openQueue(*session_, session::PlayerSession::Access::kChange, kLongestOpening, rest);
  if (opened.where == Where::kNowhere) {
    if (isEnding()) return;
    Q_EMIT lost(queueSentence(opened.problem));
    if (session_->isTaken()) retry_.start(kRetryMs);
    return;
  }
  beginBook();
  if (opened.where == Where::kHere) {
    openHere();
  } else {
    end_ = std::make_unique<OtherQueue>(std::move(opened.client),
                                        [this](const QueueEvent& event) { take(event); });
  }
  look();
  clock_.start();
  adder_.addWaiting();
}

void SessionWorker::openHere() {
  OwnQueue::Links links;
  links.wake = [this] { clock_.lookSoon(); };
  links.wakeServer = [this] { answerSoon(); };
  links.listener = [this](const QueueEvent& event) { take(event); };
  links.show = [this](const std::vector<std::string>& inputs) { Q_EMIT shown(inputsOf(inputs)); };
  auto own = std::make_unique<OwnQueue>(*session_, std::move(links), staysPaused_);
  own_ = own.get();
  end_ = std::move(own);
  ask({.action = Action::kLimit, .rateLimit = storedPreferences().speedLimit});
}

/// Another process numbers the same films from 1 again; what is still on its way to the old queue
/// must not hit others.
void SessionWorker::beginBook() {
  book_ = std::make_unique<FilmBook>([reasons = reasons::ReasonFile(session_->places().data)](
                                         const ItemState& item) { return reasons.find(item); },
                                     book_ ? book_->lastId() : 0);
  playWishes_.clear();
}

void SessionWorker::readTicket(const QString& path) {
  Q_EMIT ticketRead(reportOnTicket(path, session_->plugins()));
}

/// Says what could not be done, once.
void SessionWorker::carryOut(const std::function<Requests(const FilmRequests&)>& requests) {
  if (!end_) return;
  const auto failed =
      std::count_if(end_->queue().begin(), end_->queue().end(),
                    [](const ItemState& item) { return item.status == DownloadStatusFailed; });
  std::string problem;
  for (const Request& request : requests(FilmRequests(book_->firstId(), failed))) {
    if (isEnding()) break;
    const Reply reply = ask(request);
    const bool hasFailed = reply.outcome == Reply::Outcome::kFailed && !reply.notes.empty();
    if (hasFailed) problem = reply.notes.front();
    clock_.lookIfRested();
  }
  if (!problem.empty()) take({.sentence = problem});
  look();
}

void SessionWorker::play(FilmId film) {
  if (!end_ || film <= book_->firstId()) return;
  const unsigned int id = film - book_->firstId();
  const auto item = std::find_if(end_->queue().begin(), end_->queue().end(),
                                 [id](const ItemState& each) { return each.id == id; });
  if (item == end_->queue().end()) return;
  playWishes_.insert(film);
  if (item->status == DownloadStatusStopped) ask({.action = Action::kResume, .id = id});
  if (end_ && end_->isPaused()) ask({.action = Action::kResume});
  ask({.action = Action::kMove, .id = id, .direction = Request::Direction::kTop});
  look();
}

void SessionWorker::setPreferences(const QueuePreferences& preferences) {
  storePreferences(preferences);
  Q_EMIT preferencesRead(storedPreferences());
  roomClock_.tell();
  ask({.action = Action::kLimit, .rateLimit = preferences.speedLimit});
}

Reply SessionWorker::ask(const Request& request) {
  if (!end_) return {Reply::Outcome::kFailed};
  const Reply reply = end_->ask(request);
  clock_.lookSoon();
  return reply;
}

/// Nullopt when the queue turned out not to be reachable any more.
std::optional<Reply> SessionWorker::askReached(const Request& request) {
  const bool isFirstTicket = !servicesDeadline_ && namesTicket(request);
  if (isEnding() && isFirstTicket) servicesDeadline_.emplace(kLongestLastMs);
  const Reply reply = ask(request);
  const bool isReached = end_ && end_->problem().empty();
  return isReached ? std::optional(reply) : std::nullopt;
}

void SessionWorker::take(const QueueEvent& event) {
  using Kind = QueueEvent::Kind;
  book_->note(event);
  if (event.kind == Kind::kAdded) adder_.noteFilm(book_->filmOf(event));
  if (event.kind == Kind::kFinished) roomClock_.tell();
  if (const auto notice = noticeOf(event, book_->filmOf(event))) Q_EMIT noticed(*notice);
}

/// Called on any thread.
void SessionWorker::answerSoon() {
  if (isAnswerDue_.exchange(true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        isAnswerDue_ = false;
        if (own_ != nullptr) own_->answerRequests();
      },
      Qt::QueuedConnection);
}

void SessionWorker::look() {
  if (!end_) return;
  clock_.rest();
  end_->update();
  if (!end_->problem().empty()) {
    clock_.stop();
    own_ = nullptr;
    end_.reset();
    return retry_.start(0);
  }
  const std::optional<QueueUpdate> update = book_->update(end_->queue(), end_->isPaused());
  if (!update) return;
  Q_EMIT changed(*update);
  // Waiting for a film to be far enough must not keep this thread, as the manager's own `play`
  // would.
  for (const Film& film : takePlayable(playWishes_, update->films)) {
    Q_EMIT playRequested(film.id, film.address);
  }
}

}  // namespace playerx::window
