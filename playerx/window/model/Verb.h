#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

namespace playerx::window {

/// Everything that the user can have the window do.
enum class Verb {
  kAddAddresses,
  kAddTickets,
  kPaste,
  kPauseAll,
  kResumeAll,
  kPlay,
  kStop,
  kGoOn,
  kRetry,
  kRetryAll,
  kOtherFolder,
  kShowInFolder,
  kCopyAddress,
  kCopyDetails,
  kRemove,
  kRemoveWithFile,
  kClearDone,
  kUndo,
  kMoveUp,
  kMoveDown,
  kMoveToTop,
  kMoveToBottom,
  kSelectAll,
  kFilter,
  kShowDownloads,
  kShowWatching,
  kFullScreen,
  kPreferences,
  kAbout,
  kQuit,
};

/// Where a shortcut works: keys that a text field or a button uses itself belong to the list alone.
enum class ShortcutPlace { kWindow, kList };

/// What stands in menus for a verb.
struct VerbFacts {
  Verb verb;
  const char* text;  ///< source text with its mnemonic, translated in the context "Verb"
  const char* icon;  ///< name in the desktop's theme; that of an own icon too
  const char* keys;  ///< portable text of the shortcuts, separated by ";"
  ShortcutPlace place;
};

/// All verbs, in the order of the enumeration.
const QList<VerbFacts>& verbFacts();

const VerbFacts& factsOf(Verb verb);

/// In the user's language, with the mnemonic; and without, for a button or a screen reader.
QString menuText(Verb verb);
QString plainText(Verb verb);

QList<QKeySequence> shortcutsOf(Verb verb);

}  // namespace playerx::window
