#pragma once

#include <QAction>
#include <QObject>
#include <vector>

#include "playerx/window/actions/Situation.h"

namespace playerx::window {

/// One QAction for every verb: its words, icon and shortcut, greyed with the reason in its tool tip
/// when it cannot be done. Used on the UI thread.
class ActionSet : public QObject {
  Q_OBJECT

 public:
  explicit ActionSet(QObject* parent = nullptr);

  QAction* of(Verb verb) const { return actions_[static_cast<std::size_t>(verb)]; }

  /// Enables and explains every action as the situation asks.
  void update(const Situation& situation);

  /// Gives the widgets their actions, so that the shortcuts work there.
  void attach(QWidget& window, QWidget& list) const;

  /// Renews all words after a change of the language.
  void retranslate();

 Q_SIGNALS:
  void triggered(playerx::window::Verb verb);

 private:
  void explain(QAction& action, Verb verb, const QString& obstacle);

  std::vector<QAction*> actions_;  // by verb; children of this
};

}  // namespace playerx::window
