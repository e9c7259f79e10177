#include "playerx/window/shell/ToolBar.h"

#include <QEvent>

#include "playerx/window/actions/ActionSet.h"

namespace playerx::window {

ToolBar::ToolBar(const ActionSet& actions, QWidget* end, QWidget* parent)
    : QToolBar(tr("Tools"), parent) {
  setObjectName(QStringLiteral("tools"));
  setMovable(false);
  const int side = fontMetrics().height() + 4;
  setIconSize({side, side});
  setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  setContextMenuPolicy(Qt::PreventContextMenu);
  // Tools begin where the rows' text does.
  auto* const indent = new QWidget(this);
  indent->setFixedWidth(4);
  addWidget(indent);
  addAction(actions.of(Verb::kAddAddresses));
  addAction(actions.of(Verb::kAddTickets));
  addSeparator();
  addAction(actions.of(Verb::kPauseAll));
  addAction(actions.of(Verb::kResumeAll));
  addWidget(end);
}

void ToolBar::resizeEvent(QResizeEvent* event) {
  QToolBar::resizeEvent(event);
  fit();
}

void ToolBar::changeEvent(QEvent* event) {
  QToolBar::changeEvent(event);
  const bool isRelabelled =
      event->type() == QEvent::FontChange || event->type() == QEvent::LanguageChange;
  if (isRelabelled) fit();
}

void ToolBar::fit() {
  setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  if (sizeHint().width() > width()) setToolButtonStyle(Qt::ToolButtonIconOnly);
}

}  // namespace playerx::window
