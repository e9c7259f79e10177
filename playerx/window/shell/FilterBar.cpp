#include "playerx/window/shell/FilterBar.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>

#include "playerx/window/model/FilmFilter.h"
#include "playerx/window/view/Icons.h"
#include "playerx/window/view/Shades.h"

namespace playerx::window {

namespace {

/// With the tool bar's own margin, as far from the edge as the text of the rows.
constexpr int kEnd = 12;

}  // namespace

FilterBar::FilterBar(FilmFilter& films, QWidget* parent)
    : QWidget(parent), films_(films), groups_(new QComboBox(this)), words_(new QLineEdit(this)) {
  groups_->addItem(tr("All"), FilmFilter::kAll);
  groups_->addItem(tr("Unfinished"), FilmFilter::kUnfinished);
  groups_->addItem(tr("Done"), FilmFilter::kDone);
  groups_->addItem(tr("Failed"), FilmFilter::kFailed);
  groups_->setAccessibleName(tr("Which films to show"));
  groups_->setToolTip(tr("Which films to show"));
  words_->setPlaceholderText(tr("Filter"));
  words_->setAccessibleName(tr("Filter"));
  words_->setClearButtonEnabled(true);
  words_->addAction(themedIcon(QStringLiteral("edit-find")), QLineEdit::LeadingPosition);
  words_->setMaximumWidth(28 * fontMetrics().averageCharWidth());
  words_->installEventFilter(this);
  setLook();
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(8);
  row->addStretch(1);
  row->addWidget(groups_);
  row->addWidget(words_);
  row->addSpacing(kEnd);
  connect(words_, &QLineEdit::textChanged, this, [this](const QString& text) {
    films_.setText(text);
    Q_EMIT changed();
  });
  connect(groups_, &QComboBox::currentIndexChanged, this, [this] {
    films_.setGroup(static_cast<FilmFilter::Group>(group()));
    Q_EMIT changed();
  });
}

/// A palette of the desktop may have no readable colour of its own for a placeholder.
void FilterBar::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) setLook();
}

void FilterBar::setLook() {
  QPalette colors = palette();
  const QColor base = colors.color(QPalette::Base);
  const QColor quiet = mixed(colors.color(QPalette::Text), base, 0.4);
  colors.setColor(QPalette::PlaceholderText, readableOn(base, quiet));
  words_->setPalette(colors);
}

void FilterBar::edit() {
  words_->setFocus(Qt::ShortcutFocusReason);
  words_->selectAll();
}

void FilterBar::clear() {
  words_->clear();
  setGroup(FilmFilter::kAll);
}

int FilterBar::group() const { return groups_->currentData().toInt(); }

void FilterBar::setGroup(int group) {
  const int index = groups_->findData(group);
  if (index >= 0) groups_->setCurrentIndex(index);
}

bool FilterBar::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Escape) words_->clear();
    if (key == Qt::Key_Escape || key == Qt::Key_Down || key == Qt::Key_Return) {
      Q_EMIT left();
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace playerx::window
