#include "playerx/window/view/RowLayout.h"

#include <QFontMetrics>
#include <QStyle>
#include <algorithm>

namespace playerx::window {

namespace {

constexpr double kDetailScale = 0.92;

QFont scaled(QFont font, double factor) {
  if (font.pointSizeF() > 0) {
    font.setPointSizeF(font.pointSizeF() * factor);
  } else {
    font.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * factor)));
  }
  return font;
}

}  // namespace

RowMetrics::RowMetrics(const QFont& font)
    : titleFont(font), detailFont(scaled(font, kDetailScale)) {
  titleFont.setWeight(QFont::DemiBold);
  titleHeight = QFontMetrics(titleFont).height();
  detailHeight = QFontMetrics(detailFont).height();
  unit = std::max(3, (QFontMetrics(font).height() + 2) / 4);
  buttonHeight = detailHeight + 2 * unit;
  rowHeight = titleHeight + buttonHeight + 8 * unit;
}

RowLayout layOutRow(const QRect& row, const RowMetrics& metrics, const RowContent& content,
                    Qt::LayoutDirection direction) {
  const int unit = metrics.unit;
  const QRect inner = row.adjusted(4 * unit, 0, -4 * unit, 0);
  RowLayout layout;
  layout.edge = QRect(row.left(), row.top(), unit, row.height());

  // With a bar: title, bar, detail; without: title and detail, closer together.
  const int gap = content.hasBar ? 4 * unit : unit / 2;
  const int height = metrics.titleHeight + gap + metrics.buttonHeight;
  const int top = row.top() + (row.height() - height) / 2;
  const int stateWidth = std::min(content.stateWidth, inner.width() / 2);
  layout.state = QRect(inner.right() + 1 - stateWidth, top, stateWidth, metrics.titleHeight);
  layout.title =
      QRect(inner.left(), top, inner.width() - stateWidth - 4 * unit, metrics.titleHeight);
  if (content.hasBar) {
    layout.bar = QRect(inner.left(), layout.title.bottom() + 1 + 2 * unit, inner.width(), unit);
  }

  const int line = top + metrics.titleHeight + gap;
  int end = inner.right() + 1;
  for (auto size = content.buttons.crbegin(); size != content.buttons.crend(); ++size) {
    end -= size->width();
    layout.buttons.prepend(QRect(end, line, size->width(), metrics.buttonHeight));
    end -= 2 * unit;
  }
  layout.detail = QRect(inner.left(), line, std::max(0, end - inner.left()), metrics.buttonHeight);

  if (direction == Qt::RightToLeft) {
    const auto mirror = [&row](QRect& part) {
      if (!part.isNull()) part = QStyle::visualRect(Qt::RightToLeft, row, part);
    };
    for (QRect* const part :
         {&layout.edge, &layout.title, &layout.state, &layout.bar, &layout.detail}) {
      mirror(*part);
    }
    for (QRect& button : layout.buttons) mirror(button);
  }
  return layout;
}

}  // namespace playerx::window
