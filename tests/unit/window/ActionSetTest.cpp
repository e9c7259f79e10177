#include <gtest/gtest.h>

#include <QMenu>
#include <QMenuBar>
#include <QSet>

#include "playerx/window/actions/ActionSet.h"
#include "playerx/window/shell/Menus.h"
#include "tests/unit/window/Films.h"
#include "tests/unit/window/Mnemonics.h"

namespace playerx::window {
namespace {

QSet<QAction*> actionsIn(const QMenu& menu) {
  QSet<QAction*> found;
  for (QAction* const action : menu.actions()) {
    if (action->menu() != nullptr) found += actionsIn(*action->menu());
    found.insert(action);
  }
  return found;
}

TEST(ActionSetTest, EveryVerbIsInTheMenuBar) {
  ActionSet actions;
  QMenuBar bar;
  fillMenuBar(bar, actions);
  QSet<QAction*> found;
  for (QAction* const menu : bar.actions()) found += actionsIn(*menu->menu());
  for (const VerbFacts& facts : verbFacts()) {
    EXPECT_TRUE(found.contains(actions.of(facts.verb))) << facts.text;
  }
}

TEST(ActionSetTest, FactsStandInTheOrderOfTheVerbs) {
  int number = 0;
  for (const VerbFacts& facts : verbFacts()) EXPECT_EQ(static_cast<int>(facts.verb), number++);
  EXPECT_EQ(number, static_cast<int>(Verb::kQuit) + 1);
}

TEST(ActionSetTest, EveryActionHasWordsAnIconAndAToolTip) {
  const ActionSet actions;
  for (const VerbFacts& facts : verbFacts()) {
    const QAction& action = *actions.of(facts.verb);
    EXPECT_FALSE(action.text().isEmpty());
    EXPECT_FALSE(action.icon().pixmap(16).isNull()) << facts.icon;
    EXPECT_TRUE(action.toolTip().startsWith(plainText(facts.verb)));
  }
}

TEST(ActionSetTest, NoTwoActionsThatCanBeDoneShareAKey) {
  ActionSet actions;
  Film stopped = film(1, FilmState::kStopped);
  for (const bool isPaused : {false, true}) {
    for (const QList<Film>& selected : {QList<Film>{film(2)}, {stopped}, {stopped, film(2)}}) {
      Situation now;
      now.isPaused = isPaused;
      for (const Film& each : selected) {
        now.queue.add(each);
        now.selected.add(each);
      }
      actions.update(now);
      QSet<QString> keys;
      for (const VerbFacts& facts : verbFacts()) {
        const QAction& action = *actions.of(facts.verb);
        if (!action.isEnabled() || !action.isVisible()) continue;
        for (const QKeySequence& key : action.shortcuts()) {
          EXPECT_FALSE(keys.contains(key.toString())) << key.toString().toStdString();
          keys.insert(key.toString());
        }
      }
    }
  }
}

TEST(ActionSetTest, AGreyActionSaysWhy) {
  ActionSet actions;
  actions.update({});
  const QAction& remove = *actions.of(Verb::kRemove);
  EXPECT_FALSE(remove.isEnabled());
  EXPECT_EQ(remove.toolTip(), QStringLiteral("Remove\nChoose a film first."));
}

TEST(ActionSetTest, NoMenuHasAMnemonicTwice) {
  ActionSet actions;
  expectDistinctMnemonics(actions);
}

}  // namespace
}  // namespace playerx::window
