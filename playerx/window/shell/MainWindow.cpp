#include "playerx/window/shell/MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMenuBar>
#include <QUrl>
#include <QVBoxLayout>

#include "playerx/window/actions/ActionSet.h"
#include "playerx/window/actions/FilmCommands.h"
#include "playerx/window/desktop/Desktop.h"
#include "playerx/window/desktop/DesktopNews.h"
#include "playerx/window/desktop/Tray.h"
#include "playerx/window/inputs/ClipboardInputs.h"
#include "playerx/window/model/FilmFilter.h"
#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/FilmNews.h"
#include "playerx/window/model/FilmText.h"
#include "playerx/window/model/WindowMemory.h"
#include "playerx/window/playback/MiniPlayer.h"
#include "playerx/window/playback/Watching.h"
#include "playerx/window/playback/WatchingPage.h"
#include "playerx/window/queue/WindowQueue.h"
#include "playerx/window/shell/DownloadsPage.h"
#include "playerx/window/shell/FilterBar.h"
#include "playerx/window/shell/Menus.h"
#include "playerx/window/shell/PreferencesController.h"
#include "playerx/window/shell/QueueQuestions.h"
#include "playerx/window/shell/ToolBar.h"
#include "playerx/window/shell/WindowClosing.h"
#include "playerx/window/shell/WindowDialogs.h"
#include "playerx/window/shell/WindowPages.h"
#include "playerx/window/view/EmptyState.h"
#include "playerx/window/view/FilmView.h"
#include "playerx/window/view/Icons.h"
#include "playerx/window/view/MessageStrip.h"
#include "playerx/window/view/StatusStrip.h"

namespace playerx::window {

namespace {

const QString kGeometry = QStringLiteral("Window/Geometry");
const QString kGroup = QStringLiteral("Window/Group");
const QString kPaused = QStringLiteral("Window/Paused");

constexpr QSize kUsualSize(960, 620);

}  // namespace

MainWindow::MainWindow(const Parts& parts)
    : queue_(parts.queue),
      memory_(parts.memory),
      player_(parts.player),
      films_(new FilmModel(this)),
      filter_(new FilmFilter(this)),
      batcher_(new UpdateBatcher(this)),
      actions_(new ActionSet(this)),
      downloads_((filter_->setSourceModel(films_), new DownloadsPage(*filter_, *actions_, this))),
      watchingPage_(new WatchingPage(player_, this)),
      watching_(new Watching(*films_, player_, memory_, this)),
      strip_(new MessageStrip(this)),
      status_(new StatusStrip(this)),
      filterBar_(new FilterBar(*filter_, this)),
      toolBar_(new ToolBar(*actions_, filterBar_, this)),
      commands_(new FilmCommands({queue_, *films_, *filter_, downloads_->view(), *strip_}, this)),
      questions_(new QueueQuestions(queue_, *films_, *strip_, this)),
      dialogs_(new WindowDialogs(*this)),
      miniPlayer_(new MiniPlayer(player_, this)),
      pages_(
          new WindowPages({*this, *downloads_, *watchingPage_, *miniPlayer_, *toolBar_, *status_})),
      news_(new FilmNews(*films_, this)),
      desktopNews_(new DesktopNews(*news_, parts.desktop, this)),
      tray_(new Tray(*actions_, this)),
      preferences_(new PreferencesController({queue_, memory_, *dialogs_, *desktopNews_}, this)),
      clipboard_(new ClipboardInputs(this)),
      closing_(new WindowClosing(*this, *dialogs_, memory_, *tray_)) {
  build();
  connectQueue();
  connectActions();
  connectViews();
  connectDesktop(parts.desktop);
  restore();
  showDownloads();
}

MainWindow::~MainWindow() = default;

void MainWindow::build() {
  setWindowTitle(QApplication::applicationDisplayName());
  setWindowIcon(applicationIcon());
  fillMenuBar(*menuBar(), *actions_);
  addToolBar(toolBar_);
  auto* const middle = new QWidget(this);
  auto* const column = new QVBoxLayout(middle);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(strip_);
  column->addWidget(pages_->widget(), 1);
  column->addWidget(miniPlayer_);
  column->addWidget(status_);
  setCentralWidget(middle);
  actions_->attach(*this, downloads_->view());
}

void MainWindow::connectQueue() {
  connect(&queue_, &WindowQueue::changed, batcher_, &UpdateBatcher::add);
  connect(batcher_, &UpdateBatcher::ready, this, &MainWindow::apply);
  connect(&queue_, &WindowQueue::inputsTaken, this, [this](const InputReport& report) {
    batcher_->flush();
    commands_->tellInputs(report);
  });
  connect(&queue_, &WindowQueue::shown, this, &MainWindow::take);
  connect(&queue_, &WindowQueue::roomKnown, status_, &StatusStrip::showRoom);
  connect(&queue_, &WindowQueue::playRequested, this, [this](FilmId film, const QString& location) {
    if (film == 0 || !watching_->play(film)) watching_->play(location);
  });
}

void MainWindow::connectActions() {
  connect(actions_, &ActionSet::triggered, this, &MainWindow::carryOut);
  connect(commands_, &FilmCommands::situationChanged, this, &MainWindow::refreshActions);
  connect(commands_, &FilmCommands::playWanted, this, &MainWindow::play);
  connect(commands_, &FilmCommands::otherFolderWanted, preferences_, &PreferencesController::ask);
  connect(commands_, &FilmCommands::deletionAsked, dialogs_, &WindowDialogs::askAboutDeletion);
  connect(questions_, &QueueQuestions::otherFolderWanted, preferences_,
          &PreferencesController::ask);
  connect(clipboard_, &ClipboardInputs::changed, this, &MainWindow::refreshActions);
}

void MainWindow::connectViews() {
  FilmView& view = downloads_->view();
  connect(&view, &FilmView::selectionMoved, this, &MainWindow::refreshActions);
  connect(&view, &FilmView::buttonUsed, this,
          [this](Verb verb, FilmId film) { commands_->carryOut(verb, {film}); });
  connect(&view, &FilmView::filmsDropped, commands_, &FilmCommands::moveBefore);
  connect(&view, &FilmView::inputsDropped, commands_, &FilmCommands::add);
  EmptyState& empty = downloads_->emptyState();
  connect(&empty, &EmptyState::inputsDropped, commands_, &FilmCommands::add);
  connect(&empty, &EmptyState::filterDropped, filterBar_, &FilterBar::clear);
  connect(filterBar_, &FilterBar::changed, this, &MainWindow::refreshActions);
  connect(filterBar_, &FilterBar::left, downloads_, [this] { downloads_->setFocus(); });
  connect(watching_, &Watching::started, this, [this](const FilmSource& source) {
    watchingPage_->setTitle(source.title);
    miniPlayer_->setTitle(source.title);
    showWatching();
  });
  connect(watchingPage_, &WatchingPage::desktopPlayerWanted, watching_, &Watching::openWithDesktop);
  connect(pages_, &WindowPages::turned, this, &MainWindow::refreshActions);
}

void MainWindow::connectDesktop(Desktop& desktop) {
  connect(commands_, &FilmCommands::folderWanted, &desktop, &Desktop::showInFolder);
  connect(&desktop, &Desktop::folderNotShown, this, [](const QString& path) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
  });
  connect(&desktop, &Desktop::notificationUsed, this, &MainWindow::comeToFront);
  connect(tray_, &Tray::windowWanted, this, &MainWindow::comeToFront);
  connect(news_, &FilmNews::becamePlayable, watching_, &Watching::playAlone);
  connect(news_, &FilmNews::advanced, status_,
          [this](const Film& film) { status_->announce(accessibleText(film)); });
  connect(dialogs_, &WindowDialogs::inputsGiven, commands_, &FilmCommands::add);
  connect(dialogs_, &WindowDialogs::deletionConfirmed, commands_, &FilmCommands::removeWithFiles);
}

