#include <gtest/gtest.h>

#include <QLocale>
#include <QScopeGuard>
#include <QTest>

#include "playerx/window/desktop/DesktopNews.h"
#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/FilmNews.h"
#include "playerx/window/view/StatusStrip.h"
#include "tests/unit/window/FakeDesktop.h"
#include "tests/unit/window/Films.h"

namespace playerx::window {
namespace {

class DesktopNewsTest : public testing::Test {
 protected:
  void show(const QList<Film>& films) {
    films_.apply(queueOf(films));
    news_.follow(QueueTotals::of(films_.films()));
  }

  FilmModel films_;
  FilmNews filmNews_{films_};
  FakeDesktop desktop_;
  DesktopNews news_{filmNews_, desktop_};
};

TEST_F(DesktopNewsTest, FilmsThatEndWithinAMomentAreToldOfTogether) {
  show({film(1), film(2), film(3)});
  show({film(1, FilmState::kDone), film(2, FilmState::kDone),
        failed(3, QStringLiteral("http_404"), QStringLiteral("No film."))});
  news_.tell();
  EXPECT_EQ(desktop_.take(), QStringList({"notify done: 2 film(s) are done.",
                                          "notify failed: “Film 3” has failed."}));
  news_.tell();
  EXPECT_TRUE(desktop_.take().isEmpty());
}

TEST_F(DesktopNewsTest, AMomentLaterTheyAreToldOfWithoutAsking) {
  show({film(1)});
  show({film(1, FilmState::kDone)});
  EXPECT_TRUE(QTest::qWaitFor([this] { return !desktop_.take().isEmpty(); }));
}

TEST_F(DesktopNewsTest, WhatWasThereAtTheStartIsNoNews) {
  show({film(1, FilmState::kDone), failed(2, {}, QStringLiteral("No film."))});
  news_.tell();
  EXPECT_TRUE(desktop_.take().isEmpty());
}

TEST_F(DesktopNewsTest, AFailureIsToldOnceItsReasonIsKnown) {
  show({film(1)});
  show({failed(1, {}, {})});
  news_.tell();
  EXPECT_TRUE(desktop_.take().isEmpty());
  show({failed(1, QStringLiteral("http_404"), QStringLiteral("No film."))});
  news_.tell();
  EXPECT_EQ(desktop_.take(), QStringList({"notify failed: “Film 1” has failed."}));
}

TEST_F(DesktopNewsTest, WhoLooksAtTheWindowIsNotDisturbed) {
  news_.setSeen(true);
  show({film(1)});
  show({film(1, FilmState::kDone)});
  news_.tell();
  EXPECT_TRUE(desktop_.take().isEmpty());
}

TEST_F(DesktopNewsTest, WhatIsNotWantedIsNotTold) {
  WindowPreferences preferences;
  preferences.tellsWhenDone = false;
  news_.setPreferences(preferences);
  show({film(1)});
  show({film(1, FilmState::kDone)});
  news_.tell();
  EXPECT_TRUE(desktop_.take().isEmpty());
}

TEST_F(DesktopNewsTest, TheMachineStaysAwakeOnlyWhileBytesMove) {
  show({film(1)});
  EXPECT_TRUE(desktop_.take().isEmpty());
  show({arriving(1, 40)});
  EXPECT_EQ(desktop_.take(), QStringList({"awake", "progress 0.4"}));
  show({arriving(1, 40)});
  EXPECT_TRUE(desktop_.take().isEmpty());
  Film stalled = arriving(1, 40);
  stalled.bytesPerSecond = 0;
  show({stalled});
  EXPECT_EQ(desktop_.take(), QStringList({"may sleep"}));
  show({film(1, FilmState::kDone)});
  EXPECT_EQ(desktop_.take(), QStringList({"progress -1"}));
}

TEST(StatusStripTest, TheWholeQueueIsToldInNumbers) {
  const auto reset = qScopeGuard([] { QLocale::setDefault(QLocale::system()); });
  QLocale::setDefault(QLocale::c());
  const auto text = [](const QList<Film>& films, bool isPaused = false) {
    const QueueTotals totals = QueueTotals::of({films.begin(), films.end()});
    return totalsText(totals, isPaused).replace(QChar::Nbsp, QLatin1Char(' ')).toStdString();
  };
  EXPECT_EQ(text({}), "");
  EXPECT_EQ(text({film(1, FilmState::kDone), arriving(2, 50), failed(3, {}, {})}),
            "1 of 3 film(s) · 1.1 of 1.4 GB · 5.2 MB/s · about 2 min");
  EXPECT_EQ(text({arriving(1, 50)}, true), "0 of 1 film(s) · 350 of 700 MB · paused");
  Film unknown = film(2);
  unknown.size = 0;
  EXPECT_EQ(text({arriving(1, 50), unknown}), "0 of 2 film(s) · 350 of 700 MB · 5.2 MB/s");
}

}  // namespace
}  // namespace playerx::window
