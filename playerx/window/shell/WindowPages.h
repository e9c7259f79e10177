#pragma once

#include <QObject>

class QMainWindow;
class QStackedWidget;
class QToolBar;
class QWidget;

namespace playerx::window {

class DownloadsPage;
class MiniPlayer;
class StatusStrip;
class WatchingPage;

/// The window's two pages, and what is seen beside each of them. Used on the UI thread.
class WindowPages : public QObject {
  Q_OBJECT

 public:
  /// Not owned; they outlive this.
  struct Parts {
    QMainWindow& window;
    DownloadsPage& downloads;
    WatchingPage& watching;
    MiniPlayer& miniPlayer;
    QToolBar& toolBar;
    StatusStrip& status;
  };

  explicit WindowPages(const Parts& parts);

  /// Holds the pages; belongs to the window.
  QWidget* widget() const;

  void showDownloads();
  void showWatching();

  /// The film fills the screen, without the menu bar; or the window is as it was before.
  void setFullScreen(bool isFull);

  /// Leaves the full screen, or else the film.
  void goBack();

  bool isWatching() const;

 Q_SIGNALS:
  /// Another page is shown, or the same one on the full screen.
  void turned();

 private:
  const Parts parts_;
  QStackedWidget* const stack_;
};

}  // namespace playerx::window
