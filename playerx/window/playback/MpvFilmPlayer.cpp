#include "playerx/window/playback/MpvFilmPlayer.h"

#include <QFile>
#include <QVarLengthArray>
#include <QWidget>
#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstring>

#include "playerx/window/playback/GlSurface.h"
#include "playerx/window/playback/MpvTracks.h"
#include "playerx/window/playback/SoftwareSurface.h"

namespace playerx::window {

namespace {

/// After so long without the film's beginning, the user is told what is waited for.
constexpr int kSlowStartMs = 2000;

/// The position is told this often a second, not with every picture.
constexpr double kPositionSteps = 5;

/// Seeks end this long before the end of what libmpv holds, in seconds.
constexpr double kEdge = 0.3;

/// Behind that, time is guessed from bytes, and a seek behind the last byte would wait for it: so
/// it ends well before, by a part of the film's arrived length and by seconds.
constexpr double kGuessedPart = 0.9;
constexpr double kGuessedEdge = 5;

struct Option {
  const char* name;
  const char* value;
};

/// libmpv here plays the one film it is given: no other file, no script, no setting of the user's
/// own mpv changes what happens.
constexpr Option kOptions[] = {
    {"vo", "libmpv"},
    {"config", "no"},
    {"terminal", "no"},
    {"load-scripts", "no"},
    {"ytdl", "no"},
    {"osc", "no"},
    {"input-default-bindings", "no"},
    {"input-vo-keyboard", "no"},
    {"idle", "yes"},
    {"keep-open", "yes"},
    {"access-references", "no"},
    {"ordered-chapters", "no"},
    {"audio-file-auto", "no"},
    {"cover-art-auto", "no"},
    {"hwdec", "auto-safe"},
    {"audio-client-name", "playerx"},
    // What was shown stays within reach while a read waits for bytes to arrive.
    {"cache", "yes"},
    {"demuxer-max-bytes", "96MiB"},
    {"demuxer-max-back-bytes", "48MiB"},
};

constexpr std::pair<const char*, mpv_format> kObserved[] = {
    {"pause", MPV_FORMAT_FLAG},
    {"paused-for-cache", MPV_FORMAT_FLAG},
    {"eof-reached", MPV_FORMAT_FLAG},
    {"mute", MPV_FORMAT_FLAG},
    {"time-pos", MPV_FORMAT_DOUBLE},
    {"duration", MPV_FORMAT_DOUBLE},
    {"volume", MPV_FORMAT_DOUBLE},
    {"track-list", MPV_FORMAT_NODE},
    {"demuxer-cache-time", MPV_FORMAT_DOUBLE},
};

bool flagOf(const mpv_event_property& property) {
  return property.format == MPV_FORMAT_FLAG && *static_cast<int*>(property.data) != 0;
}

std::optional<double> numberOf(const mpv_event_property& property) {
  if (property.format != MPV_FORMAT_DOUBLE) return std::nullopt;
  const double number = *static_cast<double*>(property.data);
  return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

/// A surface for `mpv` that works on this machine.
VideoSurface* makeVideoSurface(mpv_handle* mpv, QObject* parent) {
  if (canUseOpenGl()) return new GlSurface(mpv, parent);
  return new SoftwareSurface(mpv, parent);
}

}  // namespace

MpvFilmPlayer::MpvFilmPlayer(QObject* parent) : FilmPlayer(parent) {
  // libmpv refuses to start in a locale with decimal commas.
  std::setlocale(LC_NUMERIC, "C");
  mpv_ = mpv_create();
  if (mpv_ != nullptr) startMpv();
  slowStart_.setSingleShot(true);
  slowStart_.setInterval(kSlowStartMs);
  connect(&slowStart_, &QTimer::timeout, this, [this] {
    PlaybackState state = state_;
    state.isWaiting = !state.isLoaded;
    update(state);
  });
}

MpvFilmPlayer::~MpvFilmPlayer() {
  if (surface_ != nullptr) surface_->release();
  if (mpv_ == nullptr) return;
  mpv_set_wakeup_callback(mpv_, nullptr, nullptr);
  if (file_) file_->cancel();
  mpv_terminate_destroy(mpv_);
}

void MpvFilmPlayer::startMpv() {
  for (const Option& option : kOptions) mpv_set_option_string(mpv_, option.name, option.value);
  if (mpv_initialize(mpv_) < 0) {
    mpv_terminate_destroy(mpv_);
    mpv_ = nullptr;
    return;
  }
  streams_.attach(mpv_);
  for (const auto& [name, format] : kObserved) mpv_observe_property(mpv_, 0, name, format);
  const auto wake = [](void* self) {
    // On a thread of libmpv's, where nothing of it may be used.
    auto* const player = static_cast<MpvFilmPlayer*>(self);
    QMetaObject::invokeMethod(player, &MpvFilmPlayer::takeEvents, Qt::QueuedConnection);
  };
  mpv_set_wakeup_callback(mpv_, wake, this);
  surface_ = makeVideoSurface(mpv_, this);
  connect(surface_, &VideoSurface::ready, this, &MpvFilmPlayer::load);
}

QWidget* MpvFilmPlayer::picture() { return surface_->widget(); }

void MpvFilmPlayer::open(const FilmSource& source) {
  close();
  source_ = source;
  PlaybackState state;
  state.isOpen = true;
  state.volume = state_.volume;
  state.isMuted = state_.isMuted;
  if (!source.file.isEmpty()) {
    int error = 0;
    file_ = GrowingFile::open(QFile::encodeName(source.file).toStdString(), source.total,
                              source.isComplete, &error);
    if (!file_) {
      //: %1 is what the system says, such as "No such file or directory".
      state.problem =
          tr("The film cannot be read: %1.").arg(QString::fromLocal8Bit(std::strerror(error)));
      return update(state);
    }
  }
  wantsLoad_ = true;
  cachedUntil_ = 0;
  update(state);
  if (surface_->isReady()) load();
}

void MpvFilmPlayer::load() {
  if (!wantsLoad_) return;
  wantsLoad_ = false;
  const QString address = file_ ? QString::fromStdString(streams_.offer(file_)) : source_.address;
  set("pause", QStringLiteral("no"));
  run({QStringLiteral("loadfile"), address, QStringLiteral("replace")});
  slowStart_.start();
}

void MpvFilmPlayer::close() {
  wantsLoad_ = false;
  slowStart_.stop();
  if (!state_.isOpen) return;
  if (file_) file_->cancel();
  file_.reset();
  run({QStringLiteral("stop")});
  PlaybackState state;
  state.volume = state_.volume;
  state.isMuted = state_.isMuted;
  update(state);
}

void MpvFilmPlayer::setPaused(bool isPaused) {
  set("pause", isPaused ? QStringLiteral("yes") : QStringLiteral("no"));
}

void MpvFilmPlayer::seek(double seconds) {
  double target = seconds;
  const double part = arrivedPart();
  if (part < 1) {
    const double guessed = part * state_.duration.value_or(0) * kGuessedPart - kGuessedEdge;
    target = std::min(target, std::max(cachedUntil_ - kEdge, guessed));
  }
  target = std::max(0.0, target);
  run({QStringLiteral("seek"), QString::number(target, 'f', 3), QStringLiteral("absolute")});
}

void MpvFilmPlayer::setVolume(int percent) {
  set("volume", QString::number(std::clamp(percent, 0, 100)));
}

void MpvFilmPlayer::setMuted(bool isMuted) {
  set("mute", isMuted ? QStringLiteral("yes") : QStringLiteral("no"));
}

void MpvFilmPlayer::chooseSound(int id) {
  set("aid", id == 0 ? QStringLiteral("no") : QString::number(id));
}

void MpvFilmPlayer::chooseSubtitle(int id) {
  set("sid", id == 0 ? QStringLiteral("no") : QString::number(id));
}

void MpvFilmPlayer::filmGrew() {
  if (!file_) return;
  file_->wake();
  update(state_);
}

void MpvFilmPlayer::filmEnded() {
  if (!file_) return;
  file_->finish();
  update(state_);
}

void MpvFilmPlayer::takeEvents() {
  for (;;) {
    const mpv_event* const event = mpv_wait_event(mpv_, 0);
    if (event->event_id == MPV_EVENT_NONE) return;
    take(*event);
  }
}

void MpvFilmPlayer::take(const mpv_event& event) {
  PlaybackState state = state_;
  switch (event.event_id) {
    case MPV_EVENT_FILE_LOADED:
      slowStart_.stop();
      state.isLoaded = true;
      state.isWaiting = false;
      update(state);
      if (source_.startAt > 0) seek(source_.startAt);
      break;
    case MPV_EVENT_END_FILE:
      takeEnd(*static_cast<mpv_event_end_file*>(event.data));
      break;
    case MPV_EVENT_PROPERTY_CHANGE:
      takeProperty(*static_cast<mpv_event_property*>(event.data));
      break;
    default:
      break;
  }
}

void MpvFilmPlayer::takeProperty(const mpv_event_property& property) {
  PlaybackState state = state_;
  const QLatin1String name(property.name);
  if (name == QLatin1String("pause")) state.isPaused = flagOf(property);
  if (name == QLatin1String("paused-for-cache") && state.isLoaded)
    state.isWaiting = flagOf(property);
  if (name == QLatin1String("eof-reached")) state.hasEnded = flagOf(property);
  if (name == QLatin1String("mute")) state.isMuted = flagOf(property);
  if (name == QLatin1String("duration")) state.duration = numberOf(property);
  if (name == QLatin1String("demuxer-cache-time")) cachedUntil_ = numberOf(property).value_or(0);
  if (const auto number = numberOf(property)) {
    if (name == QLatin1String("volume")) state.volume = static_cast<int>(std::lround(*number));
    if (name == QLatin1String("time-pos")) {
      state.position = std::floor(*number * kPositionSteps) / kPositionSteps;
    }
  }
  if (property.format == MPV_FORMAT_NODE) addTracks(*static_cast<mpv_node*>(property.data), state);
  update(state);
}

void MpvFilmPlayer::takeEnd(const mpv_event_end_file& end) {
  slowStart_.stop();
  const bool isOurs =
      end.reason != MPV_END_FILE_REASON_STOP && end.reason != MPV_END_FILE_REASON_QUIT;
  if (!state_.isOpen || !isOurs) return;
  PlaybackState state = state_;
  state.isWaiting = false;
  if (end.reason == MPV_END_FILE_REASON_EOF && state.isLoaded) {
    state.hasEnded = true;
  } else if (end.reason == MPV_END_FILE_REASON_REDIRECT) {
    run({QStringLiteral("stop")});
    state.problem = tr("This file is a list of other files, not a film.");
  } else if (file_ && !file_->isFinished()) {
    state.problem = tr("This film can be shown when all of it has arrived.");
  } else if (file_) {
    state.problem = tr("This file is no film that can be shown.");
  } else {
    state.problem = tr("The film cannot be fetched from its address.");
  }
  update(state);
}

void MpvFilmPlayer::set(const char* property, const QString& value) {
  QByteArray bytes = value.toUtf8();
  char* text = bytes.data();
  mpv_set_property_async(mpv_, 0, property, MPV_FORMAT_STRING, &text);
}

void MpvFilmPlayer::run(const QStringList& command) {
  QList<QByteArray> words;
  for (const QString& word : command) words.append(word.toUtf8());
  QVarLengthArray<const char*, 5> arguments;
  for (const QByteArray& word : words) arguments.append(word.constData());
  arguments.append(nullptr);
  mpv_command_async(mpv_, 0, arguments.data());
}

void MpvFilmPlayer::update(const PlaybackState& state) {
  PlaybackState next = state;
  next.arrived = arrivedPart();
  if (next == state_) return;
  state_ = next;
  Q_EMIT changed();
}

double MpvFilmPlayer::arrivedPart() const {
  if (!file_ || file_->isFinished() || source_.total == 0) return 1;
  const double part = static_cast<double>(file_->arrived()) / static_cast<double>(source_.total);
  return std::clamp(part, 0.0, 1.0);
}

}  // namespace playerx::window
