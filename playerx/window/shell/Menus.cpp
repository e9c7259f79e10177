#include "playerx/window/shell/Menus.h"

#include <QCoreApplication>
#include <QMenu>
#include <QMenuBar>
#include <optional>

#include "playerx/window/actions/ActionSet.h"

namespace playerx::window {

namespace {

struct Menus {
  Q_DECLARE_TR_FUNCTIONS(playerx::window::Menus)
};

using Entries = std::initializer_list<std::optional<Verb>>;

constexpr std::nullopt_t kLine = std::nullopt;

void fill(QMenu& menu, const ActionSet& actions, Entries entries) {
  menu.setToolTipsVisible(true);
  for (const std::optional<Verb>& entry : entries) {
    if (entry) {
      menu.addAction(actions.of(*entry));
    } else {
      menu.addSeparator();
    }
  }
}

}  // namespace

void fillMenuBar(QMenuBar& bar, const ActionSet& actions) {
  fill(*bar.addMenu(Menus::tr("&File")), actions,
       {Verb::kAddAddresses, Verb::kAddTickets, Verb::kPaste, kLine, Verb::kPreferences, kLine,
        Verb::kQuit});
  fill(*bar.addMenu(Menus::tr("&Queue")), actions,
       {Verb::kPauseAll, Verb::kResumeAll, kLine, Verb::kRetryAll, Verb::kClearDone, kLine,
        Verb::kUndo, Verb::kSelectAll});
  fillFilmMenu(*bar.addMenu(Menus::tr("Fi&lm")), actions);
  fill(*bar.addMenu(Menus::tr("&View")), actions,
       {Verb::kShowDownloads, Verb::kShowWatching, kLine, Verb::kFilter, kLine, Verb::kFullScreen});
  fill(*bar.addMenu(Menus::tr("&Help")), actions, {Verb::kAbout});
}

void fillFilmMenu(QMenu& menu, const ActionSet& actions) {
  fill(menu, actions,
       {Verb::kPlay, Verb::kStop, Verb::kGoOn, Verb::kRetry, Verb::kOtherFolder, kLine,
        Verb::kMoveToTop, Verb::kMoveUp, Verb::kMoveDown, Verb::kMoveToBottom, kLine,
        Verb::kShowInFolder, Verb::kCopyAddress, Verb::kCopyDetails, kLine, Verb::kRemove,
        Verb::kRemoveWithFile});
}

}  // namespace playerx::window
