#include "playerx/window/view/FilmView.h"

#include <QDropEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <algorithm>

#include "playerx/window/inputs/PastedInputs.h"
#include "playerx/window/model/FilmFilter.h"
#include "playerx/window/model/FilmModel.h"
#include "playerx/window/view/FilmDelegate.h"
#include "playerx/window/view/RowButtons.h"

namespace playerx::window {

FilmView::FilmView(QWidget* parent) : QTreeView(parent), delegate_(new FilmDelegate(this)) {
  setItemDelegate(delegate_);
  setHeaderHidden(true);
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setIndentation(0);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setVerticalScrollMode(ScrollPerPixel);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setTextElideMode(Qt::ElideNone);
  setMouseTracking(true);
  setDragDropMode(DragDrop);
  setDefaultDropAction(Qt::MoveAction);
  setDropIndicatorShown(true);
  setContextMenuPolicy(Qt::CustomContextMenu);
  setFrameShape(NoFrame);
  setAttribute(Qt::WA_MacShowFocusRect, false);
  setAccessibleName(tr("Downloads"));
  connect(&delegate_->growth(), &BarGrowth::grew, this, &FilmView::drawBars);
  followMotionSetting();
}

void FilmView::setFilms(FilmFilter* films) {
  films_ = films;
  setModel(films);
  connect(films, &QAbstractItemModel::layoutAboutToBeChanged, this, &FilmView::noteCurrent);
  connect(films, &QAbstractItemModel::layoutChanged, this, &FilmView::replaceLostCurrent);
  header()->setStretchLastSection(true);
}

QList<FilmId> FilmView::selectedFilms() const {
  QModelIndexList rows = selectionModel()->selectedRows();
  std::sort(rows.begin(), rows.end());
  QList<FilmId> ids;
  ids.reserve(rows.size());
  for (const QModelIndex& row : rows) ids.append(row.data(FilmModel::kIdRole).value<FilmId>());
  return ids;
}

void FilmView::selectFilms(const QList<FilmId>& ids) {
  QItemSelection selection;
  QModelIndex first;
  for (const FilmId id : ids) {
    const QModelIndex index = films_->indexOf(id);
    if (!index.isValid()) continue;
    // Thousands of films that were added are one range, not thousands.
    const bool isNext = !selection.isEmpty() && selection.last().bottom() + 1 == index.row();
    const QModelIndex begin = isNext ? QModelIndex(selection.takeLast().topLeft()) : index;
    selection.append(QItemSelectionRange(begin, index));
    if (!first.isValid()) first = index;
  }
  if (!first.isValid()) return;
  selectionModel()->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
  selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void FilmView::keyPressEvent(QKeyEvent* event) {
  const bool isBack = event->key() == Qt::Key_Left || event->key() == Qt::Key_Right;
  const bool isUse = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
                     event->key() == Qt::Key_Space;
  if (isBack && event->modifiers() == Qt::NoModifier && currentIndex().isValid()) {
    const bool isForward =
        (event->key() == Qt::Key_Right) == (layoutDirection() == Qt::LeftToRight);
    const int last = static_cast<int>(buttonsOf(currentIndex()).size()) - 1;
    return focusButton(std::clamp(focusedButton_ + (isForward ? 1 : -1), -1, last));
  }
  if (isUse && focusedButton_ >= 0) return useButton(currentIndex(), focusedButton_);
  QTreeView::keyPressEvent(event);
}

bool FilmView::event(QEvent* event) {
  // On a row's button, Space and Return mean the button, not the shortcut of the whole list.
  if (event->type() == QEvent::ShortcutOverride && focusedButton_ >= 0) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter) {
      event->accept();
      return true;
    }
  }
  return QTreeView::event(event);
}

void FilmView::mousePressEvent(QMouseEvent* event) {
  const QModelIndex index = indexAt(event->pos());
  const std::optional<int> button = buttonAt(index, event->pos());
  if (event->button() == Qt::LeftButton && button) {
    pressedRow_ = index;
    pressedButton_ = *button;
    delegate_->setPressedButton(index, *button);
    return update(index);
  }
  QTreeView::mousePressEvent(event);
}

void FilmView::mouseReleaseEvent(QMouseEvent* event) {
  if (pressedButton_ < 0) return QTreeView::mouseReleaseEvent(event);
  const QModelIndex index = pressedRow_;
  const int button = std::exchange(pressedButton_, -1);
  delegate_->setPressedButton({}, -1);
  if (!index.isValid()) return;
  update(index);
  if (buttonAt(index, event->pos()) == button) useButton(index, button);
}

void FilmView::mouseDoubleClickEvent(QMouseEvent* event) {
  const QModelIndex index = indexAt(event->pos());
  if (buttonAt(index, event->pos())) return mousePressEvent(event);
  const Film* const film = films_->filmAt(index);
  if (film != nullptr && canBePlayed(*film)) Q_EMIT buttonUsed(Verb::kPlay, film->id);
}

