#pragma once

#include <QFont>
#include <QList>
#include <QRect>
#include <QSize>

namespace playerx::window {

/// Measures of a row, all following the font.
struct RowMetrics {
  explicit RowMetrics(const QFont& font);

  QFont titleFont;
  QFont detailFont;
  int unit = 4;  ///< the smallest space: 4 pixels with the usual font
  int titleHeight = 0;
  int detailHeight = 0;
  int rowHeight = 0;
  int buttonHeight = 0;
};

/// Where the parts of a row go.
struct RowLayout {
  QRect edge;  ///< the accent of the running film
  QRect title;
  QRect state;
  QRect bar;     ///< null in a row without one
  QRect detail;  ///< next to the buttons, when there are any
  QList<QRect> buttons;
};

/// What a row has to hold.
struct RowContent {
  int stateWidth = 0;
  bool hasBar = false;
  QList<QSize> buttons;  ///< first to last as read
};

/// Lays a row out in `row`, mirrored when text runs from right to left. The state keeps its width
/// but never takes more than half of the row.
RowLayout layOutRow(const QRect& row, const RowMetrics& metrics, const RowContent& content,
                    Qt::LayoutDirection direction);

}  // namespace playerx::window
