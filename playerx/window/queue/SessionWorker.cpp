#include "playerx/window/queue/SessionWorker.h"

#include <QFile>
#include <algorithm>
#include <utility>

#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "kvpm/StringTools.h"
#include "playerx/app/inputs/Input.h"
#include "playerx/app/inputs/TicketContents.h"
#include "playerx/app/model/QueueChanges.h"
#include "playerx/settings/TrustedAuthorities.h"
#include "playerx/window/queue/QueuePlaces.h"

namespace playerx::window {

using model::ItemState;
using model::QueueChange;

namespace {

/// Between two looks at the queue: what changes more often is seen together.
constexpr int kRestMs = 250;

/// How often speed and time left are measured while something runs.
constexpr int kClockMs = 500;

/// How often the free space is looked at.
constexpr int kRoomMs = 10'000;

/// A look without the network: the ticket's own words are enough to know whether it is doubtful.
reasons::ProbeResult notAsked(const std::string& address, const std::stop_token&) {
  reasons::ProbeResult result;
  result.address = address;
  result.status = 200;
  result.length = 1;
  return result;
}

bool isActive(DownloadStatusEnumType status) {
  return status == DownloadStatusStarting || status == DownloadStatusDownloading;
}

Notice::Kind kindOf(model::Notice::Kind kind) {
  switch (kind) {
    case model::Notice::kNoSpace:
      return Notice::kNoSpace;
    case model::Notice::kUrlFailed:
      return Notice::kAddressFailed;
    case model::Notice::kBroken:
      return Notice::kTransferBroken;
    case model::Notice::kNotAuthorized:
    case model::Notice::kSlotDeclined:
      break;
  }
  return Notice::kNotAuthorized;
}

const ItemState* findItem(const std::vector<ItemState>& queue, FilmId id) {
  const auto item = std::find_if(queue.begin(), queue.end(),
                                 [id](const ItemState& each) { return each.id == id; });
  return item == queue.end() ? nullptr : &*item;
}

}  // namespace

SessionWorker::SessionWorker(const session::SessionOptions& options, SlotDesk& slotDesk)
    : slotDesk_(slotDesk),
      player_([this](const QString& location) { Q_EMIT playRequested(0, location); }) {
  clock_.setInterval(kClockMs);
  rest_.setInterval(kRestMs);
  rest_.setSingleShot(true);
  roomClock_.setInterval(kRoomMs);
  connect(&clock_, &QTimer::timeout, this, [this] {
    const bool isRunning = std::any_of(queue_.begin(), queue_.end(),
                                       [](const ItemState& item) { return isActive(item.status); });
    if (isRunning) look();
  });
  connect(&roomClock_, &QTimer::timeout, this, &SessionWorker::tellRoom);
  connect(&rest_, &QTimer::timeout, this, &SessionWorker::look);
  session::SessionListener listener;
  listener.wake = [this] { lookSoon(); };
  listener.askForSlot = [this](const std::string& title) { return slotDesk_.choose(title); };
  session_ = std::make_unique<session::PlayerSession>(options, std::move(listener));
  player_.offerTo(session_->plugins());
}

SessionWorker::~SessionWorker() {
  slotDesk_.close();
  explainer_.reset();
  if (book_) manager().pause();  // what runs is noted as parked
  session_.reset();
}

bool SessionWorker::open() {
  const std::string problem = session_->open(session::PlayerSession::Access::kChange);
  if (!problem.empty()) {
    Q_EMIT lost(QString::fromStdString(problem));
    return false;
  }
  const auto findTransfer = [this](const std::string& address) {
    return session_->findTransfer(address);
  };
  book_ = std::make_unique<FilmBook>(findTransfer);
  explainer_ = std::make_unique<reasons::FailureExplainer>(
      [this] { lookSoon(); }, findTransfer, reasons::serverProbe(trustedAuthorities()));
  session_->start();
  Q_EMIT preferencesRead(storedPreferences());
  tellRoom();
  look();
  clock_.start();
  roomClock_.start();
  return true;
}

void SessionWorker::add(const QStringList& inputs) {
  InputReport report;
  std::vector<ItemState> before = model::snapshotOf(manager());
  for (const QString& input : inputs) {
    const inputs::AddResult result = inputs::addInput(input.toStdString(), manager(), before,
                                                      [this] { return session_->takeMessages(); });
    if (result.outcome == inputs::AddResult::kAlreadyQueued) ++report.alreadyThere;
    if (result.refusal) {
      report.refused.append({input, QString::fromStdString(result.refusal->code()),
                             QString::fromStdString(result.refusal->happened) + QLatin1Char('.')});
    }
  }
  for (const ItemState& item : model::snapshotOf(manager())) {
    if (findItem(before, item.id) == nullptr) report.films.append(item.id);
  }
  report.added = static_cast<int>(report.films.size());
  look();
  Q_EMIT inputsTaken(report);
}

void SessionWorker::readTicket(const QString& path) {
  using Services = VeskPlayerX::ZPSServicesInterface;
  const auto services = KPIM::load<Services>(&session_->plugins(), VeskPlayerX::DIN_ZPSServices);
  TicketReport report;
  report.path = path;
  for (const inputs::TicketFinding& finding :
       inputs::examineTicket(path.toStdString(), services ? services->get() : nullptr, notAsked)) {
    if (finding.isFilm) {
      ++report.films;
      report.lines.append({finding.line, QString::fromStdString(finding.title), false});
    } else {
      report.isDoubtful = true;
      report.lines.append({finding.line, QString::fromStdString(finding.note), true});
    }
  }
  Q_EMIT ticketRead(report);
}

void SessionWorker::pauseAll() { manager().pause(); }

void SessionWorker::resumeAll() { manager().resume(); }

void SessionWorker::stop(const Ids& ids) {
  for (const FilmId id : ids) stopped_.insert(id);
  keepStopped();
  look();
}

void SessionWorker::goOn(const Ids& ids) {
  for (const FilmId id : ids) {
    stopped_.remove(id);
    const auto* const item = manager().get(id);
    const bool isStopped = item != nullptr && item->getStatus() == DownloadStatusStopped;
    if (isStopped) manager().updateStatus(id, DownloadStatusQueued);
  }
  look();
}

void SessionWorker::retry(const Ids& ids) {
  // The one that is retried last goes first; so the first of them is.
  for (auto id = ids.crbegin(); id != ids.crend(); ++id) manager().retry(*id);
}

void SessionWorker::remove(const Ids& ids, bool withFiles) {
  stop(ids);
  for (const FilmId id : ids) {
    const ItemState* const item = findItem(queue_, id);
    const bool hasFile = item != nullptr && item->status == DownloadStatusCompleted;
    const QString path = hasFile ? QString::fromStdString(item->path) : QString();
    manager().remove(id);
    stopped_.remove(id);
    if (withFiles && !path.isEmpty() && QFile::exists(path) && !QFile::remove(path)) {
      Q_EMIT noticed({Notice::kServices, 0, tr("The file %1 cannot be deleted.").arg(path), 0, 0});
    }
  }
  look();
}

void SessionWorker::move(const Ids& ids, Move where) {
  const bool isForward = where == Move::kUp || where == Move::kToBottom;
  Ids order = ids;
  if (!isForward) std::reverse(order.begin(), order.end());
  for (const FilmId id : order) {
    switch (where) {
      case Move::kUp:
        manager().moveUp(id);
        break;
      case Move::kDown:
        manager().moveDown(id);
        break;
      case Move::kToTop:
        manager().moveToTop(id);
        break;
      case Move::kToBottom:
        manager().moveToBottom(id);
        break;
    }
  }
  look();
}

void SessionWorker::moveBefore(const Ids& ids, FilmId before) {
  if (before == 0) return move(ids, Move::kToBottom);
  const auto placeOf = [this](FilmId id) {
    const std::vector<ItemState> queue = model::snapshotOf(manager());
    const auto item = std::find_if(queue.begin(), queue.end(),
                                   [id](const ItemState& each) { return each.id == id; });
    return item - queue.begin();
  };
  for (const FilmId id : ids) {
    if (id == before) continue;
    while (placeOf(id) > placeOf(before) && manager().moveUp(id)) continue;
    while (placeOf(id) + 1 < placeOf(before) && manager().moveDown(id)) continue;
  }
  look();
}

void SessionWorker::play(FilmId id) {
  const auto* const item = manager().get(id);
  if (item == nullptr) return;
  goOn({id});
  playWishes_.insert(id);
  manager().moveToTop(id);
  if (manager().isPaused()) manager().resume();
  look();
}

void SessionWorker::setPreferences(const QueuePreferences& preferences) {
  storePreferences(preferences);
  Q_EMIT preferencesRead(storedPreferences());
  tellRoom();
}

/// Called on any thread.
void SessionWorker::lookSoon() {
  if (isLookDue_.exchange(true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (!rest_.isActive()) look();
      },
      Qt::QueuedConnection);
}

void SessionWorker::look() {
  if (!book_) return;
  isLookDue_ = false;
  rest_.start();
  passMessagesOn();
  const std::vector<ItemState> before = std::exchange(queue_, model::snapshotOf(manager()));
  follow(before);
  keepStopped();
  for (const reasons::ExplainedFailure& answer : explainer_->takeAnswers()) {
    book_->explain(answer.item.id, answer.explanation);
  }
  const std::optional<QueueUpdate> update =
      book_->update(queue_, manager().isPaused(), FilmBook::Clock::now());
  if (!update) return;
  Q_EMIT changed(*update);
  playWhatIsReady(*update);
}

/// Waiting for a film to be far enough must not keep this thread, as the manager's own `play`
/// would.
void SessionWorker::playWhatIsReady(const QueueUpdate& update) {
  for (const Film& film : update.films) {
    if (!canBePlayed(film) || !playWishes_.remove(film.id)) continue;
    Q_EMIT playRequested(film.id, film.address);
  }
}

void SessionWorker::follow(const std::vector<ItemState>& before) {
  for (const QueueChange& change : model::changesBetween(before, queue_)) {
    if (change.kind == QueueChange::kFailed) explain(change.item);
    if (change.kind == QueueChange::kFinished) tellRoom();
  }
}

void SessionWorker::passMessagesOn() {
  for (const std::string& sentence : session_->takeMessages()) {
    lastWords_ = sentence;
    Q_EMIT noticed({Notice::kServices, 0, QString::fromStdString(sentence), 0, 0});
  }
}

void SessionWorker::explain(const ItemState& item) {
  const std::vector<model::Notice> notices = session_->takeNotices(item.id);
  for (const model::Notice& each : notices) {
    if (each.kind != model::Notice::kNoSpace && each.kind != model::Notice::kNotAuthorized)
      continue;
    Notice notice;
    notice.kind = kindOf(each.kind);
    notice.film = item.id;
    notice.text = QString::fromStdString(each.text);
    if (each.kind == model::Notice::kNoSpace) {
      notice.needed = neededSpace(item.size);
      notice.free = freeSpace(notice.text);
    }
    Q_EMIT noticed(notice);
  }
  explainer_->explain(item, notices, std::exchange(lastWords_, {}));
}

/// The download manager queues a stopped film anew whenever another one climbs past it.
void SessionWorker::keepStopped() {
  for (const FilmId id : std::as_const(stopped_)) {
    const auto* const item = manager().get(id);
    if (item == nullptr) continue;
    const DownloadStatusEnumType status = item->getStatus();
    if (!model::isUnfinished(status)) continue;
    manager().updateStatus(id, DownloadStatusStopped);
    if (isActive(status)) manager().cancel();
  }
}

void SessionWorker::tellRoom() {
  const QString folder = mediaFolder();
  Q_EMIT roomKnown(folder, freeSpace(folder));
}

}  // namespace playerx::window
