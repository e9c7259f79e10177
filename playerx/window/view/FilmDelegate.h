#pragma once

#include <QPersistentModelIndex>
#include <QStyleOptionButton>
#include <QStyledItemDelegate>
#include <optional>

#include "playerx/window/model/Verb.h"
#include "playerx/window/view/BarGrowth.h"
#include "playerx/window/view/RowLayout.h"

namespace playerx::window {

struct Shades;

/// Draws a film's row: title and state, the bar, numbers or a failure's reason, and the row's
/// buttons. Used on the UI thread.
class FilmDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  explicit FilmDelegate(QObject* parent = nullptr);

  /// The button of the current row that the keyboard is on; -1 for the row itself.
  void setFocusedButton(int button) { focusedButton_ = button; }

  /// The button of a row that is pressed with the mouse; -1 for none.
  void setPressedButton(const QModelIndex& index, int button);

  /// The button at a place in the row; nullopt outside the buttons.
  std::optional<int> buttonAt(const QStyleOptionViewItem& option, const QModelIndex& index,
                              const QPoint& place) const;

  /// The row's bar, to draw it alone.
  QRect barOf(const QStyleOptionViewItem& option, const QModelIndex& index) const;

  BarGrowth& growth() { return growth_; }

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 private:
  struct Row;

  Row rowOf(const QStyleOptionViewItem& option, const QModelIndex& index) const;
  void paintGround(QPainter& painter, const Row& row) const;
  void paintText(QPainter& painter, const Row& row) const;
  void paintDetail(QPainter& painter, const Row& row) const;
  void paintBar(QPainter& painter, const Row& row) const;
  void paintButtons(QPainter& painter, const Row& row) const;
  void paintLabel(QPainter& painter, const Row& row, const QStyleOptionButton& button) const;
  const RowMetrics& metricsFor(const QFont& font) const;

  mutable BarGrowth growth_;
  mutable std::optional<RowMetrics> metrics_;
  mutable QFont metricsFont_;
  int focusedButton_ = -1;
  QPersistentModelIndex pressedRow_;
  int pressedButton_ = -1;
};

}  // namespace playerx::window
