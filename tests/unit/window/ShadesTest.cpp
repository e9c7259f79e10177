#include <gtest/gtest.h>

#include "playerx/window/view/Shades.h"

namespace playerx::window {
namespace {

QPalette paletteOf(const QColor& base, const QColor& text, const QColor& highlight) {
  QPalette palette;
  palette.setColor(QPalette::Window, base);
  palette.setColor(QPalette::Base, base);
  palette.setColor(QPalette::Text, text);
  palette.setColor(QPalette::WindowText, text);
  palette.setColor(QPalette::Highlight, highlight);
  return palette;
}

QList<QPalette> palettes() {
  return {paletteOf(Qt::white, Qt::black, QColor(48, 140, 198)),
          paletteOf(QColor(35, 38, 41), QColor(239, 240, 241), QColor(61, 174, 233)),
          paletteOf(Qt::black, Qt::white, Qt::yellow),
          paletteOf(Qt::white, Qt::black, QColor(255, 255, 0))};
}

TEST(ShadesTest, ContrastIsThatOfTheGuidelines) {
  EXPECT_NEAR(contrastOf(Qt::black, Qt::white), 21, 0.01);
  EXPECT_NEAR(contrastOf(Qt::red, Qt::red), 1, 0.001);
  EXPECT_NEAR(contrastOf(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
}

TEST(ShadesTest, WordsAreReadableInEveryPaletteSelectedOrNot) {
  for (const QPalette& palette : palettes()) {
    for (const bool isSelected : {false, true}) {
      const Shades shades = Shades::of(palette, isSelected, QPalette::Active);
      EXPECT_GE(contrastOf(shades.title, shades.ground), 7);
      EXPECT_GE(contrastOf(shades.detail, shades.ground), 4.5);
      EXPECT_GE(contrastOf(shades.warning, shades.ground), 4.5);
      EXPECT_GE(contrastOf(shades.accent, shades.ground), 3);
    }
  }
}

TEST(ShadesTest, AColourThatIsReadableStaysAsItIs) {
  EXPECT_EQ(readableOn(Qt::white, QColor(10, 20, 30)).rgb(), QColor(10, 20, 30).rgb());
}

}  // namespace
}  // namespace playerx::window
