#pragma once

#include <QTreeView>

#include "playerx/window/model/Film.h"
#include "playerx/window/model/Verb.h"

namespace playerx::window {

class FilmDelegate;
class FilmFilter;

/// The list of downloads. A row's buttons are reached with the mouse, or with the arrow keys from
/// the row. Used on the UI thread.
class FilmView : public QTreeView {
  Q_OBJECT

 public:
  explicit FilmView(QWidget* parent = nullptr);

  /// Shows the films; not owned.
  void setFilms(FilmFilter* films);

  /// Ids of the selected films in the order of the list.
  QList<FilmId> selectedFilms() const;

  /// Selects these films and no others; brings the first one into sight.
  void selectFilms(const QList<FilmId>& ids);

  /// The button of the current row that the keyboard is on; -1 for the row itself.
  int focusedButton() const { return focusedButton_; }

 Q_SIGNALS:
  /// A button in the row of this film was used.
  void buttonUsed(playerx::window::Verb verb, playerx::window::FilmId film);

  void selectionMoved();

  /// Films were dropped in front of the film `before`; 0: at the end.
  void filmsDropped(const QList<playerx::window::FilmId>& films, playerx::window::FilmId before);

  /// Addresses or tickets were dropped.
  void inputsDropped(const QStringList& inputs);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool event(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& left) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  QList<Verb> buttonsOf(const QModelIndex& index) const;
  std::optional<int> buttonAt(const QModelIndex& index, const QPoint& place) const;
  QStyleOptionViewItem optionOf(const QModelIndex& index) const;
  void noteCurrent();
  void replaceLostCurrent();
  void focusButton(int button);
  void useButton(const QModelIndex& index, int button);
  void drawBars(const QList<FilmId>& films);
  FilmId filmBehind(const QPoint& place) const;
  void followMotionSetting();

  FilmFilter* films_ = nullptr;  // not owned
  FilmDelegate* delegate_;       // child
  int focusedButton_ = -1;
  int currentNumber_ = 0;  // in the queue, from 1 on, before a new layout; 0 without a current row
  QPersistentModelIndex pressedRow_;
  int pressedButton_ = -1;
};

}  // namespace playerx::window
