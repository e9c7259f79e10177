#include "playerx/window/shell/WindowPages.h"

#include <QMainWindow>
#include <QMenuBar>
#include <QStackedWidget>
#include <QToolBar>

#include "playerx/window/playback/MiniPlayer.h"
#include "playerx/window/playback/WatchingPage.h"
#include "playerx/window/shell/DownloadsPage.h"
#include "playerx/window/view/StatusStrip.h"

namespace playerx::window {

WindowPages::WindowPages(const Parts& parts)
    : QObject(&parts.window), parts_(parts), stack_(new QStackedWidget(&parts.window)) {
  stack_->addWidget(&parts.downloads);
  stack_->addWidget(&parts.watching);
  connect(&parts.watching, &WatchingPage::backWanted, this, &WindowPages::goBack);
  connect(&parts.watching, &WatchingPage::fullScreenToggled, this,
          [this] { setFullScreen(!parts_.window.isFullScreen()); });
  connect(&parts.miniPlayer, &MiniPlayer::pictureWanted, this, &WindowPages::showWatching);
}

QWidget* WindowPages::widget() const { return stack_; }

bool WindowPages::isWatching() const { return stack_->currentWidget() == &parts_.watching; }

void WindowPages::showDownloads() {
  if (parts_.window.isFullScreen()) setFullScreen(false);
  stack_->setCurrentWidget(&parts_.downloads);
  parts_.miniPlayer.setShown(true);
  parts_.toolBar.show();
  parts_.status.show();
  parts_.downloads.setFocus();
  Q_EMIT turned();
}

void WindowPages::showWatching() {
  stack_->setCurrentWidget(&parts_.watching);
  parts_.miniPlayer.setShown(false);
  parts_.toolBar.hide();
  parts_.status.hide();
  parts_.watching.setFocus();
  Q_EMIT turned();
}

void WindowPages::setFullScreen(bool isFull) {
  if (isFull && !isWatching()) showWatching();
  QMainWindow& window = parts_.window;
  window.menuBar()->setVisible(!isFull);
  window.setWindowState(isFull ? window.windowState() | Qt::WindowFullScreen
                               : window.windowState() & ~Qt::WindowFullScreen);
  parts_.watching.setFullScreen(isFull);
  Q_EMIT turned();
}

void WindowPages::goBack() {
  parts_.window.isFullScreen() ? setFullScreen(false) : showDownloads();
}

}  // namespace playerx::window
