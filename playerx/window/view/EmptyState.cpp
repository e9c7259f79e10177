#include "playerx/window/view/EmptyState.h"

#include <QAction>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMimeData>
#include <QVBoxLayout>

#include "playerx/window/inputs/PastedInputs.h"
#include "playerx/window/view/Icons.h"
#include "playerx/window/view/Shades.h"
#include "playerx/window/view/TextButton.h"

namespace playerx::window {

namespace {

constexpr double kTitleScale = 1.5;

}  // namespace

EmptyState::EmptyState(QAction* add, QWidget* parent)
    : QWidget(parent),
      add_(add),
      picture_(new QLabel(this)),
      title_(new QLabel(this)),
      hint_(new QLabel(this)),
      button_(new TextButton(this)) {
  setAcceptDrops(true);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::Base);
  picture_->setAlignment(Qt::AlignCenter);
  title_->setAlignment(Qt::AlignCenter);
  hint_->setAlignment(Qt::AlignCenter);
  hint_->setWordWrap(true);

  auto* const column = new QVBoxLayout(this);
  column->setSpacing(8);
  column->addStretch(2);
  column->addWidget(picture_);
  column->addSpacing(8);
  column->addWidget(title_);
  column->addWidget(hint_);
  column->addSpacing(16);
  column->addWidget(button_, 0, Qt::AlignHCenter);
  column->addStretch(3);

  connect(button_, &QPushButton::clicked, this, [this] {
    if (isFiltered_) {
      Q_EMIT filterDropped();
    } else {
      add_->trigger();
    }
  });
  setWords();
  setLook();
}

void EmptyState::setFiltered(bool isFiltered) {
  isFiltered_ = isFiltered;
  setWords();
}

void EmptyState::dragEnterEvent(QDragEnterEvent* event) {
  const QMimeData& data = *event->mimeData();
  if (data.hasUrls() || data.hasText()) event->acceptProposedAction();
}

void EmptyState::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  Q_EMIT inputsDropped(inputsInData(*event->mimeData()).inputs);
}

void EmptyState::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::LanguageChange) setWords();
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) setLook();
}

void EmptyState::setWords() {
  picture_->setVisible(!isFiltered_);
  title_->setText(isFiltered_ ? tr("No film fits the filter") : tr("Nothing to download yet"));
  hint_->setText(isFiltered_ ? tr("Other films are in the list, but not shown.")
                             : tr("Paste an address, or drop a link or a ticket here"));
  button_->setText(isFiltered_ ? tr("Show all films") : tr("Add addresses…"));
}

void EmptyState::setLook() {
  QFont large = font();
  if (large.pointSizeF() > 0) large.setPointSizeF(large.pointSizeF() * kTitleScale);
  large.setWeight(QFont::DemiBold);
  if (title_->font() != large) title_->setFont(large);
  const int side = 5 * fontMetrics().height();
  picture_->setPixmap(applicationIcon().pixmap(QSize(side, side), devicePixelRatioF()));
  QPalette quiet = palette();
  const QColor base = quiet.color(QPalette::Base);
  const QColor detail = readableOn(base, mixed(quiet.color(QPalette::Text), base, 0.4));
  quiet.setColor(QPalette::Text, detail);
  hint_->setPalette(quiet);
}

}  // namespace playerx::window
