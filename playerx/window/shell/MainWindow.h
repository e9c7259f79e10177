#pragma once

#include <QMainWindow>

#include "playerx/window/model/UpdateBatcher.h"
#include "playerx/window/model/Verb.h"
#include "playerx/window/playback/FilmPlayer.h"

namespace playerx::window {

class ActionSet;
class ClipboardInputs;
class Desktop;
class DesktopNews;
class DownloadsPage;
class FilmCommands;
class FilmFilter;
class FilmModel;
class FilmNews;
class FilterBar;
class MessageStrip;
class MiniPlayer;
class PreferencesController;
class QueueQuestions;
class StatusStrip;
class ToolBar;
class Tray;
class Watching;
class WatchingPage;
class WindowClosing;
class WindowDialogs;
class WindowMemory;
class WindowPages;
class WindowQueue;

/// The player's window: the list of downloads, the film that is watched, and what is done with
/// them. Used on the UI thread.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  /// Not owned; they outlive the window. `player` is null when this build cannot show films.
  struct Parts {
    WindowQueue& queue;
    WindowMemory& memory;
    Desktop& desktop;
    FilmPlayer* player;
  };

  explicit MainWindow(const Parts& parts);
  ~MainWindow() override;

  /// Whether the queue was paused when the window was closed last.
  bool wasPaused() const;

  /// Queues what a person or another process hands over, and comes to the front.
  void take(const QStringList& inputs);
  void comeToFront();

  /// Closes without asking.
  void quit();

  void showDownloads();
  void showWatching();

 Q_SIGNALS:
  /// The queue, as it is now, is on the screen.
  void queueShown();

  /// The window was closed for good.
  void closed();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void build();
  void connectQueue();
  void connectActions();
  void connectViews();
  void connectDesktop(Desktop& desktop);
  void apply(const QueueUpdate& update);
  void refreshActions();
  void carryOut(Verb verb);
  void play(FilmId film);
  void restore();
  void remember();

  WindowQueue& queue_;
  WindowMemory& memory_;
  FilmPlayer* const player_;

  FilmModel* const films_;
  FilmFilter* const filter_;
  UpdateBatcher* const batcher_;
  ActionSet* const actions_;
  DownloadsPage* const downloads_;
  WatchingPage* const watchingPage_;
  Watching* const watching_;
  MessageStrip* const strip_;
  StatusStrip* const status_;
  FilterBar* const filterBar_;
  ToolBar* const toolBar_;
  FilmCommands* const commands_;
  QueueQuestions* const questions_;
  WindowDialogs* const dialogs_;
  MiniPlayer* const miniPlayer_;
  WindowPages* const pages_;
  FilmNews* const news_;
  DesktopNews* const desktopNews_;
  Tray* const tray_;
  PreferencesController* const preferences_;
  ClipboardInputs* const clipboard_;
  WindowClosing* const closing_;
  bool isPaused_ = false;
};

}  // namespace playerx::window
