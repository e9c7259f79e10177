#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QRandomGenerator>
#include <iostream>

#include "playerx/window/model/FilmFilter.h"
#include "playerx/window/shell/FilterBar.h"
#include "tests/unit/window/Heartbeat.h"
#include "tests/unit/window/LiveQueue.h"
#include "tests/unit/window/PartOf.h"
#include "tests/unit/window/SimulatedQueue.h"
#include "tests/unit/window/WindowFixture.h"

namespace playerx::window {
namespace {

constexpr Qt::Key kKeys[] = {
    Qt::Key_Up,    Qt::Key_Down,  Qt::Key_Left,  Qt::Key_Right,  Qt::Key_PageUp, Qt::Key_PageDown,
    Qt::Key_Home,  Qt::Key_End,   Qt::Key_Space, Qt::Key_Return, Qt::Key_Delete, Qt::Key_Escape,
    Qt::Key_Tab,   Qt::Key_A,     Qt::Key_F,     Qt::Key_N,      Qt::Key_P,      Qt::Key_R,
    Qt::Key_Z,     Qt::Key_V,     Qt::Key_C,     Qt::Key_1,      Qt::Key_2,      Qt::Key_F11,
    Qt::Key_Comma, Qt::Key_Insert};

constexpr Qt::KeyboardModifiers kModifiers[] = {Qt::NoModifier, Qt::NoModifier, Qt::ControlModifier,
                                                Qt::ShiftModifier,
                                                Qt::ControlModifier | Qt::ShiftModifier};

/// A user without a plan: presses keys, clicks, types, drops and chooses whatever there is. The
/// same seed does the same.
class Monkey {
 public:
  Monkey(MainWindow& window, QStringList addresses, quint32 seed)
      : window_(window), addresses_(std::move(addresses)), random_(seed) {}

  void act() {
    using Deed = void (Monkey::*)();
    static constexpr Deed kDeeds[] = {
        &Monkey::pressKey, &Monkey::pressKey,  &Monkey::pressKey,    &Monkey::choose,
        &Monkey::choose,   &Monkey::click,     &Monkey::click,       &Monkey::doubleClick,
        &Monkey::filter,   &Monkey::dropText,  &Monkey::dropFilms,   &Monkey::fillClipboard,
        &Monkey::openMenu, &Monkey::addInputs, &Monkey::closeDialog, &Monkey::resize,
    };
    (this->*kDeeds[any(std::size(kDeeds))])();
    // No dialog stays open for long: behind it nothing can be done.
    if (!chance(3)) closeDialog();
  }

  /// Leaves the window as it is when nobody has touched it, but for the queue.
  void calmDown() {
    while (QApplication::activePopupWidget() != nullptr) closeDialog();
    for (QDialog* const dialog : window_.findChildren<QDialog*>()) dialog->reject();
    partOf<FilterBar>(window_).clear();
    partOf<FilmCommands>(window_).finish();
  }

 private:
  int any(auto count) { return random_.bounded(static_cast<int>(count)); }
  bool chance(int of) { return random_.bounded(of) == 0; }

  QWidget& viewport() { return *partOf<FilmView>(window_).viewport(); }
  QPoint anywhere(const QWidget& widget) {
    return {any(std::max(widget.width(), 1)), any(std::max(widget.height(), 1))};
  }

  void pressKey() {
    QWidget* const target = QApplication::focusWidget();
    QTest::keyClick(target != nullptr ? target : &window_, kKeys[any(std::size(kKeys))],
                    kModifiers[any(std::size(kModifiers))]);
  }

  void choose() {
    const Verb verb = verbFacts()[any(verbFacts().size())].verb;
    QAction& action = *partOf<ActionSet>(window_).of(verb);
    if (verb != Verb::kQuit && action.isEnabled()) action.trigger();
  }

  void click() {
    QTest::mouseClick(&viewport(), Qt::LeftButton, anyModifier(), anywhere(viewport()));
  }

  void doubleClick() {
    QTest::mouseDClick(&viewport(), Qt::LeftButton, Qt::NoModifier, anywhere(viewport()));
  }

  Qt::KeyboardModifiers anyModifier() { return kModifiers[any(std::size(kModifiers))]; }

  void filter() {
    static const QStringList kWords = {"", "film", "1", "done", "waiting", "nothing like this"};
    partOf<FilterBar>(window_).findChild<QLineEdit*>()->setText(kWords[any(kWords.size())]);
    if (chance(2)) partOf<FilterBar>(window_).setGroup(any(4));
  }

  void fillClipboard() { QApplication::clipboard()->setText(anyText()); }

  QString anyText() {
    static const QStringList kNonsense = {"",         "see you tonight", QString(3000, u'x'),
                                          "https://", "\u202Eevil",      "file:///etc/passwd"};
    return chance(2) ? addresses_[any(addresses_.size())] : kNonsense[any(kNonsense.size())];
  }

