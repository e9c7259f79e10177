#include "playerx/window/view/MessageStrip.h"

#include <QAccessible>
#include <QDeadlineTimer>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QToolButton>
#include <utility>

#include "playerx/window/view/Icons.h"
#include "playerx/window/view/Shades.h"
#include "playerx/window/view/TextButton.h"

namespace playerx::window {

namespace {

constexpr int kHighestNumber = 999;

/// A text is cut here: laying out a long one takes long.
constexpr qsizetype kLongestText = 500;
constexpr qsizetype kLongestWord = 30;

QString shortened(const QString& text) {
  if (text.size() <= kLongestText) return text;
  const bool cutsPair = text[kLongestText - 1].isHighSurrogate();
  return text.left(cutsPair ? kLongestText - 1 : kLongestText) + QChar(0x2026);
}

/// The label breaks lines between words only, and would widen the window for a long address.
QString breakable(const QString& text) {
  constexpr char16_t kZeroWidthSpace = 0x200B;
  QString result;
  qsizetype word = 0;
  for (const QChar c : text) {
    word = c.isSpace() ? 0 : word + 1;
    result += c;
    const bool isWhole = !c.isHighSurrogate();
    if (isWhole && word > 0 && word % kLongestWord == 0) result += QChar(kZeroWidthSpace);
  }
  return result;
}

qint64 nowMs() { return QDeadlineTimer::current().deadline(); }

}  // namespace

MessageStrip::MessageStrip(QWidget* parent)
    : QWidget(parent),
      icon_(new QLabel(this)),
      text_(new QLabel(this)),
      number_(new QSpinBox(this)),
      more_(new QLabel(this)),
      close_(new QToolButton(this)),
      row_(new QHBoxLayout(this)) {
  setAutoFillBackground(true);
  number_->setRange(0, kHighestNumber);
  number_->setAccessibleName(tr("Number"));
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  close_->setAutoRaise(true);
  close_->setIcon(ownIcon(QStringLiteral("list-remove")));
  close_->setAccessibleName(tr("Close the message"));
  close_->setToolTip(tr("Close the message"));
  row_->setContentsMargins(16, 8, 8, 8);
  row_->setSpacing(8);
  row_->addWidget(icon_);
  row_->addWidget(text_, 1);
  row_->addWidget(number_);
  row_->addWidget(more_);
  row_->addWidget(close_);
  timer_.setSingleShot(true);
  connect(close_, &QToolButton::clicked, this, &MessageStrip::close);
  connect(&timer_, &QTimer::timeout, this, &MessageStrip::expire);
  hide();
  setLook();
}

void MessageStrip::show(StripMessage message) {
  if (!message.topic.isEmpty()) end(message.topic);
  deadlines_.append(message.lifetimeMs > 0 ? nowMs() + message.lifetimeMs : 0);
  message.text = shortened(message.text);
  messages_.append(std::move(message));
  showLast();
  QAccessibleEvent alert(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&alert);
}

void MessageStrip::end(const QString& topic) {
  for (qsizetype i = 0; i < messages_.size(); ++i) {
    if (messages_[i].topic != topic) continue;
    const StripMessage gone = messages_.takeAt(i);
    deadlines_.removeAt(i);
    showLast();
    if (gone.ended) gone.ended();
    return;
  }
}

QString MessageStrip::text() const {
  return messages_.isEmpty() ? QString() : messages_.last().text;
}

int MessageStrip::number() const { return number_->value(); }

void MessageStrip::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) setLook();
}

void MessageStrip::showLast() {
  qDeleteAll(std::exchange(buttons_, {}));
  setVisible(!messages_.isEmpty());
  if (messages_.isEmpty()) return timer_.stop();
  const StripMessage& message = messages_.last();
  text_->setText(breakable(message.text));
  setAccessibleName(message.text);
  number_->setVisible(message.asksNumber);
  more_->setVisible(messages_.size() > 1);
  more_->setText(tr("%n more", nullptr, static_cast<int>(messages_.size()) - 1));
  for (qsizetype i = 0; i < message.answers.size(); ++i) {
    auto* const button = new TextButton(message.answers[i].text, this);
    connect(button, &QPushButton::clicked, this, [this, i] { answer(static_cast<int>(i)); });
    row_->insertWidget(3 + static_cast<int>(i), button);
    buttons_.append(button);
  }
  setLook();
  expire();
}

void MessageStrip::answer(int answer) {
  const StripMessage message = messages_.takeLast();
  deadlines_.removeLast();
  // The button that is being clicked must live until its signal has returned.
  for (QWidget* const button : std::exchange(buttons_, {})) button->deleteLater();
  showLast();
  message.answers[answer].use();
}

void MessageStrip::close() {
  const StripMessage message = messages_.takeLast();
  deadlines_.removeLast();
  showLast();
  if (message.ended) message.ended();
}

/// Ends messages whose time is over, then waits for the next one.
void MessageStrip::expire() {
  qint64 next = 0;
  for (qsizetype i = 0; i < messages_.size(); ++i) {
    if (deadlines_[i] == 0) continue;
    if (deadlines_[i] <= nowMs()) {
      const StripMessage gone = messages_.takeAt(i);
      deadlines_.removeAt(i);
      showLast();
      if (gone.ended) gone.ended();
      return;
    }
    if (next == 0 || deadlines_[i] < next) next = deadlines_[i];
  }
  if (next > 0) timer_.start(static_cast<int>(next - nowMs()) + 1);
}

void MessageStrip::setLook() {
  const bool isWarning = !messages_.isEmpty() && messages_.last().isWarning;
  const QPalette base = parentWidget() != nullptr ? parentWidget()->palette() : palette();
  const Shades shades = Shades::of(base, false, QPalette::Active);
  QPalette tinted = base;
  const QColor tone = isWarning ? shades.warning : base.color(QPalette::Highlight);
  const QColor ground = mixed(base.color(QPalette::Base), tone, 0.14);
  tinted.setColor(QPalette::Window, ground);
  tinted.setColor(QPalette::WindowText, readableOn(ground, base.color(QPalette::Text), 7));
  if (palette() != tinted) setPalette(tinted);
  const int side = fontMetrics().height() + 4;
  const QString name =
      isWarning ? QStringLiteral("dialog-warning") : QStringLiteral("dialog-information");
  icon_->setPixmap(ownIcon(name).pixmap(QSize(side, side), devicePixelRatioF()));
}

}  // namespace playerx::window
