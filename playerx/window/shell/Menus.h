#pragma once

class QMenu;
class QMenuBar;
class QToolBar;
class QWidget;

namespace playerx::window {

class ActionSet;

/// Fills the menu bar with every action.
void fillMenuBar(QMenuBar& bar, const ActionSet& actions);

/// Fills the menu of a film in the list.
void fillFilmMenu(QMenu& menu, const ActionSet& actions);

/// Fills the tool bar with what is done most, and with `end`, which it owns from then on.
void fillToolBar(QToolBar& bar, const ActionSet& actions, QWidget* end);

}  // namespace playerx::window
