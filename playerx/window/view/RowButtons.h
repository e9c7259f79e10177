#pragma once

#include <QList>

#include "playerx/window/model/Film.h"
#include "playerx/window/model/Verb.h"

namespace playerx::window {

/// What can be done with a film at once, as buttons in its row, the first one the most likely.
QList<Verb> rowButtonsOf(const Film& film);

/// Whether the buttons are shown even in a row without the pointer: those that mend a failure.
bool showsButtonsAlways(const Film& film);

}  // namespace playerx::window
