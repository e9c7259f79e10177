#include "playerx/window/view/StatusStrip.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>

#include "playerx/window/model/FilmText.h"
#include "playerx/window/model/Numbers.h"

namespace playerx::window {

namespace {

struct StatusText {
  Q_DECLARE_TR_FUNCTIONS(playerx::window::StatusText)
};

QString timeText(const QueueTotals& totals) {
  if (totals.bytesPerSecond == 0 || !totals.isWhole) return {};
  const quint64 left = totals.size - std::min(totals.size, totals.arrived);
  const quint64 seconds = left / totals.bytesPerSecond;
  if (seconds < 60) return StatusText::tr("less than a minute");
  return StatusText::tr("about %1").arg(roughDurationText(seconds));
}

}  // namespace

QString totalsText(const QueueTotals& totals, bool isPaused) {
  if (totals.films == 0) return {};
  //: %1 of %n films are done.
  QStringList facts = {StatusText::tr("%1 of %n film(s)", nullptr, totals.films).arg(totals.done)};
  if (totals.size > 0) facts << sizeOfText(totals.arrived, totals.size);
  if (isPaused && totals.unfinished > 0) return sideBySide(facts << StatusText::tr("paused"));
  if (totals.bytesPerSecond > 0) facts << speedText(totals.bytesPerSecond);
  return sideBySide(facts << timeText(totals));
}

StatusStrip::StatusStrip(QWidget* parent)
    : QWidget(parent), totals_(new QLabel(this)), room_(new QLabel(this)) {
  totals_->setAccessibleName(tr("Progress of the whole queue"));
  room_->setAccessibleName(tr("Free space"));
  room_->setTextFormat(Qt::PlainText);
  totals_->setMinimumWidth(1);  // a narrow window cuts it
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(16, 4, 16, 4);
  row->setSpacing(16);
  row->addWidget(totals_);
  row->addStretch(1);
  row->addWidget(room_);
}

void StatusStrip::showTotals(const QueueTotals& totals, bool isPaused) {
  totals_->setText(totalsText(totals, isPaused));
}

void StatusStrip::showRoom(const QString& folder, quint64 freeBytes) {
  const QString name = cleanText(QDir(folder).dirName());
  //: Free space; %1 is a size, %2 the name of a folder.
  room_->setText(tr("%1 free in %2").arg(sizeText(freeBytes), name));
  room_->setToolTip(cleanText(QDir::toNativeSeparators(folder)));
}

void StatusStrip::announce(const QString& sentence) {
  if (!QAccessible::isActive()) return;
  setAccessibleDescription(sentence);
  QAccessibleEvent alert(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&alert);
}

}  // namespace playerx::window
