#include <gtest/gtest.h>

#include <QLocale>

#include "playerx/window/model/Numbers.h"

namespace playerx::window {
namespace {

/// With blanks that break in place of those that do not.
std::string plain(QString text) {
  return text.replace(QChar::Nbsp, QLatin1Char(' ')).toStdString();
}

class NumbersTest : public testing::Test {
 protected:
  NumbersTest() { QLocale::setDefault(QLocale::c()); }
  ~NumbersTest() override { QLocale::setDefault(QLocale::system()); }
};

TEST_F(NumbersTest, SizesHaveOneDecimalBelowAHundred) {
  EXPECT_EQ(plain(sizeText(0)), "0 B");
  EXPECT_EQ(plain(sizeText(999)), "999 B");
  EXPECT_EQ(plain(sizeText(1'000)), "1.0 kB");
  EXPECT_EQ(plain(sizeText(99'900)), "99.9 kB");
  EXPECT_EQ(plain(sizeText(99'960)), "100 kB");
  EXPECT_EQ(plain(sizeText(294'000'000)), "294 MB");
  EXPECT_EQ(plain(sizeText(999'499'999)), "999 MB");
  EXPECT_EQ(plain(sizeText(999'500'000)), "1.0 GB");
  EXPECT_EQ(plain(sizeText(18'000'000'000'000'000'000U)), "18000 PB");
}

TEST_F(NumbersTest, APartIsInTheUnitOfTheWhole) {
  EXPECT_EQ(plain(sizeOfText(294'000'000, 700'000'000)), "294 of 700 MB");
  EXPECT_EQ(plain(sizeOfText(300'000'000, 2'600'000'000)), "0.3 of 2.6 GB");
}

TEST_F(NumbersTest, DurationsNameTheirTwoLargestUnits) {
  EXPECT_EQ(plain(durationText(5)), "5 s");
  EXPECT_EQ(plain(durationText(78)), "1 min 18 s");
  EXPECT_EQ(plain(durationText(63)), "1 min 03 s");
  EXPECT_EQ(plain(durationText(4'020)), "1 h 07 min");
  EXPECT_EQ(plain(durationText(266'400)), "3 d 2 h");
}

TEST_F(NumbersTest, RoughDurationsAreRoundedUpToMinutes) {
  EXPECT_EQ(plain(roughDurationText(1)), "1 min");
  EXPECT_EQ(plain(roughDurationText(60)), "1 min");
  EXPECT_EQ(plain(roughDurationText(61)), "2 min");
  EXPECT_EQ(plain(roughDurationText(3'601)), "1 h 01 min");
}

TEST_F(NumbersTest, PlacesInAFilmLookLikeAClock) {
  EXPECT_EQ(plain(clockText(5)), "0:05");
  EXPECT_EQ(plain(clockText(754)), "12:34");
  EXPECT_EQ(plain(clockText(3'723)), "1:02:03");
}

TEST_F(NumbersTest, DaysOfTheLastWeekHaveNames) {
  const QDateTime now(QDate(2024, 5, 17), QTime(12, 0));  // a Friday
  EXPECT_EQ(plain(dayText(now.addSecs(-3600), now)), "today");
  EXPECT_EQ(plain(dayText(now.addDays(-1), now)), "yesterday");
  EXPECT_EQ(plain(dayText(now.addDays(-4), now)), "Monday");
  EXPECT_EQ(plain(dayText(now.addDays(-7), now)), "10 May 2024");
}

TEST_F(NumbersTest, DigitsFollowTheLanguage) {
  QLocale::setDefault(QLocale(QLocale::German));
  EXPECT_EQ(plain(sizeText(5'200'000)), "5,2 MB");
}

}  // namespace
}  // namespace playerx::window
