#include "playerx/window/playback/ControlBar.h"

#include <QActionGroup>
#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QSlider>
#include <QToolButton>

#include "playerx/window/model/Numbers.h"
#include "playerx/window/playback/SeekBar.h"
#include "playerx/window/view/Icons.h"

namespace playerx::window {

namespace {

/// Dark beside a picture whatever the desktop looks like.
constexpr QColor kGround(0x1C, 0x1D, 0x20);
constexpr QColor kText(0xF2, 0xF2, 0xF2);

QIcon icon(const QString& name) { return ownIcon(name, kText); }

QPalette darkPalette() {
  QPalette palette(kGround);
  for (const QPalette::ColorRole role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(role, kText);
  }
  palette.setColor(QPalette::Highlight, QApplication::palette().color(QPalette::Highlight));
  return palette;
}

quint64 wholeSeconds(double seconds) { return seconds > 0 ? static_cast<quint64>(seconds) : 0; }

}  // namespace

QString timeText(const PlaybackState& state) {
  const QString place = clockText(wholeSeconds(state.position));
  if (!state.duration) return place;
  //: The place in a film, and its length.
  return ControlBar::tr("%1 of %2").arg(place, clockText(wholeSeconds(*state.duration)));
}

ControlBar::ControlBar(QWidget* parent)
    : QWidget(parent),
      list_(makeButton(QStringLiteral("view-list"), tr("Back to the list"))),
      play_(makeButton(QStringLiteral("media-playback-start"), tr("Play"))),
      seek_(new SeekBar(this)),
      time_(new QLabel(this)),
      mute_(makeButton(QStringLiteral("audio-volume-high"), tr("Mute"))),
      volume_(new QSlider(Qt::Horizontal, this)),
      sounds_(makeButton(QStringLiteral("media-track-audio"), tr("Sound"))),
      subtitles_(makeButton(QStringLiteral("media-view-subtitles"), tr("Subtitles"))),
      fullScreen_(makeButton(QStringLiteral("view-fullscreen"), tr("Full screen"))) {
  setAutoFillBackground(true);
  setPalette(darkPalette());
  // The style draws a slider's handle as a button, which would hardly be seen on this ground.
  QPalette bright = palette();
  bright.setColor(QPalette::Button, bright.color(QPalette::ButtonText));
  volume_->setPalette(bright);
  volume_->setRange(0, 100);
  volume_->setAccessibleName(tr("Volume"));
  volume_->setToolTip(tr("Volume"));
  for (QToolButton* const button : {sounds_, subtitles_}) {
    button->setMenu(new QMenu(button));
    button->setPopupMode(QToolButton::InstantPopup);
  }
  arrange();
  connectParts();
  setLook();
  show(PlaybackState());
}

void ControlBar::arrange() {
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(16, 8, 16, 8);
  row->setSpacing(8);
  row->addWidget(list_);
  row->addWidget(play_);
  row->addWidget(seek_, 1);
  row->addWidget(time_);
  for (QWidget* const part :
       std::initializer_list<QWidget*>{mute_, volume_, sounds_, subtitles_, fullScreen_}) {
    row->addWidget(part);
  }
}

void ControlBar::connectParts() {
  connect(list_, &QToolButton::clicked, this, &ControlBar::listWanted);
  connect(play_, &QToolButton::clicked, this, &ControlBar::pauseToggled);
  connect(mute_, &QToolButton::clicked, this, &ControlBar::muteToggled);
  connect(fullScreen_, &QToolButton::clicked, this, &ControlBar::fullScreenToggled);
  connect(volume_, &QSlider::valueChanged, this, [this](int percent) {
    if (percent != state_.volume) Q_EMIT volumeWanted(percent);
  });
  connect(seek_, &SeekBar::chosen, this, [this](double part) {
    if (state_.duration) Q_EMIT seekWanted(part * *state_.duration);
  });
}

void ControlBar::show(const PlaybackState& state) {
  const bool hasNewTracks = state.sounds != state_.sounds || state.subtitles != state_.subtitles ||
                            state.sound != state_.sound || state.subtitle != state_.subtitle;
  state_ = state;
  const bool plays = state.isLoaded && !state.isPaused && !state.hasEnded;
  play_->setIcon(icon(plays ? QStringLiteral("media-playback-pause")
                            : QStringLiteral("media-playback-start")));
  play_->setText(plays ? tr("Pause") : tr("Play"));
  play_->setToolTip(play_->text());
  play_->setEnabled(state.isLoaded);
  seek_->setEnabled(state.isLoaded && state.duration.has_value());
  seek_->setArrived(state.arrived);
  if (!seek_->isSliderDown() && state.duration && *state.duration > 0) {
    seek_->setValue(static_cast<int>(state.position / *state.duration * SeekBar::kWhole));
  }
  time_->setText(state.isLoaded ? timeText(state) : QString());
  mute_->setIcon(icon(state.isMuted ? QStringLiteral("audio-volume-muted")
                                    : QStringLiteral("audio-volume-high")));
  mute_->setText(state.isMuted ? tr("Unmute") : tr("Mute"));
  mute_->setToolTip(mute_->text());
  volume_->setValue(state.volume);
  sounds_->setVisible(state.sounds.size() > 1);
  subtitles_->setVisible(!state.subtitles.isEmpty());
  if (!hasNewTracks) return;
  fillTracks(*sounds_->menu(), state.sounds, state.sound, false, &ControlBar::soundChosen);
  fillTracks(*subtitles_->menu(), state.subtitles, state.subtitle, true,
             &ControlBar::subtitleChosen);
}

void ControlBar::setFullScreen(bool isFullScreen) {
  fullScreen_->setIcon(
      icon(isFullScreen ? QStringLiteral("view-restore") : QStringLiteral("view-fullscreen")));
  fullScreen_->setText(isFullScreen ? tr("Leave full screen") : tr("Full screen"));
  fullScreen_->setToolTip(fullScreen_->text());
}

void ControlBar::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange) setLook();
}

QToolButton* ControlBar::makeButton(const QString& drawing, const QString& name) {
  auto* const button = new QToolButton(this);
  button->setIcon(icon(drawing));
  // The text is the name for a screen reader; only the icon is shown.
  button->setText(name);
  button->setToolTip(name);
  button->setAutoRaise(true);
  button->setToolButtonStyle(Qt::ToolButtonIconOnly);
  button->setFocusPolicy(Qt::TabFocus);
  return button;
}

void ControlBar::fillTracks(QMenu& menu, const QList<Track>& tracks, int chosen, bool canBeOff,
                            void (ControlBar::*signal)(int)) {
  menu.clear();
  auto* const group = new QActionGroup(&menu);
  const auto add = [&](const QString& title, int id) {
    QAction* const action = menu.addAction(title);
    action->setCheckable(true);
    action->setChecked(id == chosen);
    group->addAction(action);
    connect(action, &QAction::triggered, this, [this, signal, id] { (this->*signal)(id); });
  };
  if (canBeOff) add(tr("Off"), 0);
  for (const Track& track : tracks) add(track.title, track.id);
}

void ControlBar::setLook() {
  const int side = fontMetrics().height() + 4;
  for (QToolButton* const button : {list_, play_, mute_, sounds_, subtitles_, fullScreen_}) {
    button->setIconSize({side, side});
  }
  volume_->setFixedWidth(6 * fontMetrics().height());
  time_->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("0:00:00")));
}

}  // namespace playerx::window
