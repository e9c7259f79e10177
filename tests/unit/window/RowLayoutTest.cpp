#include <gtest/gtest.h>

#include <QApplication>
#include <QFontMetrics>

#include "playerx/window/view/RowLayout.h"

namespace playerx::window {
namespace {

class RowLayoutTest : public testing::Test {
 protected:
  static RowMetrics metrics(double scale) {
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * scale);
    return RowMetrics(font);
  }

  static RowLayout layOut(const RowMetrics& metrics, const RowContent& content,
                          Qt::LayoutDirection direction = Qt::LeftToRight) {
    return layOutRow(QRect(0, 100, 800, metrics.rowHeight), metrics, content, direction);
  }

  static RowContent twoButtons(const RowMetrics& metrics, bool hasBar) {
    RowContent content;
    content.stateWidth = 120;
    content.hasBar = hasBar;
    content.buttons = {{90, metrics.buttonHeight}, {70, metrics.buttonHeight}};
    return content;
  }
};

TEST_F(RowLayoutTest, PartsNeitherOverlapNorLeaveTheRowAtAnySizeOfFont) {
  for (const double scale : {1.0, 1.5, 2.0}) {
    const RowMetrics sizes = metrics(scale);
    for (const bool hasBar : {false, true}) {
      const RowLayout layout = layOut(sizes, twoButtons(sizes, hasBar));
      const QRect row(0, 100, 800, sizes.rowHeight);
      QList<QRect> parts = {layout.title, layout.state, layout.detail};
      parts += layout.buttons;
      if (hasBar) parts << layout.bar;
      for (qsizetype i = 0; i < parts.size(); ++i) {
        EXPECT_TRUE(row.contains(parts[i])) << scale << " part " << i;
        for (qsizetype k = 0; k < i; ++k) EXPECT_FALSE(parts[i].intersects(parts[k]));
      }
    }
  }
}

TEST_F(RowLayoutTest, LinesAreAsHighAsTheirFonts) {
  const RowMetrics sizes = metrics(1.5);
  const RowLayout layout = layOut(sizes, twoButtons(sizes, true));
  EXPECT_GE(layout.title.height(), QFontMetrics(sizes.titleFont).height());
  EXPECT_GE(layout.detail.height(), QFontMetrics(sizes.detailFont).height());
}

TEST_F(RowLayoutTest, RightToLeftIsTheMirrorImage) {
  const RowMetrics sizes = metrics(1);
  const RowLayout left = layOut(sizes, twoButtons(sizes, true));
  const RowLayout right = layOut(sizes, twoButtons(sizes, true), Qt::RightToLeft);
  EXPECT_EQ(right.title.left(), 800 - left.title.right() - 1);
  EXPECT_EQ(right.state.right(), 800 - left.state.left() - 1);
  EXPECT_EQ(right.edge.right(), 799);
  EXPECT_EQ(right.buttons[0].left(), 800 - left.buttons[0].right() - 1);
}

TEST_F(RowLayoutTest, ALongStateLeavesHalfTheRowToTheTitle) {
  const RowMetrics sizes = metrics(1);
  RowContent content;
  content.stateWidth = 5000;
  EXPECT_GE(layOut(sizes, content).title.width(), 300);
}

}  // namespace
}  // namespace playerx::window
