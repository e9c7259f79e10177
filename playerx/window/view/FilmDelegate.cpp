#include "playerx/window/view/FilmDelegate.h"

#include <QApplication>
#include <QPainter>
#include <QTextLayout>

#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/FilmText.h"
#include "playerx/window/view/Icons.h"
#include "playerx/window/view/RowButtons.h"
#include "playerx/window/view/Shades.h"

namespace playerx::window {

/// Everything that is known of a row while it is drawn.
struct FilmDelegate::Row {
  const QStyleOptionViewItem& option;
  QModelIndex index;
  Film film;
  const RowMetrics& metrics;
  QString state;
  QList<Verb> buttons;
  RowLayout layout;
  Shades shades;
};

namespace {

constexpr QStyle::State kPointedAt = QStyle::State_MouseOver | QStyle::State_Selected;

bool hasBar(const Film& film) {
  if (film.state == FilmState::kDone || film.state == FilmState::kFailed) return false;
  return isRunning(film.state) || arrivedPart(film) > 0;
}

QSize buttonSize(Verb verb, const RowMetrics& metrics) {
  const int text = QFontMetrics(metrics.detailFont).horizontalAdvance(plainText(verb));
  const int icon = metrics.detailHeight;
  return {text + icon + 6 * metrics.unit, metrics.buttonHeight};
}

QString elided(const QString& text, const QFont& font, int width) {
  return QFontMetrics(font).elidedText(text, Qt::ElideRight, width);
}

/// A text of one or two lines, of which the second is elided.
QString inTwoLines(const QString& text, const QFont& font, int width) {
  QTextLayout layout(text, font);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  if (line.isValid()) line.setLineWidth(width);
  layout.endLayout();
  const int end = line.isValid() ? line.textLength() : 0;
  if (end >= text.size()) return text;
  return text.left(end).trimmed() + QLatin1Char('\n') + elided(text.mid(end), font, width);
}

}  // namespace

FilmDelegate::FilmDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

void FilmDelegate::setPressedButton(const QModelIndex& index, int button) {
  pressedRow_ = index;
  pressedButton_ = button;
}

std::optional<int> FilmDelegate::buttonAt(const QStyleOptionViewItem& option,
                                          const QModelIndex& index, const QPoint& place) const {
  const Row row = rowOf(option, index);
  for (qsizetype i = 0; i < row.layout.buttons.size(); ++i) {
    if (row.layout.buttons[i].contains(place)) return static_cast<int>(i);
  }
  return std::nullopt;
}

QRect FilmDelegate::barOf(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  return rowOf(option, index).layout.bar;
}

void FilmDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
  const Row row = rowOf(option, index);
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  paintGround(*painter, row);
  paintText(*painter, row);
  if (!row.layout.bar.isNull()) paintBar(*painter, row);
  paintButtons(*painter, row);
  painter->restore();
}

QSize FilmDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
  return {0, metricsFor(option.font).rowHeight};
}

FilmDelegate::Row FilmDelegate::rowOf(const QStyleOptionViewItem& option,
                                      const QModelIndex& index) const {
  const bool isSelected = option.state.testFlag(QStyle::State_Selected);
  const QPalette::ColorGroup group =
      option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
  Row row{
      option, index, index.data(FilmModel::kFilmRole).value<Film>(), metricsFor(option.font), {},
      {},     {},    Shades::of(option.palette, isSelected, group)};
  row.state = stateText(row.film);
  const bool showsButtons = (option.state & kPointedAt) != 0 || showsButtonsAlways(row.film);
  if (showsButtons) row.buttons = rowButtonsOf(row.film);

  RowContent content;
  // One more pixel: the advance is rounded, and a rounded-down one would cut the last letter.
  content.stateWidth = QFontMetrics(row.metrics.detailFont).horizontalAdvance(row.state) + 1;
  content.hasBar = hasBar(row.film);
  for (const Verb verb : row.buttons) content.buttons << buttonSize(verb, row.metrics);
  row.layout = layOutRow(option.rect, row.metrics, content, option.direction);
  return row;
}

void FilmDelegate::paintGround(QPainter& painter, const Row& row) const {
  const QRect& rect = row.option.rect;
  painter.fillRect(rect, row.shades.ground);
  painter.fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), row.shades.line);
  if (isRunning(row.film.state)) painter.fillRect(row.layout.edge, row.shades.accent);
  const bool hasFocus = row.option.state.testFlag(QStyle::State_HasFocus);
  if (!hasFocus || focusedButton_ >= 0) return;
  painter.setPen(QPen(row.shades.accent, 2));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRectF(rect).adjusted(2, 2, -2, -3), row.metrics.unit, row.metrics.unit);
}

