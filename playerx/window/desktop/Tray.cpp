#include "playerx/window/desktop/Tray.h"

#include <QGuiApplication>

#include "playerx/window/actions/ActionSet.h"
#include "playerx/window/view/Icons.h"

namespace playerx::window {

Tray::Tray(const ActionSet& actions, QObject* parent) : QObject(parent), icon_(applicationIcon()) {
  connect(menu_.addAction(tr("Show the window")), &QAction::triggered, this, &Tray::windowWanted);
  menu_.addSeparator();
  for (const Verb verb : {Verb::kPauseAll, Verb::kResumeAll}) menu_.addAction(actions.of(verb));
  menu_.addSeparator();
  menu_.addAction(actions.of(Verb::kQuit));
  icon_.setContextMenu(&menu_);
  connect(&icon_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason why) {
    if (why == QSystemTrayIcon::Trigger) Q_EMIT windowWanted();
  });
  setStatus(QString());
  if (QSystemTrayIcon::isSystemTrayAvailable()) icon_.show();
}

void Tray::setStatus(const QString& status) {
  const QString name = QGuiApplication::applicationDisplayName();
  //: Tool tip of the icon: the player's name, then the queue in numbers.
  icon_.setToolTip(status.isEmpty() ? name : tr("%1\n%2").arg(name, status));
}

}  // namespace playerx::window