  void dropText() {
    QMimeData data;
    data.setText(anyText());
    drop(data);
  }

  void dropFilms() {
    FilmModel& films = partOf<FilmModel>(window_);
    if (films.rowCount() == 0) return;
    const std::unique_ptr<QMimeData> data(
        films.mimeData({films.index(any(films.rowCount())), films.index(any(films.rowCount()))}));
    drop(*data);
  }

  void drop(QMimeData& data) {
    const QPoint place = anywhere(viewport());
    const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
    QDragEnterEvent enter(place, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&viewport(), &enter);
    QDropEvent drop(place, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&viewport(), &drop);
  }

  void openMenu() {
    Q_EMIT partOf<FilmView>(window_).customContextMenuRequested(anywhere(viewport()));
  }

  void addInputs() {
    window_.take(chance(5) ? QStringList({"/nowhere/one.tix"})
                           : QStringList({addresses_[any(addresses_.size())]}));
  }

  void closeDialog() {
    if (QWidget* const popup = QApplication::activePopupWidget()) popup->close();
    for (QDialog* const dialog : window_.findChildren<QDialog*>()) {
      if (dialog->isVisible()) chance(2) ? dialog->accept() : dialog->reject();
    }
    QApplication::setActiveWindow(&window_);
  }

  void resize() { window_.resize(300 + any(900), 200 + any(700)); }

  MainWindow& window_;
  const QStringList addresses_;
  QRandomGenerator random_;
};

/// What the environment asks for: PLAYERX_RANDOM_SECONDS of random actions, of PLAYERX_RANDOM_SEED.
class RandomActionsTest : public testing::Test {
 protected:
  static quint32 seed() { return qEnvironmentVariable("PLAYERX_RANDOM_SEED", "1").toUInt(); }

  /// Acts so many times, or for the time that was asked for.
  template <class Advance>
  void rage(MainWindow& window, Monkey& monkey, int actions, Advance advance) {
    const qint64 longest = qEnvironmentVariableIntValue("PLAYERX_RANDOM_SECONDS") * 1000;
    const QAbstractItemModelTester films(&partOf<FilmModel>(window),
                                         QAbstractItemModelTester::FailureReportingMode::Fatal);
    const QAbstractItemModelTester shown(partOf<FilmView>(window).model(),
                                         QAbstractItemModelTester::FailureReportingMode::Fatal);
    const Heartbeat heart;
    QElapsedTimer clock;
    clock.start();
    int done = 0;
    while (longest > 0 ? !clock.hasExpired(longest) : done < actions) {
      monkey.act();
      advance();
      QApplication::processEvents();
      ++done;
    }
    std::cout << done << " actions of seed " << seed() << ", longest gap " << heart.longestGapMs()
              << " ms, longest work " << heart.longestWorkMs() << " ms\n";
    monkey.calmDown();
  }

  static QList<FilmId> shownFilms(MainWindow& window) {
    QList<FilmId> ids;
    const QAbstractItemModel& model = *partOf<FilmView>(window).model();
    for (int row = 0; row < model.rowCount(); ++row) {
      ids << model.index(row, 0).data(FilmModel::kIdRole).value<FilmId>();
    }
    return ids;
  }
};

TEST_F(RandomActionsTest, LeaveTheListAsTheQueueIs) {
  QTemporaryDir folder;
  WindowMemory memory(folder.filePath(QStringLiteral("window.ini")));
  SimulatedQueue queue(seed());
  FakeDesktop desktop;
  FakePlayer player;
  MainWindow window({queue, memory, desktop, &player});
  window.show();
  QApplication::setActiveWindow(&window);
  QStringList addresses;
  for (int i = 0; i < 9; ++i) addresses << QStringLiteral("https://films.example/%1.avi").arg(i);
  queue.add(addresses);

  Monkey monkey(window, addresses, seed());
  rage(window, monkey, 1500, [&queue] { queue.advance(); });
  EXPECT_TRUE(QTest::qWaitFor([&] { return shownFilms(window) == queue.ids(); }, 10'000));
}

TEST_F(RandomActionsTest, DoNoHarmWithTheDownloadManagerAtWork) {
  LiveQueue live;
  MainWindow& window = live.window();
  Monkey monkey(window, live.someAddresses(), seed());
  ASSERT_TRUE(live.isShown());
  rage(window, monkey, 300, [] {});
  window.take({live.freshAddress()});
  const auto isFresh = [&](const Film& film) { return film.address == live.freshAddress(); };
  EXPECT_TRUE(QTest::qWaitFor(
      [&] {
        const std::vector<Film>& films = partOf<FilmModel>(window).films();
        return std::any_of(films.begin(), films.end(), isFresh);
      },
      30'000))
      << "it still takes films";
}

}  // namespace
}  // namespace playerx::window
