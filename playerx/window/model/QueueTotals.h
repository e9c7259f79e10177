#pragma once

#include <QtGlobal>
#include <vector>

#include "playerx/window/model/Film.h"

namespace playerx::window {

/// The whole queue in numbers.
struct QueueTotals {
  int films = 0;
  int done = 0;
  int unfinished = 0;
  quint64 arrived = 0;  ///< bytes of all films whose size is known
  quint64 size = 0;     ///< bytes of all films whose size is known
  quint64 bytesPerSecond = 0;
  bool isRunning = false;
  bool isWhole = true;  ///< every unfinished film's size is known

  static QueueTotals of(const std::vector<Film>& films);
};

}  // namespace playerx::window