void FilmView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTreeView::currentChanged(current, previous);
  focusButton(-1);
}

void FilmView::selectionChanged(const QItemSelection& selected, const QItemSelection& left) {
  QTreeView::selectionChanged(selected, left);
  Q_EMIT selectionMoved();
}

void FilmView::dragEnterEvent(QDragEnterEvent* event) {
  const QMimeData& data = *event->mimeData();
  const bool isUseful = !draggedFilms(data).isEmpty() || data.hasUrls() || data.hasText();
  event->setAccepted(isUseful);
  if (isUseful) setState(DraggingState);
}

void FilmView::dragMoveEvent(QDragMoveEvent* event) {
  QTreeView::dragMoveEvent(event);
  event->setDropAction(event->source() == this ? Qt::MoveAction : Qt::CopyAction);
  event->accept();
}

void FilmView::dropEvent(QDropEvent* event) {
  const QList<FilmId> films = draggedFilms(*event->mimeData());
  if (!films.isEmpty()) {
    Q_EMIT filmsDropped(films, filmBehind(event->position().toPoint()));
  } else {
    Q_EMIT inputsDropped(inputsInData(*event->mimeData()).inputs);
  }
  // A copy: the queue moves its films itself, and nothing is to be taken from the source.
  event->setDropAction(Qt::CopyAction);
  event->accept();
  setState(NoState);
  viewport()->update();
}

void FilmView::changeEvent(QEvent* event) {
  QTreeView::changeEvent(event);
  if (event->type() == QEvent::StyleChange) followMotionSetting();
  if (event->type() == QEvent::LanguageChange) setAccessibleName(tr("Downloads"));
  if (event->type() == QEvent::FontChange) scheduleDelayedItemsLayout();
}

QList<Verb> FilmView::buttonsOf(const QModelIndex& index) const {
  const Film* const film = films_->filmAt(index);
  return film != nullptr ? rowButtonsOf(*film) : QList<Verb>();
}

std::optional<int> FilmView::buttonAt(const QModelIndex& index, const QPoint& place) const {
  if (!index.isValid()) return std::nullopt;
  QStyleOptionViewItem option = optionOf(index);
  option.state |= QStyle::State_MouseOver;
  return delegate_->buttonAt(option, index, place);
}

QStyleOptionViewItem FilmView::optionOf(const QModelIndex& index) const {
  QStyleOptionViewItem option;
  initViewItemOption(&option);
  option.rect = visualRect(index);
  return option;
}

void FilmView::noteCurrent() {
  currentNumber_ = currentIndex().data(FilmModel::kNumberRole).toInt();
}

/// Puts the keyboard on the next film, or else on the last one, when the current one is not shown
/// any more. Qt does this for rows that are removed, but not for those that a new layout lacks.
void FilmView::replaceLostCurrent() {
  if (currentNumber_ == 0 || currentIndex().isValid()) return;
  focusButton(-1);
  const int last = films_->rowCount() - 1;
  const auto numberOf = [this](int row) {
    return films_->index(row, 0).data(FilmModel::kNumberRole).toInt();
  };
  int row = 0;
  while (row < last && numberOf(row) < currentNumber_) ++row;
  selectionModel()->setCurrentIndex(films_->index(row, 0), QItemSelectionModel::NoUpdate);
}

void FilmView::focusButton(int button) {
  focusedButton_ = button;
  delegate_->setFocusedButton(button);
  if (currentIndex().isValid()) update(currentIndex());
}

void FilmView::useButton(const QModelIndex& index, int button) {
  const QList<Verb> buttons = buttonsOf(index);
  if (button >= buttons.size()) return;
  const FilmId film = index.data(FilmModel::kIdRole).value<FilmId>();
  focusButton(-1);
  Q_EMIT buttonUsed(buttons[button], film);
}

void FilmView::drawBars(const QList<FilmId>& films) {
  for (const FilmId film : films) {
    const QModelIndex index = films_->indexOf(film);
    if (!index.isValid()) continue;
    viewport()->update(delegate_->barOf(optionOf(index), index));
  }
}

/// The film in front of which a drop at this place goes; 0 for the end.
FilmId FilmView::filmBehind(const QPoint& place) const {
  QModelIndex index = indexAt(place);
  if (!index.isValid()) return 0;
  const bool isBelowTheMiddle = place.y() > visualRect(index).center().y();
  if (isBelowTheMiddle) index = index.siblingAtRow(index.row() + 1);
  return index.data(FilmModel::kIdRole).value<FilmId>();
}

void FilmView::followMotionSetting() {
  const int duration = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this);
  delegate_->growth().setDuration(duration > 0 ? 250 : 0);
}

}  // namespace playerx::window
