#include "playerx/window/playback/SeekBar.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <algorithm>

#include "playerx/window/view/Shades.h"

namespace playerx::window {

namespace {

constexpr int kStep = SeekBar::kWhole / 100;

}  // namespace

SeekBar::SeekBar(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  setRange(0, kWhole);
  setSingleStep(kStep);
  setPageStep(5 * kStep);
  setFocusPolicy(Qt::StrongFocus);
  setAccessibleName(tr("Place in the film"));
}

void SeekBar::setArrived(double part) {
  if (part == arrived_) return;
  arrived_ = part;
  update();
}

QSize SeekBar::sizeHint() const {
  const int unit = fontMetrics().height() / 4;
  return {40 * unit, 6 * unit};
}

QRect SeekBar::groove() const {
  const int unit = std::max(3, fontMetrics().height() / 4);
  const int margin = 2 * unit;
  return {margin, (height() - unit) / 2, width() - 2 * margin, unit};
}

void SeekBar::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  const QRectF bar = groove();
  const qreal radius = bar.height() / 2;
  const QColor text = palette().color(QPalette::WindowText);
  const QColor ground = palette().color(QPalette::Window);
  const auto fill = [&](double part, const QColor& color) {
    QRectF rect = bar;
    rect.setWidth(bar.width() * std::clamp(part, 0.0, 1.0));
    if (isRightToLeft()) rect.moveRight(bar.right());
    painter.setBrush(color);
    painter.drawRoundedRect(rect, radius, radius);
    return isRightToLeft() ? rect.left() : rect.right();
  };
  fill(1, mixed(ground, text, 0.18));
  fill(arrived_, mixed(ground, text, 0.42));
  const QColor accent = readableOn(ground, palette().color(QPalette::Highlight), 3);
  const double place = static_cast<double>(value()) / kWhole;
  const qreal x = isEnabled() ? fill(place, accent) : bar.left();
  if (!isEnabled()) return;
  painter.setBrush(accent);
  painter.drawEllipse(QPointF(x, bar.center().y()), 2 * radius + 1, 2 * radius + 1);
  if (!hasFocus()) return;
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(text, 1.5));
  painter.drawEllipse(QPointF(x, bar.center().y()), 2 * radius + 4, 2 * radius + 4);
}

void SeekBar::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  setSliderDown(true);
  setSliderPosition(valueAt(static_cast<int>(event->position().x())));
}

void SeekBar::mouseMoveEvent(QMouseEvent* event) {
  if (isSliderDown()) setSliderPosition(valueAt(static_cast<int>(event->position().x())));
}

void SeekBar::mouseReleaseEvent(QMouseEvent*) {
  if (!isSliderDown()) return;
  setSliderDown(false);
  choose(sliderPosition());
}

void SeekBar::keyPressEvent(QKeyEvent* event) {
  const int before = value();
  QSlider::keyPressEvent(event);
  if (value() != before) choose(value());
}

int SeekBar::valueAt(int x) const {
  const QRect bar = groove();
  const int value =
      QStyle::sliderValueFromPosition(0, kWhole, x - bar.left(), bar.width(), isRightToLeft());
  return std::min(value, static_cast<int>(arrived_ * kWhole));
}

void SeekBar::choose(int value) { Q_EMIT chosen(static_cast<double>(value) / kWhole); }

}  // namespace playerx::window