void FilmDelegate::paintText(QPainter& painter, const Row& row) const {
  const RowLayout& layout = row.layout;
  const bool isFailed = row.film.state == FilmState::kFailed;
  const Qt::Alignment start =
      QStyle::visualAlignment(row.option.direction, Qt::AlignLeft) | Qt::AlignVCenter;
  const Qt::Alignment end =
      QStyle::visualAlignment(row.option.direction, Qt::AlignRight) | Qt::AlignVCenter;

  painter.setFont(row.metrics.titleFont);
  painter.setPen(row.shades.detail);
  const QString number = row.index.data(FilmModel::kNumberRole).toString();
  painter.drawText(layout.title, static_cast<int>(start | Qt::TextSingleLine), number);
  const QFontMetrics metrics(row.metrics.titleFont);
  const int indent = metrics.horizontalAdvance(number) + 2 * row.metrics.unit;
  const QRect title = QStyle::visualRect(row.option.direction, layout.title,
                                         layout.title.adjusted(indent, 0, 0, 0));
  painter.setPen(row.shades.title);
  painter.drawText(title, static_cast<int>(start | Qt::TextSingleLine),
                   elided(displayTitle(row.film), row.metrics.titleFont, title.width()));

  painter.setFont(row.metrics.detailFont);
  painter.setPen(isFailed ? row.shades.warning : row.shades.detail);
  painter.drawText(layout.state, static_cast<int>(end | Qt::TextSingleLine),
                   elided(row.state, row.metrics.detailFont, layout.state.width()));
  paintDetail(painter, row);
}

/// A row without a bar has room for a second line: for the whole reason of a failure.
void FilmDelegate::paintDetail(QPainter& painter, const Row& row) const {
  const QString detail = detailText(row.film, QDateTime::currentDateTime());
  const QFont& font = row.metrics.detailFont;
  QRect place = row.layout.detail;
  const bool isLong = QFontMetrics(font).horizontalAdvance(detail) > place.width();
  Qt::Alignment start = QStyle::visualAlignment(row.option.direction, Qt::AlignLeft);
  QString text = elided(detail, font, place.width());
  if (isLong && row.layout.bar.isNull()) {
    text = inTwoLines(detail, font, place.width());
    place.setHeight(2 * row.metrics.detailHeight);
  } else {
    start |= Qt::AlignVCenter;
  }
  painter.setPen(row.shades.detail);
  painter.drawText(place, static_cast<int>(start), text);
}

void FilmDelegate::paintBar(QPainter& painter, const Row& row) const {
  const QRectF bar = row.layout.bar;
  const qreal radius = bar.height() / 2;
  painter.setPen(Qt::NoPen);
  painter.setBrush(row.shades.groove);
  painter.drawRoundedRect(bar, radius, radius);
  const double part = growth_.shown(row.film);
  if (part <= 0) return;
  QRectF filled = bar;
  filled.setWidth(std::max(bar.height(), bar.width() * part));
  if (row.option.direction == Qt::RightToLeft) filled.moveRight(bar.right());
  painter.setBrush(isRunning(row.film.state) ? row.shades.accent : row.shades.idleBar);
  painter.drawRoundedRect(filled, radius, radius);
}

void FilmDelegate::paintButtons(QPainter& painter, const Row& row) const {
  const QWidget* const widget = row.option.widget;
  const QStyle* const style = widget != nullptr ? widget->style() : QApplication::style();
  const bool isCurrent = row.option.state.testFlag(QStyle::State_HasFocus);
  for (qsizetype i = 0; i < row.buttons.size(); ++i) {
    QStyleOptionButton button;
    button.initFrom(widget);
    button.rect = row.layout.buttons[i];
    button.text = plainText(row.buttons[i]);
    button.icon = themedIcon(factsOf(row.buttons[i]).icon);
    button.state = QStyle::State_Enabled | QStyle::State_Raised;
    button.state |= row.option.state & QStyle::State_Active;
    if (pressedRow_ == row.index && pressedButton_ == i) {
      button.state ^= QStyle::State_Raised | QStyle::State_Sunken;
    }
    style->drawControl(QStyle::CE_PushButtonBevel, &button, &painter, nullptr);
    paintLabel(painter, row, button);
    if (isCurrent && focusedButton_ == i) {
      painter.setPen(QPen(row.shades.accent, 2));
      painter.setBrush(Qt::NoBrush);
      painter.drawRoundedRect(QRectF(button.rect).adjusted(1, 1, -1, -1), 3, 3);
    }
  }
}

/// Icon and text in the middle of a button, in the order of reading: styles leave a gap between
/// them where text runs from right to left.
void FilmDelegate::paintLabel(QPainter& painter, const Row& row,
                              const QStyleOptionButton& button) const {
  const QFontMetrics metrics(row.metrics.detailFont);
  const int text = metrics.horizontalAdvance(button.text) + 1;
  const int icon = row.metrics.detailHeight;
  const int gap = row.metrics.unit;
  QRect label(0, 0, icon + gap + text, button.rect.height());
  label.moveCenter(button.rect.center());
  const auto placed = [&](const QRect& part) {
    return QStyle::visualRect(row.option.direction, label, part);
  };
  const QRect iconRect = placed({label.left(), label.center().y() - icon / 2, icon, icon});
  button.icon.paint(&painter, iconRect);
  painter.setFont(row.metrics.detailFont);
  painter.setPen(button.palette.color(QPalette::ButtonText));
  painter.drawText(placed({label.left() + icon + gap, label.top(), text, label.height()}),
                   Qt::AlignVCenter | Qt::TextSingleLine, button.text);
}

const RowMetrics& FilmDelegate::metricsFor(const QFont& font) const {
  if (!metrics_ || metricsFont_ != font) {
    metricsFont_ = font;
    metrics_.emplace(font);
  }
  return *metrics_;
}

}  // namespace playerx::window
