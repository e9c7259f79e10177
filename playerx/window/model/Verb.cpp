#include "playerx/window/model/Verb.h"

#include <QCoreApplication>

namespace playerx::window {

namespace {

constexpr auto kWindow = ShortcutPlace::kWindow;
constexpr auto kList = ShortcutPlace::kList;

}  // namespace

const QList<VerbFacts>& verbFacts() {
  static const QList<VerbFacts> kFacts = {
      {Verb::kAddAddresses, QT_TRANSLATE_NOOP("Verb", "&Add addresses…"), "list-add", "Ctrl+N",
       kWindow},
      {Verb::kAddTickets, QT_TRANSLATE_NOOP("Verb", "Add &tickets…"), "document-open", "Ctrl+O",
       kWindow},
      {Verb::kPaste, QT_TRANSLATE_NOOP("Verb", "Add from the &clipboard"), "edit-paste", "Ctrl+V",
       kWindow},
      {Verb::kPauseAll, QT_TRANSLATE_NOOP("Verb", "&Pause all"), "media-playback-pause", "Ctrl+P",
       kWindow},
      {Verb::kResumeAll, QT_TRANSLATE_NOOP("Verb", "&Go on with all"), "media-playback-start",
       "Ctrl+P", kWindow},
      {Verb::kPlay, QT_TRANSLATE_NOOP("Verb", "&Play"), "media-playback-start", "Return;Enter",
       kList},
      {Verb::kStop, QT_TRANSLATE_NOOP("Verb", "&Stop"), "media-playback-stop", "Space", kList},
      {Verb::kGoOn, QT_TRANSLATE_NOOP("Verb", "&Go on"), "media-playback-start", "Space", kList},
      {Verb::kRetry, QT_TRANSLATE_NOOP("Verb", "&Try again"), "view-refresh", "Ctrl+R", kWindow},
      {Verb::kRetryAll, QT_TRANSLATE_NOOP("Verb", "Try all &failed again"), "view-refresh",
       "Ctrl+Shift+R", kWindow},
      {Verb::kOtherFolder, QT_TRANSLATE_NOOP("Verb", "C&hoose another folder…"), "folder-open", "",
       kWindow},
      {Verb::kShowInFolder, QT_TRANSLATE_NOOP("Verb", "Show in &folder"), "folder-open", "Ctrl+L",
       kWindow},
      {Verb::kCopyAddress, QT_TRANSLATE_NOOP("Verb", "&Copy address"), "edit-copy", "Ctrl+C",
       kList},
      {Verb::kCopyDetails, QT_TRANSLATE_NOOP("Verb", "Copy &details"), "edit-copy", "Ctrl+Shift+C",
       kWindow},
      {Verb::kRemove, QT_TRANSLATE_NOOP("Verb", "&Remove"), "list-remove", "Del", kList},
      {Verb::kRemoveWithFile, QT_TRANSLATE_NOOP("Verb", "Remove and d&elete the film…"),
       "edit-delete", "Shift+Del", kList},
      {Verb::kClearDone, QT_TRANSLATE_NOOP("Verb", "Clear &done films"), "edit-clear-all",
       "Ctrl+Shift+Del", kWindow},
      {Verb::kUndo, QT_TRANSLATE_NOOP("Verb", "&Undo"), "edit-undo", "Ctrl+Z", kWindow},
      {Verb::kMoveUp, QT_TRANSLATE_NOOP("Verb", "Move &up"), "go-up", "Ctrl+Up", kWindow},
      {Verb::kMoveDown, QT_TRANSLATE_NOOP("Verb", "Move do&wn"), "go-down", "Ctrl+Down", kWindow},
      {Verb::kMoveToTop, QT_TRANSLATE_NOOP("Verb", "Move to the t&op"), "go-top", "Ctrl+PgUp",
       kWindow},
      {Verb::kMoveToBottom, QT_TRANSLATE_NOOP("Verb", "Move to the &bottom"), "go-bottom",
       "Ctrl+PgDown", kWindow},
      {Verb::kSelectAll, QT_TRANSLATE_NOOP("Verb", "Select &all"), "edit-select-all", "Ctrl+A",
       kList},
      {Verb::kFilter, QT_TRANSLATE_NOOP("Verb", "&Filter"), "edit-find", "Ctrl+F", kWindow},
      {Verb::kShowDownloads, QT_TRANSLATE_NOOP("Verb", "&Downloads"), "folder-download", "Ctrl+1",
       kWindow},
      {Verb::kShowWatching, QT_TRANSLATE_NOOP("Verb", "&Watching"), "video-x-generic", "Ctrl+2",
       kWindow},
      {Verb::kFullScreen, QT_TRANSLATE_NOOP("Verb", "F&ull screen"), "view-fullscreen", "F11",
       kWindow},
      {Verb::kPreferences, QT_TRANSLATE_NOOP("Verb", "&Preferences…"), "preferences-system",
       "Ctrl+,", kWindow},
      {Verb::kAbout, QT_TRANSLATE_NOOP("Verb", "&About this player"), "help-about", "", kWindow},
      {Verb::kQuit, QT_TRANSLATE_NOOP("Verb", "&Quit"), "application-exit", "Ctrl+Q", kWindow},
  };
  return kFacts;
}

const VerbFacts& factsOf(Verb verb) { return verbFacts()[static_cast<qsizetype>(verb)]; }

QString menuText(Verb verb) { return QCoreApplication::translate("Verb", factsOf(verb).text); }

QString plainText(Verb verb) {
  QString text = menuText(verb);
  return text.remove(QLatin1Char('&'));
}

QList<QKeySequence> shortcutsOf(Verb verb) {
  QList<QKeySequence> keys;
  for (const QString& part :
       QString::fromLatin1(factsOf(verb).keys).split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
    keys.append(QKeySequence(part, QKeySequence::PortableText));
  }
  return keys;
}

}  // namespace playerx::window