void MainWindow::take(const QStringList& inputs) {
  if (!inputs.isEmpty()) commands_->add(inputs);
  comeToFront();
}

void MainWindow::comeToFront() {
  setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
  show();
  raise();
  activateWindow();
}

bool MainWindow::wasPaused() const { return memory_.value(kPaused).toBool(); }

void MainWindow::showDownloads() { pages_->showDownloads(); }

void MainWindow::showWatching() { pages_->showWatching(); }

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!closing_->mayClose(QueueTotals::of(films_->films()).isRunning)) return event->ignore();
  remember();
  commands_->finish();
  if (player_ != nullptr) player_->close();
  QMainWindow::closeEvent(event);
  Q_EMIT closed();
}

void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::ActivationChange) desktopNews_->setSeen(isActiveWindow());
}

void MainWindow::apply(const QueueUpdate& update) {
  isPaused_ = update.isPaused;
  films_->apply(update);
  const QueueTotals totals = QueueTotals::of(films_->films());
  status_->showTotals(totals, isPaused_);
  tray_->setStatus(totalsText(totals, isPaused_));
  desktopNews_->follow(totals);
  refreshActions();
  Q_EMIT queueShown();
}

void MainWindow::refreshActions() {
  Situation now = commands_->situation(isPaused_);
  now.clipboardHasInputs = clipboard_->isUseful();
  actions_->update(now);
  actions_->of(Verb::kShowDownloads)->setChecked(!pages_->isWatching());
  actions_->of(Verb::kShowWatching)->setChecked(pages_->isWatching());
  actions_->of(Verb::kFullScreen)->setChecked(isFullScreen());
}

void MainWindow::carryOut(Verb verb) {
  if (commands_->carryOut(verb)) return;
  switch (verb) {
    case Verb::kAddAddresses:
      return dialogs_->askForAddresses();
    case Verb::kAddTickets:
      return dialogs_->askForTickets();
    case Verb::kPaste:
      return commands_->add(clipboard_->read());
    case Verb::kFilter:
      showDownloads();
      return filterBar_->edit();
    case Verb::kShowDownloads:
      return showDownloads();
    case Verb::kShowWatching:
      return showWatching();
    case Verb::kFullScreen:
      return pages_->setFullScreen(!isFullScreen());
    case Verb::kPreferences:
      return preferences_->ask();
    case Verb::kAbout:
      return dialogs_->tellAbout();
    case Verb::kQuit:
      return quit();
    default:
      return;
  }
}

void MainWindow::play(FilmId film) {
  if (!watching_->play(film)) queue_.play(film);
}

void MainWindow::restore() {
  if (!restoreGeometry(memory_.value(kGeometry).toByteArray())) resize(kUsualSize);
  filterBar_->setGroup(memory_.value(kGroup).toInt());
}

void MainWindow::remember() {
  if (isFullScreen()) pages_->setFullScreen(false);
  memory_.keep(kGeometry, saveGeometry());
  memory_.keep(kGroup, filterBar_->group());
  memory_.keep(kPaused, isPaused_);
}

void MainWindow::quit() { closing_->quit(); }

}  // namespace playerx::window
