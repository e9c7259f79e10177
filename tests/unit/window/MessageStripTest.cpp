#include <gtest/gtest.h>

#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>

#include "playerx/window/view/MessageStrip.h"

namespace playerx::window {
namespace {

class MessageStripTest : public testing::Test {
 protected:
  MessageStripTest() {
    window_.resize(600, 100);
    window_.show();
  }

  StripMessage message(const char* topic, const char* text) {
    StripMessage message;
    message.topic = QString::fromLatin1(topic);
    message.text = QString::fromLatin1(text);
    message.ended = [this, text] { ended_ << QString::fromLatin1(text); };
    return message;
  }

  QPushButton* button(const QString& text) {
    for (auto* const button : strip_.findChildren<QPushButton*>()) {
      if (button->text() == text) return button;
    }
    return nullptr;
  }

  void close() { QTest::mouseClick(strip_.findChild<QToolButton*>(), Qt::LeftButton); }

  QWidget window_;
  MessageStrip strip_{&window_};
  QStringList ended_;
};

TEST_F(MessageStripTest, AVeryLongWordNeitherFreezesNorWidensTheWindow) {
  const QByteArray text = "Not added: https://" + QByteArray(1'000'000, 'x');
  strip_.show(message("a", text.constData()));
  EXPECT_TRUE(strip_.text().startsWith(QStringLiteral("Not added: https://xxx")));
  EXPECT_LT(strip_.text().size(), 1000);
  EXPECT_LE(strip_.minimumSizeHint().width(), 400);
}

TEST_F(MessageStripTest, ALongTextIsCutBetweenCharacters) {
  const QString film = QStringLiteral("\U0001F39E");
  strip_.show({.text = QStringLiteral("x") + film.repeated(300)});
  EXPECT_EQ(strip_.text(), QStringLiteral("x") + film.repeated(249) + QChar(0x2026));
}

TEST_F(MessageStripTest, IsHiddenWhileThereIsNothingToSay) {
  EXPECT_TRUE(strip_.isHidden());
  strip_.show(message("a", "Hello"));
  EXPECT_FALSE(strip_.isHidden());
  close();
  EXPECT_TRUE(strip_.isHidden());
  EXPECT_EQ(ended_, QStringList({"Hello"}));
}

TEST_F(MessageStripTest, ShowsTheLatestAndKeepsTheOthers) {
  strip_.show(message("a", "First"));
  strip_.show(message("b", "Second"));
  EXPECT_EQ(strip_.text(), QStringLiteral("Second"));
  close();
  EXPECT_EQ(strip_.text(), QStringLiteral("First"));
}

TEST_F(MessageStripTest, AMessageReplacesAnEarlierOneOfItsTopic) {
  strip_.show(message("a", "Old"));
  strip_.show(message("a", "New"));
  EXPECT_EQ(strip_.count(), 1);
  EXPECT_EQ(ended_, QStringList({"Old"}));
}

TEST_F(MessageStripTest, AnAnswerEndsTheMessageWithoutMore) {
  int used = 0;
  StripMessage question = message("q", "Really");
  question.answers = {{QStringLiteral("Yes"), [&used] { ++used; }}};
  strip_.show(question);
  QTest::mouseClick(button(QStringLiteral("Yes")), Qt::LeftButton);
  EXPECT_EQ(used, 1);
  EXPECT_TRUE(strip_.isHidden());
  EXPECT_TRUE(ended_.isEmpty());
}

TEST_F(MessageStripTest, AnAnswerMayShowTheNextMessage) {
  StripMessage question = message("q", "First question");
  question.answers = {{QStringLiteral("Next"), [this] { strip_.show(message("r", "Then this")); }}};
  strip_.show(question);
  QTest::mouseClick(button(QStringLiteral("Next")), Qt::LeftButton);
  EXPECT_EQ(strip_.text(), QStringLiteral("Then this"));
}

TEST_F(MessageStripTest, ANumberIsHandedToTheAnswer) {
  int number = -1;
  StripMessage question = message("n", "Which");
  question.asksNumber = true;
  question.answers = {{QStringLiteral("That"), [&] { number = strip_.number(); }}};
  strip_.show(question);
  strip_.findChild<QSpinBox*>()->setValue(7);
  QTest::mouseClick(button(QStringLiteral("That")), Qt::LeftButton);
  EXPECT_EQ(number, 7);
}

TEST_F(MessageStripTest, AMessageWithALifetimeGoesByItself) {
  StripMessage brief = message("t", "Brief");
  brief.lifetimeMs = 1;
  strip_.show(brief);
  EXPECT_TRUE(QTest::qWaitFor([this] { return strip_.isHidden(); }));
  EXPECT_EQ(ended_, QStringList({"Brief"}));
}

TEST_F(MessageStripTest, TextIsNoMarkup) {
  strip_.show(message("m", "<b>bold</b>"));
  EXPECT_EQ(strip_.text(), QStringLiteral("<b>bold</b>"));
  EXPECT_EQ(strip_.accessibleName(), QStringLiteral("<b>bold</b>"));
}

}  // namespace
}  // namespace playerx::window
