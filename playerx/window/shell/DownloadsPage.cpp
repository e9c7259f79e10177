#include "playerx/window/shell/DownloadsPage.h"

#include <QMenu>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "playerx/window/actions/ActionSet.h"
#include "playerx/window/model/FilmFilter.h"
#include "playerx/window/shell/Menus.h"
#include "playerx/window/view/EmptyState.h"
#include "playerx/window/view/FilmView.h"

namespace playerx::window {

DownloadsPage::DownloadsPage(FilmFilter& films, ActionSet& actions, QWidget* parent)
    : QWidget(parent),
      films_(films),
      actions_(actions),
      stack_(new QStackedWidget(this)),
      view_(new FilmView(this)),
      empty_(new EmptyState(actions.of(Verb::kAddAddresses), this)) {
  view_->setFilms(&films);
  stack_->addWidget(empty_);
  stack_->addWidget(view_);
  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(stack_);
  for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved}) {
    connect(&films, signal, this, &DownloadsPage::choose);
  }
  connect(&films, &QAbstractItemModel::layoutChanged, this, &DownloadsPage::choose);
  connect(view_, &QWidget::customContextMenuRequested, this, &DownloadsPage::showMenu);
  choose();
}

void DownloadsPage::showMenu(const QPoint& place) {
  auto* const menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  fillFilmMenu(*menu, actions_);
  menu->popup(view_->viewport()->mapToGlobal(place));
}

void DownloadsPage::choose() {
  const bool isEmpty = films_.rowCount() == 0;
  empty_->setFiltered(films_.isNarrowed() && films_.sourceModel()->rowCount() > 0);
  QWidget* const page = isEmpty ? static_cast<QWidget*>(empty_) : view_;
  if (stack_->currentWidget() != page) stack_->setCurrentWidget(page);
  setFocusProxy(page);
}

}  // namespace playerx::window
