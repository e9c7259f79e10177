#include <QClipboard>
#include <QLabel>
#include <QToolBar>

#include "playerx/window/shell/FilterBar.h"
#include "playerx/window/shell/MainWindow.h"
#include "playerx/window/view/EmptyState.h"
#include "tests/unit/window/PartOf.h"
#include "tests/unit/window/WindowFixture.h"

namespace playerx::window {
namespace {

/// How tools, list, strip and clipboard go together.
class WindowPartsTest : public WindowTest {};

TEST_F(WindowPartsTest, ALongListSaysHowMuchOfItIsLeft) {
  Q_EMIT queue_.adding(9'900);
  EXPECT_EQ(strip().text(), QStringLiteral("9900 address(es) or ticket(s) are still to be added."));
  Q_EMIT queue_.adding(0);
  EXPECT_EQ(strip().text(), QString());
}

TEST_F(WindowPartsTest, AnAddressIsPastedIntoAnEmptyWindow) {
  QGuiApplication::clipboard()->setText(QStringLiteral("http://h/a.avi"));
  press(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(queue_.take(), QStringList({"add http://h/a.avi"}));
}

TEST_F(WindowPartsTest, AListWhoseFilmsAreAllBeingRemovedIsNotCalledFiltered) {
  queue({film(1)});
  select({1});
  action(Verb::kRemove).trigger();
  EXPECT_EQ(partOf<EmptyState>(window_).findChildren<QLabel*>().at(1)->text(),
            QStringLiteral("Nothing to download yet"));
}

TEST_F(WindowPartsTest, ToolsThatDoNotFitLoseTheirTextBeforeTheFilterGoes) {
  auto& tools = partOf<QToolBar>(window_);
  window_.resize(2000, 600);
  EXPECT_EQ(tools.toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
  window_.resize(tools.sizeHint().width() - 1, 600);
  EXPECT_EQ(tools.toolButtonStyle(), Qt::ToolButtonIconOnly);
  EXPECT_TRUE(partOf<FilterBar>(window_).isVisible());
}

TEST_F(WindowPartsTest, FilmsThatAreNotShownLeaveTheSelection) {
  queue({film(1), film(2)});
  view().selectFilms({2});
  view().selectFilms({7});
  EXPECT_EQ(view().selectedFilms(), QList<FilmId>({2}));
}

}  // namespace
}  // namespace playerx::window
