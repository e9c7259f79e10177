#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSlider>
#include <QTabWidget>

#include "playerx/window/dialogs/AddAddressesDialog.h"
#include "playerx/window/dialogs/PreferencesDialog.h"
#include "playerx/window/model/FilmText.h"
#include "playerx/window/playback/WatchingPage.h"
#include "tests/unit/window/WindowFixture.h"

namespace playerx::window {
namespace {

/// What a person is to operate: for each a screen reader needs words.
bool isControl(const QWidget& widget) {
  return qobject_cast<const QAbstractButton*>(&widget) != nullptr ||
         qobject_cast<const QComboBox*>(&widget) != nullptr ||
         qobject_cast<const QLineEdit*>(&widget) != nullptr ||
         qobject_cast<const QPlainTextEdit*>(&widget) != nullptr ||
         qobject_cast<const QAbstractSlider*>(&widget) != nullptr ||
         qobject_cast<const QAbstractSpinBox*>(&widget) != nullptr ||
         qobject_cast<const QAbstractItemView*>(&widget) != nullptr;
}

/// Parts that Qt makes of a control of its own are reached through that control.
bool isOwn(const QWidget& widget) {
  const QWidget* const parent = widget.parentWidget();
  return !widget.objectName().startsWith(QLatin1String("qt_")) &&
         qobject_cast<const QComboBox*>(parent) == nullptr &&
         qobject_cast<const QAbstractSpinBox*>(parent) == nullptr &&
         qobject_cast<const QLineEdit*>(parent) == nullptr &&
         qobject_cast<const QTabBar*>(parent) == nullptr && !widget.inherits("QScrollBar") &&
         !widget.inherits("QComboBoxListView");
}

void expectNames(QWidget& top) {
  for (QWidget* const widget : top.findChildren<QWidget*>()) {
    if (!isControl(*widget) || !isOwn(*widget) || !widget->isVisible()) continue;
    const QAccessibleInterface* const face = QAccessible::queryAccessibleInterface(widget);
    ASSERT_NE(face, nullptr);
    EXPECT_FALSE(face->text(QAccessible::Name).isEmpty())
        << widget->metaObject()->className() << " in " << top.metaObject()->className();
    EXPECT_NE(face->role(), QAccessible::NoRole) << widget->metaObject()->className();
  }
}

/// Nothing is smaller than its words need.
void expectRoomForTheWords(QWidget& top) {
  for (QWidget* const widget : top.findChildren<QWidget*>()) {
    const bool hasWords = qobject_cast<QAbstractButton*>(widget) != nullptr ||
                          qobject_cast<QComboBox*>(widget) != nullptr;
    const auto* const label = qobject_cast<QLabel*>(widget);
    if (!widget->isVisible() || !isOwn(*widget)) continue;
    if (hasWords || (label != nullptr && !label->wordWrap() && !label->text().isEmpty())) {
      const QSize needed = widget->minimumSizeHint();
      EXPECT_TRUE(widget->width() >= needed.width() && widget->height() >= needed.height())
          << widget->metaObject()->className() << " in " << top.metaObject()->className() << ", "
          << widget->width() << " by " << widget->height() << " instead of " << needed.width()
          << " by " << needed.height() << ": "
          << (label != nullptr ? label->text().toStdString() : "");
    }
  }
}

class AccessibilityTest : public WindowTest {
 protected:
  /// Shows every page and strip that the window has.
  template <class Check>
  void onEveryPage(Check check) {
    queue({arriving(1, 40), failed(2, QStringLiteral("http_404"), QStringLiteral("No film."))});
    Q_EMIT queue_.slotAsked({5, QStringLiteral("Protected")});
    QApplication::processEvents();
    check(window_);
    player_.show(playing());
    window_.showWatching();
    QApplication::processEvents();
    check(window_);
    AddAddressesDialog add(QStringLiteral("https://a.example/1.avi"));
    PreferencesDialog preferences({}, {});
    for (QDialog* const dialog :
         {static_cast<QDialog*>(&add), static_cast<QDialog*>(&preferences)}) {
      dialog->show();
      QApplication::processEvents();
      check(*dialog);
    }
    auto* const tabs = preferences.findChild<QTabWidget*>();
    for (int tab = 1; tab < tabs->count(); ++tab) {
      tabs->setCurrentIndex(tab);
      QApplication::processEvents();  // lays the page out
      check(preferences);
    }
  }
};

TEST_F(AccessibilityTest, EveryControlHasANameAndARole) { onEveryPage(expectNames); }

TEST_F(AccessibilityTest, NothingIsCutWithALargeFont) {
  const QFont usual = QApplication::font();
  QFont large = usual;
  large.setPointSizeF(usual.pointSizeF() * 1.5);
  QApplication::setFont(large);
  onEveryPage(expectRoomForTheWords);
  QApplication::setFont(usual);
}

class RowNameTest : public testing::TestWithParam<FilmState> {};

TEST_P(RowNameTest, HoldsTheTitleAndTheState) {
  const QString name = accessibleText(film(7, GetParam()));
  EXPECT_TRUE(name.startsWith(QStringLiteral("Film 7, "))) << name.toStdString();
  EXPECT_TRUE(name.contains(stateWord(GetParam()))) << name.toStdString();
}

INSTANTIATE_TEST_SUITE_P(States, RowNameTest,
                         testing::Values(FilmState::kWaiting, FilmState::kConnecting,
                                         FilmState::kDownloading, FilmState::kPaused,
                                         FilmState::kDone, FilmState::kFailed, FilmState::kStopped,
                                         FilmState::kHeld));

}  // namespace
}  // namespace playerx::window
