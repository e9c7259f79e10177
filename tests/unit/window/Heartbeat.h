#pragma once

#include <QTimer>
#include <algorithm>
#include <ctime>

namespace playerx::window {

/// Measures for how long the UI thread is kept from its events while this lives: by the clock,
/// which counts what other programs of the machine take, and in processor time of this thread.
class Heartbeat : public QObject {
 public:
  Heartbeat() {
    QObject::connect(&timer_, &QTimer::timeout, this, &Heartbeat::beat);
    timer_.start(1);
  }

  double longestGapMs() const { return longestGap_; }
  double longestWorkMs() const { return longestWork_; }

 private:
  static double now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  }

  void beat() {
    const double wall = now(CLOCK_MONOTONIC);
    const double work = now(CLOCK_THREAD_CPUTIME_ID);
    longestGap_ = std::max(longestGap_, wall - wall_);
    longestWork_ = std::max(longestWork_, work - work_);
    wall_ = wall;
    work_ = work;
  }

  QTimer timer_;
  double wall_ = now(CLOCK_MONOTONIC);
  double work_ = now(CLOCK_THREAD_CPUTIME_ID);
  double longestGap_ = 0;
  double longestWork_ = 0;
};

}  // namespace playerx::window
