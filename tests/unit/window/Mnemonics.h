#pragma once

#include <gtest/gtest.h>

#include <QMenu>
#include <QMenuBar>

#include "playerx/window/actions/ActionSet.h"
#include "playerx/window/shell/Menus.h"

namespace playerx::window {

/// The letters that choose an entry of a menu.
inline QStringList mnemonics(const QList<QAction*>& entries) {
  QStringList letters;
  for (const QAction* const entry : entries) {
    const qsizetype mark = entry->text().indexOf(QLatin1Char('&'));
    if (mark >= 0) letters << entry->text().mid(mark + 1, 1).toLower();
  }
  return letters;
}

/// Expects that no menu of the window, nor its bar, has a letter twice.
inline void expectDistinctMnemonics(ActionSet& actions) {
  QMenuBar bar;
  fillMenuBar(bar, actions);
  EXPECT_EQ(mnemonics(bar.actions()).removeDuplicates(), 0);
  for (const QAction* const menu : bar.actions()) {
    const QStringList letters = mnemonics(menu->menu()->actions());
    EXPECT_EQ(QStringList(letters).removeDuplicates(), 0)
        << menu->text().toStdString() << ": " << letters.join(QString()).toStdString();
  }
}

}  // namespace playerx::window
