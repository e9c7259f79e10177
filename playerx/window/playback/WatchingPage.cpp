#include "playerx/window/playback/WatchingPage.h"

#include <QKeyEvent>
#include <QLabel>

#include "playerx/window/model/FilmText.h"
#include "playerx/window/model/Numbers.h"
#include "playerx/window/playback/ControlBar.h"
#include "playerx/window/view/TextButton.h"

namespace playerx::window {

namespace {

constexpr double kStepSeconds = 10;
constexpr int kVolumeStep = 5;

}  // namespace

WatchingPage::WatchingPage(FilmPlayer* player, QWidget* parent, int hideMs)
    : QWidget(parent),
      player_(player),
      notice_(new QLabel(this)),
      handOver_(new TextButton(tr("Open with the desktop's player"), this)),
      controls_(new ControlBar(this)) {
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  setAccessibleName(tr("Film"));
  QPalette dark = palette();
  dark.setColor(QPalette::Window, Qt::black);
  setPalette(dark);
  setAutoFillBackground(true);
  if (player_ != nullptr) connectPlayer();

  QPalette light = palette();
  light.setColor(QPalette::WindowText, Qt::white);
  notice_->setPalette(light);
  notice_->setAlignment(Qt::AlignCenter);
  notice_->setTextFormat(Qt::PlainText);
  notice_->setWordWrap(true);
  notice_->setAttribute(Qt::WA_TransparentForMouseEvents);
  controls_->setMouseTracking(true);
  controls_->installEventFilter(this);
  notice_->raise();
  handOver_->raise();
  controls_->raise();
  hide_.setSingleShot(true);
  hide_.setInterval(hideMs);
  connect(&hide_, &QTimer::timeout, this, &WatchingPage::hideControls);
  connect(handOver_, &QPushButton::clicked, this, &WatchingPage::desktopPlayerWanted);
  connect(controls_, &ControlBar::listWanted, this, &WatchingPage::backWanted);
  connect(controls_, &ControlBar::fullScreenToggled, this, &WatchingPage::fullScreenToggled);
  follow();
}

void WatchingPage::connectPlayer() {
  picture_ = player_->picture();
  picture_->setParent(this);
  picture_->setMouseTracking(true);
  picture_->installEventFilter(this);
  picture_->lower();
  picture_->show();
  connect(player_, &FilmPlayer::changed, this, &WatchingPage::follow);
  connect(controls_, &ControlBar::pauseToggled, this, [this] {
    const PlaybackState& state = player_->state();
    if (state.hasEnded) player_->seek(0);
    player_->setPaused(!state.isPaused && !state.hasEnded);
  });
  connect(controls_, &ControlBar::seekWanted, player_, &FilmPlayer::seek);
  connect(controls_, &ControlBar::volumeWanted, player_, &FilmPlayer::setVolume);
  connect(controls_, &ControlBar::muteToggled, this,
          [this] { player_->setMuted(!player_->state().isMuted); });
  connect(controls_, &ControlBar::soundChosen, player_, &FilmPlayer::chooseSound);
  connect(controls_, &ControlBar::subtitleChosen, player_, &FilmPlayer::chooseSubtitle);
}

void WatchingPage::setTitle(const QString& title) {
  title_ = title;
  setAccessibleDescription(title);
  follow();
}

void WatchingPage::setFullScreen(bool isFullScreen) { controls_->setFullScreen(isFullScreen); }

QString WatchingPage::notice() const { return notice_->text(); }

void WatchingPage::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  layOut();
}

void WatchingPage::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) return Q_EMIT backWanted();
  if (event->key() == Qt::Key_F) return Q_EMIT fullScreenToggled();
  if (player_ == nullptr) return QWidget::keyPressEvent(event);
  showControls();
  const PlaybackState& state = player_->state();
  switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_MediaPlay:
    case Qt::Key_MediaTogglePlayPause:
      return Q_EMIT controls_->pauseToggled();
    case Qt::Key_Left:
      return step(-kStepSeconds);
    case Qt::Key_Right:
      return step(kStepSeconds);
    case Qt::Key_Up:
      return player_->setVolume(state.volume + kVolumeStep);
    case Qt::Key_Down:
      return player_->setVolume(state.volume - kVolumeStep);
    case Qt::Key_M:
      return player_->setMuted(!state.isMuted);
    default:
      QWidget::keyPressEvent(event);
  }
}

bool WatchingPage::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseMove || event->type() == QEvent::Enter) showControls();
  if (watched == picture_ && event->type() == QEvent::MouseButtonDblClick) {
    Q_EMIT fullScreenToggled();
  }
  return QWidget::eventFilter(watched, event);
}

void WatchingPage::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  layOut();
  showControls();
}

void WatchingPage::follow() {
  const PlaybackState state = player_ != nullptr ? player_->state() : PlaybackState();
  controls_->show(state);
  notice_->setText(noticeFor(state));
  handOver_->setVisible(player_ == nullptr || !state.problem.isEmpty());
  if (picture_ != nullptr) picture_->setVisible(state.isOpen && state.problem.isEmpty());
  if (state.isPaused || state.hasEnded || !state.isLoaded) showControls();
  layOut();
}

void WatchingPage::layOut() {
  if (picture_ != nullptr) picture_->setGeometry(rect());
  const int height = controls_->sizeHint().height();
  controls_->setGeometry(0, this->height() - height, width(), height);
  const int line = fontMetrics().lineSpacing();
  const int middle = (this->height() - height) / 2;
  notice_->setGeometry(line, middle - 3 * line, width() - 2 * line, 4 * line);
  handOver_->adjustSize();
  handOver_->move((width() - handOver_->width()) / 2, middle + 2 * line);
}

void WatchingPage::showControls() {
  controls_->setVisible(player_ != nullptr);
  unsetCursor();
  hide_.start();
}

void WatchingPage::hideControls() {
  const bool plays = player_ != nullptr && player_->state().isLoaded &&
                     !player_->state().isPaused && !player_->state().hasEnded;
  const bool isInUse = controls_->underMouse() || controls_->isAncestorOf(focusWidget());
  if (!plays || isInUse) return;
  controls_->hide();
  setCursor(Qt::BlankCursor);
}

void WatchingPage::step(double seconds) {
  const PlaybackState& state = player_->state();
  if (state.isLoaded) player_->seek(state.position + seconds);
}

QString WatchingPage::noticeFor(const PlaybackState& state) const {
  if (player_ == nullptr) return tr("This player was built without playback of its own.");
  if (!state.problem.isEmpty()) return state.problem;
  if (!state.isOpen) return tr("Nothing is playing. Choose a film in the list of downloads.");
  if (state.isWaiting && state.isLoaded) {
    //: %1 is the place in the film, such as "12:34".
    return tr("Waiting for the film to arrive (%1)")
        .arg(clockText(static_cast<quint64>(state.position)));
  }
  if (state.isWaiting) return tr("Waiting for the beginning of the film to arrive");
  if (state.isLoaded && !state.hasPicture) return cleanText(title_);
  return {};
}

}  // namespace playerx::window
