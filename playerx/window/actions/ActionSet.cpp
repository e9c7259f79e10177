#include "playerx/window/actions/ActionSet.h"

#include <QWidget>

#include "playerx/window/view/Icons.h"

namespace playerx::window {

ActionSet::ActionSet(QObject* parent) : QObject(parent) {
  for (const VerbFacts& facts : verbFacts()) {
    auto* const action = new QAction(this);
    const Verb verb = facts.verb;
    action->setShortcuts(shortcutsOf(verb));
    action->setShortcutContext(facts.place == ShortcutPlace::kList ? Qt::WidgetShortcut
                                                                   : Qt::WindowShortcut);
    action->setIcon(themedIcon(facts.icon));
    connect(action, &QAction::triggered, this, [this, verb] { Q_EMIT triggered(verb); });
    actions_.push_back(action);
  }
  of(Verb::kQuit)->setMenuRole(QAction::QuitRole);
  of(Verb::kAbout)->setMenuRole(QAction::AboutRole);
  of(Verb::kPreferences)->setMenuRole(QAction::PreferencesRole);
  for (const Verb view : {Verb::kShowDownloads, Verb::kShowWatching, Verb::kFullScreen}) {
    of(view)->setCheckable(true);
  }
  retranslate();
}

void ActionSet::update(const Situation& situation) {
  for (const VerbFacts& facts : verbFacts()) {
    const QString obstacle = obstacleTo(facts.verb, situation);
    QAction& action = *of(facts.verb);
    action.setEnabled(obstacle.isEmpty());
    explain(action, facts.verb, obstacle);
  }
  // Verbs that share a key: only one of them may answer to it.
  of(Verb::kGoOn)
      ->setShortcuts(of(Verb::kStop)->isEnabled() ? QList<QKeySequence>()
                                                  : shortcutsOf(Verb::kGoOn));
  of(Verb::kResumeAll)->setVisible(situation.isPaused);
  of(Verb::kPauseAll)->setVisible(!situation.isPaused);
}

void ActionSet::attach(QWidget& window, QWidget& list) const {
  for (const VerbFacts& facts : verbFacts()) {
    QWidget& owner = facts.place == ShortcutPlace::kList ? list : window;
    owner.addAction(of(facts.verb));
  }
}

void ActionSet::retranslate() {
  for (const VerbFacts& facts : verbFacts()) {
    QAction& action = *of(facts.verb);
    action.setText(menuText(facts.verb));
    explain(action, facts.verb, QString());
  }
}

void ActionSet::explain(QAction& action, Verb verb, const QString& obstacle) {
  const QString keys = action.shortcut().toString(QKeySequence::NativeText);
  QString hint = plainText(verb);
  if (!obstacle.isEmpty()) {
    //: Tool tip of an action that cannot be done: its name, then the reason.
    hint = tr("%1\n%2").arg(hint, obstacle);
  } else if (!keys.isEmpty()) {
    //: Tool tip of an action: its name, then its keys.
    hint = tr("%1 (%2)").arg(hint, keys);
  }
  action.setToolTip(hint);
}

}  // namespace playerx::window
