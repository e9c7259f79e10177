#include <gtest/gtest.h>

#include "playerx/window/model/FilmText.h"
#include "tests/unit/window/Films.h"

namespace playerx::window {
namespace {

const QDateTime kNow(QDate(2024, 5, 17), QTime(12, 0));

std::string plain(QString text) {
  return text.replace(QChar::Nbsp, QLatin1Char(' ')).toStdString();
}

TEST(FilmTextTest, ARunningFilmTellsSizeSpeedAndTime) {
  EXPECT_EQ(plain(stateText(arriving(1, 42))), "Downloading · 42 %");
  EXPECT_EQ(plain(detailText(arriving(1, 42), kNow)),
            "294 of 700 MB · 5.2 MB/s · 1 min 18 s left · films.example");
}

TEST(FilmTextTest, AnUnknownTimeIsSaidToBeUnknown) {
  Film film = arriving(1, 42);
  film.secondsLeft.reset();
  film.bytesPerSecond = 0;
  EXPECT_EQ(plain(detailText(film, kNow)), "294 of 700 MB · time left unknown · films.example");
}

TEST(FilmTextTest, AFailureGivesItsReasonInPlaceOfNumbers) {
  const Film film = failed(1, QStringLiteral("http_404"), QStringLiteral("No such film."));
  EXPECT_EQ(plain(stateText(film)), "Failed");
  EXPECT_EQ(plain(detailText(film, kNow)), "No such film.");
  EXPECT_TRUE(toolTipText(film).contains(QStringLiteral("http_404")));
  EXPECT_EQ(plain(accessibleText(film)), "Film 1, Failed: No such film.");
}

TEST(FilmTextTest, AFinishedFilmTellsSizeAndDay) {
  Film done = film(1, FilmState::kDone);
  done.finishedAt = kNow.addDays(-1);
  EXPECT_EQ(plain(detailText(done, kNow)), "700 MB · films.example · yesterday");
}

TEST(FilmTextTest, AFilmWithoutTitleIsCalledByItsAddress) {
  Film nameless = film(7);
  nameless.title.clear();
  EXPECT_EQ(plain(displayTitle(nameless)), "7.avi");
  nameless.address.clear();
  EXPECT_EQ(plain(displayTitle(nameless)), "Film without a title");
}

TEST(FilmTextTest, TitlesCannotTurnTheDirectionOrBreakTheLine) {
  Film film = arriving(1, 42);
  film.title = QStringLiteral("a\u202Eiva\u2028b\nc");
  const QString title = displayTitle(film);
  EXPECT_EQ(title, QStringLiteral("a\uFFFDiva\uFFFDb\uFFFDc"));
}

TEST(FilmTextTest, TitlesAreNoMarkupInToolTips) {
  Film film = arriving(1, 42);
  film.title = QStringLiteral("<img src='file:///etc/passwd'>");
  EXPECT_FALSE(toolTipText(film).contains(QStringLiteral("<img")));
}

TEST(FilmTextTest, EveryStateHasAWordOfItsOwn) {
  QStringList words;
  for (int state = 0; state <= static_cast<int>(FilmState::kHeld); ++state) {
    words << stateWord(static_cast<FilmState>(state));
  }
  EXPECT_EQ(words.removeDuplicates(), 0);
  EXPECT_FALSE(words.contains(QString()));
}

}  // namespace
}  // namespace playerx::window
