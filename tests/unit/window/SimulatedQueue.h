#pragma once

#include <QRandomGenerator>
#include <QSet>
#include <algorithm>

#include "playerx/window/queue/WindowQueue.h"
#include "tests/unit/window/Films.h"

namespace playerx::window {

inline auto isOneOf(const QList<FilmId>& ids) {
  return [ids](const Film& film) { return ids.contains(film.id); };
}

/// A queue that does what it is asked to do, at once and without transfers: `advance` lets films
/// arrive, end and fail.
class SimulatedQueue : public WindowQueue {
 public:
  explicit SimulatedQueue(quint32 seed) : random_(seed) {}

  void add(const QStringList& inputs) override {
    InputReport report;
    for (const QString& input : inputs) {
      Film added = film(++lastId_);
      added.address = input;
      report.films << added.id;
      films_ << added;
    }
    report.added = static_cast<int>(report.films.size());
    tell();
    Q_EMIT inputsTaken(report);
  }
  void readTicket(const QString& path) override {
    TicketReport report;
    report.path = path;
    report.films = 1;
    if (chance(2)) report.problem = QStringLiteral("This film has no line \"end\".");
    Q_EMIT ticketRead(report);
  }
  void pauseAll() override { setPaused(true); }
  void resumeAll() override { setPaused(false); }
  void stop(const Ids& ids) override { change(ids, isUnfinished, FilmState::kStopped); }
  void goOn(const Ids& ids) override { change(ids, isStopped, FilmState::kWaiting); }
  void retry(const Ids& ids) override { change(ids, hasFailed, FilmState::kWaiting); }
  void remove(const Ids& ids, bool) override {
    films_.removeIf([&ids](const Film& film) { return ids.contains(film.id); });
    tell();
  }
  void move(const Ids& ids, Move where) override {
    const auto first = std::find_if(films_.begin(), films_.end(), isOneOf(ids));
    const auto row = static_cast<qsizetype>(first - films_.begin());
    const qsizetype last = films_.size();
    static constexpr int kSteps[] = {-1, 2, 0, 0};
    const bool isStep = where == Move::kUp || where == Move::kDown;
    place(ids, isStep ? row + kSteps[static_cast<int>(where)] : where == Move::kToTop ? 0 : last);
  }
  void moveBefore(const Ids& ids, FilmId before) override {
    const auto found = std::find_if(films_.begin(), films_.end(), isOneOf({before}));
    place(ids, found - films_.begin());
  }
  void play(FilmId id) override { moveBefore({id}, films_.isEmpty() ? 0 : films_.first().id); }
  void chooseSlot(int, int) override {}
  void setPreferences(const QueuePreferences& preferences) override {
    Q_EMIT preferencesRead(preferences);
  }

  /// Something happens to one film.
  void advance() {
    if (films_.isEmpty()) return;
    Film& film = films_[random_.bounded(films_.size())];
    const FilmState state = film.state;
    if (!isUnfinished(state) || state == FilmState::kStopped) return;
    film = chance(8)    ? failed(film.id, QStringLiteral("http_404"), QStringLiteral("No film."))
           : chance(10) ? window::film(film.id, FilmState::kDone)
                        : arriving(film.id, std::min(film.percent + 7, 100));
    tell();
  }

  Ids ids() const {
    Ids ids;
    for (const Film& film : films_) ids << film.id;
    return ids;
  }

 private:
  static bool isStopped(FilmState state) { return state == FilmState::kStopped; }
  static bool hasFailed(FilmState state) { return state == FilmState::kFailed; }

  bool chance(int of) { return random_.bounded(of) == 0; }

  void setPaused(bool isPaused) {
    isPaused_ = isPaused;
    tell();
  }

  void change(const Ids& ids, bool (*fits)(FilmState), FilmState state) {
    for (Film& film : films_) {
      if (!ids.contains(film.id) || !fits(film.state)) continue;
      film.state = state;
      film.failure = {};
    }
    tell();
  }

  /// Puts the films in front of what stands at `row` now.
  void place(const Ids& ids, qsizetype row) {
    const auto begin = films_.begin();
    const auto gap = begin + std::clamp<qsizetype>(row, 0, films_.size());
    std::stable_partition(begin, gap, std::not_fn(isOneOf(ids)));
    std::stable_partition(gap, films_.end(), isOneOf(ids));
    tell();
  }

  void tell() {
    QueueUpdate update = queueOf(films_);
    update.isPaused = isPaused_;
    Q_EMIT changed(update);
  }

  QRandomGenerator random_;
  QList<Film> films_;
  FilmId lastId_ = 0;
  bool isPaused_ = false;
};

}  // namespace playerx::window
