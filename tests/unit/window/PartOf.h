#pragma once

#include "playerx/window/shell/MainWindow.h"

namespace playerx::window {

/// The part of this class in the window, which has one.
template <class Part>
Part& partOf(const MainWindow& window) {
  return *window.findChild<Part*>();
}

}  // namespace playerx::window
