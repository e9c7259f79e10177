#include "playerx/window/desktop/DesktopNews.h"

#include "playerx/window/desktop/Desktop.h"
#include "playerx/window/model/FilmNews.h"
#include "playerx/window/model/FilmText.h"
#include "playerx/window/model/QueueTotals.h"

namespace playerx::window {

QString doneText(const QStringList& titles) {
  if (titles.size() == 1) return DesktopNews::tr("“%1” is done.").arg(titles.first());
  return DesktopNews::tr("%n film(s) are done.", nullptr, static_cast<int>(titles.size()));
}

QString failedText(const QStringList& titles) {
  if (titles.size() == 1) return DesktopNews::tr("“%1” has failed.").arg(titles.first());
  return DesktopNews::tr("%n film(s) have failed.", nullptr, static_cast<int>(titles.size()));
}

DesktopNews::DesktopNews(const FilmNews& news, Desktop& desktop, QObject* parent)
    : QObject(parent), desktop_(desktop) {
  pause_.setSingleShot(true);
  pause_.setInterval(kGatherMs);
  connect(&pause_, &QTimer::timeout, this, &DesktopNews::tell);
  connect(&news, &FilmNews::done, this,
          [this](const Film& film) { gather(done_, preferences_.tellsWhenDone, film); });
  connect(&news, &FilmNews::failed, this,
          [this](const Film& film) { gather(failed_, preferences_.tellsWhenFailed, film); });
}

void DesktopNews::follow(const QueueTotals& totals) {
  const bool isMoving = totals.bytesPerSecond > 0;
  if (isMoving != isAwake_) {
    isAwake_ = isMoving;
    desktop_.keepAwake(isMoving);
  }
  const bool isShown = totals.isRunning && totals.size > 0;
  const int percent = isShown ? static_cast<int>(totals.arrived * 100 / totals.size) : -1;
  if (percent == percent_) return;
  percent_ = percent;
  desktop_.showProgress(percent < 0 ? -1 : percent / 100.0);
}

void DesktopNews::tell() {
  pause_.stop();
  if (!isSeen_) {
    if (!done_.isEmpty()) desktop_.notify(QStringLiteral("done"), tr("Downloads"), doneText(done_));
    if (!failed_.isEmpty()) {
      desktop_.notify(QStringLiteral("failed"), tr("Downloads"), failedText(failed_));
    }
  }
  done_.clear();
  failed_.clear();
}

void DesktopNews::gather(QStringList& titles, bool isWanted, const Film& film) {
  if (!isWanted) return;
  titles << displayTitle(film);
  if (!pause_.isActive()) pause_.start();
}

}  // namespace playerx::window
