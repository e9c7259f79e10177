#include "playerx/window/actions/FilmCommands.h"

#include <QClipboard>
#include <QGuiApplication>
#include <algorithm>
#include <functional>
#include <map>

#include "playerx/window/actions/PendingRemoval.h"
#include "playerx/window/model/FilmFilter.h"
#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/FilmText.h"
#include "playerx/window/queue/WindowQueue.h"
#include "playerx/window/view/FilmView.h"
#include "playerx/window/view/MessageStrip.h"

namespace playerx::window {

namespace {

constexpr int kReportMs = 8000;

const QString kAdding = QStringLiteral("adding");

bool isTicket(const QString& input) {
  return input.endsWith(QLatin1String(".tix"), Qt::CaseInsensitive) &&
         !input.contains(QLatin1String("://"));
}

bool canBeStopped(const Film& film) {
  return isUnfinished(film.state) && film.state != FilmState::kStopped;
}

bool isStopped(const Film& film) { return film.state == FilmState::kStopped; }
bool hasFailed(const Film& film) { return film.state == FilmState::kFailed; }
bool isDone(const Film& film) { return film.state == FilmState::kDone; }

}  // namespace

FilmCommands::FilmCommands(const Parts& parts, QObject* parent)
    : QObject(parent), parts_(parts), removal_(new PendingRemoval(parts.queue, this)) {
  connect(removal_, &PendingRemoval::hiddenChanged, &parts_.filter, &FilmFilter::setHidden);
  connect(removal_, &PendingRemoval::settled, this, [this] {
    parts_.strip.end(QStringLiteral("undo"));
    Q_EMIT situationChanged();
  });
  connect(&parts_.queue, &WindowQueue::adding, this, &FilmCommands::tellLeft);
  connect(&parts_.queue, &WindowQueue::ticketRead, this, &FilmCommands::tellTicket);
}

bool FilmCommands::carryOut(Verb verb) { return carryOut(verb, parts_.view.selectedFilms()); }

bool FilmCommands::carryOut(Verb verb, const QList<FilmId>& ids) {
  using Deed = std::function<void(FilmCommands&, const QList<FilmId>&)>;
  static const std::map<Verb, Deed> kDeeds = {
      {Verb::kPauseAll, [](auto& self, auto&) { self.parts_.queue.pauseAll(); }},
      {Verb::kResumeAll, [](auto& self, auto&) { self.parts_.queue.resumeAll(); }},
      {Verb::kStop,
       [](auto& self, auto& ids) { self.parts_.queue.stop(self.idsIf(ids, canBeStopped)); }},
      {Verb::kGoOn,
       [](auto& self, auto& ids) { self.parts_.queue.goOn(self.idsIf(ids, isStopped)); }},
      {Verb::kRetry,
       [](auto& self, auto& ids) { self.parts_.queue.retry(self.idsIf(ids, hasFailed)); }},
      {Verb::kRetryAll,
       [](auto& self, auto&) { self.parts_.queue.retry(self.idsIf(self.allIds(), hasFailed)); }},
      {Verb::kMoveUp, [](auto& self, auto& ids) { self.parts_.queue.move(ids, Move::kUp); }},
      {Verb::kMoveDown, [](auto& self, auto& ids) { self.parts_.queue.move(ids, Move::kDown); }},
      {Verb::kMoveToTop, [](auto& self, auto& ids) { self.parts_.queue.move(ids, Move::kToTop); }},
      {Verb::kMoveToBottom,
       [](auto& self, auto& ids) { self.parts_.queue.move(ids, Move::kToBottom); }},
      {Verb::kPlay,
       [](auto& self, auto& ids) {
         if (!ids.isEmpty()) Q_EMIT self.playWanted(ids.first());
       }},
      {Verb::kOtherFolder, [](auto& self, auto&) { Q_EMIT self.otherFolderWanted(); }},
      {Verb::kShowInFolder, [](auto& self, auto& ids) { self.showInFolder(ids); }},
      {Verb::kCopyAddress, [](auto& self, auto& ids) { self.copyAddresses(self.filmsOf(ids)); }},
      {Verb::kCopyDetails, [](auto& self, auto& ids) { self.copyDetails(self.filmsOf(ids)); }},
      {Verb::kRemove, [](auto& self, auto& ids) { self.remove(ids, false); }},
      {Verb::kRemoveWithFile, [](auto& self, auto& ids) { self.askAboutDeletion(ids); }},
      {Verb::kClearDone,
       [](auto& self, auto&) { self.remove(self.idsIf(self.allIds(), isDone), false); }},
      {Verb::kUndo, [](auto& self, auto&) { self.removal_->undo(); }},
      {Verb::kSelectAll, [](auto& self, auto&) { self.parts_.view.selectAll(); }},
  };
  const auto deed = kDeeds.find(verb);
  if (deed == kDeeds.end()) return false;
  deed->second(*this, ids);
  return true;
}

void FilmCommands::add(const QStringList& inputs) {
  QStringList addresses;
  for (const QString& input : inputs) {
    if (isTicket(input)) {
      parts_.queue.readTicket(input);
    } else {
      addresses.append(input);
    }
  }
  if (!addresses.isEmpty()) parts_.queue.add(addresses);
}

void FilmCommands::moveBefore(const QList<FilmId>& ids, FilmId before) {
  if (!parts_.filter.isNarrowed()) return parts_.queue.moveBefore(ids, before);
  parts_.strip.show({.topic = QStringLiteral("move"),
                     .text = tr("Films can be moved when the list is not filtered."),
                     .lifetimeMs = kReportMs});
}

Situation FilmCommands::situation(bool isPaused) const {
  Situation now;
  now.isPaused = isPaused;
  now.canUndo = removal_->canUndo();
  now.isFiltered = parts_.filter.isNarrowed();
  for (const Film& film : parts_.films.films()) now.queue.add(film);

  int firstRow = parts_.films.rowCount();
  int lastRow = -1;
  for (const FilmId id : parts_.view.selectedFilms()) {
    const int row = parts_.films.rowOf(id);
    const Film* const film = parts_.films.filmAt(row);
    if (film == nullptr) continue;
    now.selected.add(*film);
    if (!isUnfinished(film->state)) continue;
    firstRow = std::min(firstRow, row);
    lastRow = std::max(lastRow, row);
  }
  const bool isOneBlock = lastRow - firstRow + 1 == now.selected.unfinished;
  now.isAtTop = isOneBlock && firstRow == 0;
  now.isAtBottom = isOneBlock && lastRow == now.queue.unfinished - 1;
  return now;
}

void FilmCommands::finish() { removal_->commit(); }

void FilmCommands::tellLeft(int inputs) {
  if (inputs == 0) return parts_.strip.end(kAdding);
  parts_.strip.show(
      {.topic = kAdding,
       .text = tr("%n address(es) or ticket(s) are still to be added.", nullptr, inputs)});
}

void FilmCommands::tellInputs(const InputReport& report) {
  if (!report.films.isEmpty()) parts_.view.selectFilms(report.films);
  if (report.refused.isEmpty()) {
    if (report.alreadyThere == 0) return;
    return parts_.strip.show(
        {.topic = QStringLiteral("inputs"),
         .text = tr("%n film(s) were in the list already.", nullptr, report.alreadyThere),
         .lifetimeMs = kReportMs});
  }
  const RefusedInput& first = report.refused.first();
  const int count = static_cast<int>(report.refused.size());
  //: %1 is an address or a path, %2 a sentence with the reason.
  QString text = tr("Not added: %1 — %2").arg(cleanText(first.input), cleanText(first.sentence));
  if (count > 1) {
    text = tr("%n input(s) were not added. The first one: %1 — %2", nullptr, count)
               .arg(cleanText(first.input), cleanText(first.sentence));
  }
  QStringList details;
  for (const RefusedInput& each : report.refused) {
    details << each.input + QLatin1Char('\t') + each.sentence;
  }
  const QString copied = details.join(QLatin1Char('\n'));
  parts_.strip.show({.topic = QStringLiteral("inputs"),
                     .text = text,
                     .isWarning = true,
                     .answers = {{count > 1 ? tr("Copy them") : tr("Copy it"),
                                  [copied] { QGuiApplication::clipboard()->setText(copied); }}}});
}

void FilmCommands::tellTicket(const TicketReport& report) {
  if (report.problem.isEmpty()) return parts_.queue.add({report.path});
  QString problem = cleanText(report.problem);
  //: Of a ticket; %1 is a number, %2 a sentence.
  if (report.line > 0) problem = tr("Line %1: %2").arg(report.line).arg(problem);
  const QString path = report.path;
  StripMessage message;
  message.topic = QStringLiteral("ticket:") + path;
  message.isWarning = true;
  if (report.films == 0) {
    message.text = tr("Not added: %1 — %2").arg(cleanText(path), problem);
  } else {
    message.text = tr("The ticket %1 names %n film(s), but something in it cannot be used. %2",
                      nullptr, report.films)
                       .arg(cleanText(path), problem);
    message.answers.append({tr("Add anyway"), [this, path] { parts_.queue.add({path}); }});
  }
  parts_.strip.show(message);
}

void FilmCommands::remove(const QList<FilmId>& ids, bool withFiles) {
  if (ids.isEmpty()) return;
  removal_->begin(filmsOf(ids), withFiles);
  parts_.strip.show({.topic = QStringLiteral("undo"),
                     .text = tr("%n film(s) removed.", nullptr, static_cast<int>(ids.size())),
                     .answers = {{plainText(Verb::kUndo), [this] { removal_->undo(); }}}});
  Q_EMIT situationChanged();
}

void FilmCommands::askAboutDeletion(const QList<FilmId>& ids) {
  const Film* const only = ids.size() == 1 ? parts_.films.film(ids.first()) : nullptr;
  Q_EMIT deletionAsked(ids, only != nullptr ? displayTitle(*only) : QString());
}

void FilmCommands::showInFolder(const QList<FilmId>& ids) {
  const QList<FilmId> done = idsIf(ids, isDone);
  if (!done.isEmpty()) Q_EMIT folderWanted(parts_.films.film(done.first())->path);
}

void FilmCommands::copyAddresses(const QList<Film>& films) {
  QStringList addresses;
  for (const Film& film : films) {
    if (!film.address.isEmpty()) addresses.append(film.address);
  }
  QGuiApplication::clipboard()->setText(addresses.join(QLatin1Char('\n')));
}

void FilmCommands::copyDetails(const QList<Film>& films) {
  QStringList details;
  for (const Film& film : films) details.append(detailsForHelp(film));
  QGuiApplication::clipboard()->setText(details.join(QStringLiteral("\n\n")));
}

QList<Film> FilmCommands::filmsOf(const QList<FilmId>& ids) const {
  QList<Film> films;
  for (const FilmId id : ids) {
    if (const Film* const film = parts_.films.film(id)) films.append(*film);
  }
  return films;
}

QList<FilmId> FilmCommands::idsIf(const QList<FilmId>& ids, bool (*holds)(const Film&)) const {
  QList<FilmId> fitting;
  for (const FilmId id : ids) {
    const Film* const film = parts_.films.film(id);
    if (film != nullptr && holds(*film)) fitting.append(id);
  }
  return fitting;
}

QList<FilmId> FilmCommands::allIds() const {
  QList<FilmId> ids;
  for (const Film& film : parts_.films.films()) ids.append(film.id);
  return ids;
}

}  // namespace playerx::window
