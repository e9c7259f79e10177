#include "playerx/window/playback/MpvTracks.h"

#include <QCoreApplication>
#include <QLocale>
#include <cstring>

#include "playerx/window/model/FilmText.h"

namespace playerx::window {

namespace {

struct Tracks {
  Q_DECLARE_TR_FUNCTIONS(playerx::window::Tracks)
};

const mpv_node* find(const mpv_node& map, const char* key) {
  if (map.format != MPV_FORMAT_NODE_MAP) return nullptr;
  for (int i = 0; i < map.u.list->num; ++i) {
    if (std::strcmp(map.u.list->keys[i], key) == 0) return &map.u.list->values[i];
  }
  return nullptr;
}

QString text(const mpv_node& map, const char* key) {
  const mpv_node* const node = find(map, key);
  const bool isText = node != nullptr && node->format == MPV_FORMAT_STRING;
  return isText ? cleanText(QString::fromUtf8(node->u.string)) : QString();
}

int number(const mpv_node& map, const char* key) {
  const mpv_node* const node = find(map, key);
  if (node == nullptr) return 0;
  if (node->format == MPV_FORMAT_INT64) return static_cast<int>(node->u.int64);
  return node->format == MPV_FORMAT_FLAG ? node->u.flag : 0;
}

QString languageName(const QString& code) {
  const QLocale locale(code);
  return locale.language() == QLocale::C ? code : locale.nativeLanguageName();
}

QString titleOf(const mpv_node& track, int id) {
  const QString title = text(track, "title");
  const QString language = text(track, "lang");
  if (title.isEmpty() && language.isEmpty()) return Tracks::tr("Track %1").arg(id);
  if (language.isEmpty()) return title;
  if (title.isEmpty()) return languageName(language);
  //: A track's title, then its language.
  return Tracks::tr("%1 (%2)").arg(title, languageName(language));
}

}  // namespace

void addTracks(const mpv_node& list, PlaybackState& state) {
  state.sounds.clear();
  state.subtitles.clear();
  state.sound = 0;
  state.subtitle = 0;
  state.hasPicture = false;
  if (list.format != MPV_FORMAT_NODE_ARRAY) return;
  for (int i = 0; i < list.u.list->num; ++i) {
    const mpv_node& track = list.u.list->values[i];
    const QString type = text(track, "type");
    const int id = number(track, "id");
    const bool isSelected = number(track, "selected") != 0;
    if (type == QLatin1String("video")) state.hasPicture = true;
    if (type == QLatin1String("audio")) {
      state.sounds.append({id, titleOf(track, id)});
      if (isSelected) state.sound = id;
    }
    if (type == QLatin1String("sub")) {
      state.subtitles.append({id, titleOf(track, id)});
      if (isSelected) state.subtitle = id;
    }
  }
}

}  // namespace playerx::window
