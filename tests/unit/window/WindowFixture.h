#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "playerx/window/actions/ActionSet.h"
#include "playerx/window/actions/FilmCommands.h"
#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/WindowMemory.h"
#include "playerx/window/shell/MainWindow.h"
#include "playerx/window/view/FilmView.h"
#include "playerx/window/view/MessageStrip.h"
#include "tests/unit/window/FakeDesktop.h"
#include "tests/unit/window/FakePlayer.h"
#include "tests/unit/window/Films.h"
#include "tests/unit/window/PartOf.h"
#include "tests/unit/window/RecordingQueue.h"

namespace playerx::window {

/// A whole window on a queue and a player that only write down what they are asked to do.
class WindowTest : public testing::Test {
 protected:
  WindowTest() {
    window_.show();
    QApplication::setActiveWindow(&window_);
  }

  /// The queue holds these films.
  void queue(const QList<Film>& films, bool isPaused = false) {
    QueueUpdate update = queueOf(films);
    update.isPaused = isPaused;
    QSignalSpy shown(&window_, &MainWindow::queueShown);
    Q_EMIT queue_.changed(update);
    if (shown.isEmpty()) shown.wait();
  }

  void select(const QList<FilmId>& ids) {
    view().selectFilms(ids);
    view().setFocus();
  }

  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(QApplication::focusWidget() != nullptr ? QApplication::focusWidget() : &window_,
                    key, modifiers);
  }

  FilmView& view() { return partOf<FilmView>(window_); }
  MessageStrip& strip() { return partOf<MessageStrip>(window_); }
  QAction& action(Verb verb) { return *partOf<ActionSet>(window_).of(verb); }

  QTemporaryDir folder_;
  WindowMemory memory_{folder_.filePath(QStringLiteral("window.ini"))};
  RecordingQueue queue_;
  FakePlayer player_;
  FakeDesktop desktop_;
  MainWindow window_{{queue_, memory_, desktop_, &player_}};
};

}  // namespace playerx::window
