#pragma once

class QMenu;
class QMenuBar;

namespace playerx::window {

class ActionSet;

/// Fills the menu bar with every action.
void fillMenuBar(QMenuBar& bar, const ActionSet& actions);

/// Fills the menu of a film in the list.
void fillFilmMenu(QMenu& menu, const ActionSet& actions);

}  // namespace playerx::window
