#include "playerx/window/view/BarGrowth.h"

#include <algorithm>

namespace playerx::window {

namespace {

constexpr int kFrameMs = 16;

/// Films that are remembered at most; the others are shown without motion.
constexpr qsizetype kMostFilms = 256;

}  // namespace

BarGrowth::BarGrowth(QObject* parent) : QObject(parent) {
  clock_.start();
  frames_.setInterval(kFrameMs);
  connect(&frames_, &QTimer::timeout, this, &BarGrowth::step);
}

double BarGrowth::shown(const Film& film) {
  const double goal = arrivedPart(film);
  if (duration_ == 0 || !isRunning(film.state)) return goal;
  const auto known = growths_.find(film.id);
  if (known == growths_.end()) {
    if (growths_.size() >= kMostFilms) growths_.clear();
    growths_.insert(film.id, {goal, goal, 0});
    return goal;
  }
  if (goal < known->to) {
    *known = {goal, goal, 0};
  } else if (goal > known->to) {
    *known = {valueOf(*known), goal, clock_.elapsed()};
    frames_.start();
  }
  return valueOf(*known);
}

double BarGrowth::valueOf(const Growth& growth) const {
  const double passed = static_cast<double>(clock_.elapsed() - growth.start) / duration_;
  return growth.from + (growth.to - growth.from) * std::clamp(passed, 0.0, 1.0);
}

void BarGrowth::step() {
  QList<FilmId> growing;
  const qint64 now = clock_.elapsed();
  for (auto growth = growths_.cbegin(); growth != growths_.cend(); ++growth) {
    const bool moves = growth->from < growth->to && now - growth->start < duration_ + 2 * kFrameMs;
    if (moves) growing.append(growth.key());
  }
  if (growing.isEmpty()) {
    frames_.stop();
  } else {
    Q_EMIT grew(growing);
  }
}

double arrivedPart(const Film& film) {
  if (film.state == FilmState::kDone) return 1;
  if (film.size == 0) return film.percent / 100.0;
  return std::min(1.0, static_cast<double>(film.arrived) / static_cast<double>(film.size));
}

}  // namespace playerx::window
