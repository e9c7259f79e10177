#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>

#include "tests/unit/window/PartOf.h"
#include "tests/unit/window/WindowFixture.h"

namespace playerx::window {
namespace {

/// A window in which the verb can be carried out.
class EveryActionTest : public WindowTest, public testing::WithParamInterface<Verb> {
 protected:
  EveryActionTest() {
    QApplication::clipboard()->setText(QStringLiteral("https://a.example/1.avi"));
    queue({arriving(1, 40), film(2), film(3, FilmState::kStopped), film(4, FilmState::kDone),
           failed(5, {}, {}), film(6, FilmState::kDone)},
          GetParam() == Verb::kResumeAll);
    partOf<FilmCommands>(window_).carryOut(Verb::kRemove, {6});
    select({filmFor(GetParam())});
  }

  ~EveryActionTest() override {
    for (QDialog* const dialog : window_.findChildren<QDialog*>()) dialog->reject();
    QApplication::clipboard()->clear();
  }

  static FilmId filmFor(Verb verb) {
    switch (verb) {
      case Verb::kMoveDown:
      case Verb::kMoveToBottom:
        return 1;
      case Verb::kGoOn:
        return 3;
      case Verb::kPlay:
      case Verb::kShowInFolder:
      case Verb::kRemoveWithFile:
        return 4;
      case Verb::kRetry:
        return 5;
      default:
        return 2;
    }
  }

  /// The menu of the menu bar that holds the verb.
  QMenu* menu() {
    for (QMenu* const menu : window_.menuBar()->findChildren<QMenu*>()) {
      if (menu->actions().contains(&action(GetParam()))) return menu;
    }
    return nullptr;
  }

  QList<Verb> triggered() const {
    QList<Verb> verbs;
    for (const QList<QVariant>& each : spy_) verbs << each[0].value<Verb>();
    return verbs;
  }

  QSignalSpy spy_{&partOf<ActionSet>(window_), &ActionSet::triggered};
};

TEST_P(EveryActionTest, AnswersToEachOfItsKeys) {
  for (const QKeySequence& keys : shortcutsOf(GetParam())) {
    spy_.clear();
    QTest::keySequence(&view(), keys);
    EXPECT_EQ(triggered(), QList<Verb>({GetParam()})) << keys.toString().toStdString();
    for (QDialog* const dialog : window_.findChildren<QDialog*>()) dialog->reject();
    QApplication::setActiveWindow(&window_);
    window_.showDownloads();
    select({filmFor(GetParam())});
  }
}

TEST_P(EveryActionTest, IsReachedFromTheMenuBarWithTheMouse) {
  QMenu* const menu = this->menu();
  ASSERT_NE(menu, nullptr);
  menu->popup(window_.mapToGlobal(QPoint(0, 0)));
  QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                    menu->actionGeometry(&action(GetParam())).center());
  EXPECT_EQ(triggered(), QList<Verb>({GetParam()}));
}

TEST_P(EveryActionTest, IsReachedFromTheMenuBarWithTheKeyboardAlone) {
  QMenu* const menu = this->menu();
  ASSERT_NE(menu, nullptr);
  menu->popup(window_.mapToGlobal(QPoint(0, 0)));
  const QString text = action(GetParam()).text();
  const QChar letter = text[text.indexOf(u'&') + 1];
  ASSERT_TRUE(text.contains(u'&')) << text.toStdString();
  QTest::keyClick(menu, letter.toLower().toLatin1());
  EXPECT_EQ(triggered(), QList<Verb>({GetParam()}));
}

QList<Verb> allVerbs() {
  QList<Verb> verbs;
  for (const VerbFacts& facts : verbFacts()) verbs << facts.verb;
  return verbs;
}

std::string nameOf(const testing::TestParamInfo<Verb>& info) {
  QString name = QString::fromLatin1(factsOf(info.param).text);
  name.removeIf([](QChar letter) { return !letter.isLetter() || letter.unicode() > 127; });
  return name.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Verbs, EveryActionTest, testing::ValuesIn(allVerbs()), nameOf);

}  // namespace
}  // namespace playerx::window
