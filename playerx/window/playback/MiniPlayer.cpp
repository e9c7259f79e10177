#include "playerx/window/playback/MiniPlayer.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include "playerx/window/playback/ControlBar.h"
#include "playerx/window/view/Icons.h"

namespace playerx::window {

MiniPlayer::MiniPlayer(FilmPlayer* player, QWidget* parent)
    : QWidget(parent),
      player_(player),
      pause_(makeButton(QStringLiteral("media-playback-pause"), tr("Pause"))),
      title_(new QLabel(this)),
      time_(new QLabel(this)) {
  QToolButton* const back =
      makeButton(QStringLiteral("video-x-generic"), tr("Back to the picture"));
  QToolButton* const close = makeButton(QStringLiteral("list-remove"), tr("Close the film"));
  title_->setTextFormat(Qt::PlainText);
  title_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(12, 4, 12, 4);
  row->setSpacing(8);
  row->addWidget(pause_);
  row->addWidget(title_, 1);
  row->addWidget(time_);
  row->addWidget(back);
  row->addWidget(close);
  hide();
  if (player_ == nullptr) return;
  connect(player_, &FilmPlayer::changed, this, &MiniPlayer::follow);
  connect(pause_, &QToolButton::clicked, this,
          [this] { player_->setPaused(!player_->state().isPaused); });
  connect(back, &QToolButton::clicked, this, &MiniPlayer::pictureWanted);
  connect(close, &QToolButton::clicked, player_, &FilmPlayer::close);
}

void MiniPlayer::setTitle(const QString& title) { title_->setText(title); }

void MiniPlayer::setShown(bool isShown) {
  isShown_ = isShown;
  if (player_ != nullptr) follow();
}

QToolButton* MiniPlayer::makeButton(const QString& icon, const QString& name) {
  auto* const button = new QToolButton(this);
  const int side = fontMetrics().height() + 4;
  button->setIcon(ownIcon(icon));
  button->setIconSize({side, side});
  button->setText(name);
  button->setToolTip(name);
  button->setToolButtonStyle(Qt::ToolButtonIconOnly);
  button->setAutoRaise(true);
  return button;
}

void MiniPlayer::follow() {
  const PlaybackState& state = player_->state();
  setVisible(state.isOpen && isShown_);
  if (!state.isOpen) return;
  pause_->setIcon(ownIcon(state.isPaused ? QStringLiteral("media-playback-start")
                                         : QStringLiteral("media-playback-pause")));
  pause_->setText(state.isPaused ? tr("Play") : tr("Pause"));
  pause_->setToolTip(pause_->text());
  time_->setText(state.isLoaded ? timeText(state) : QString());
}

}  // namespace playerx::window
