#pragma once

#include <QApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <optional>

#include "playerx/app/session/DataFolderLock.h"
#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/WindowMemory.h"
#include "playerx/window/queue/SessionQueue.h"
#include "playerx/window/shell/MainWindow.h"
#include "tests/support/Nginx.h"
#include "tests/unit/window/FakeDesktop.h"
#include "tests/unit/window/FakePlayer.h"
#include "tests/unit/window/OwnSettings.h"

namespace playerx::window {

/// A whole window with the download manager at work behind it, on folders of its own, and a web
/// server with films.
class LiveQueue {
 public:
  struct Options {
    QString plugins = QStringLiteral(PLUGINS);
    bool isHeld = false;  ///< the data folder, as by another process, until `releaseFolder`
  };

  LiveQueue() : LiveQueue(Options{}) {}
  explicit LiveQueue(const Options& options) : plugins_(options.plugins) {
    for (int i = 0; i < 5; ++i) server_.serve(std::to_string(i) + ".avi", std::string(9000, 'f'));
    if (options.isHeld) lock_.emplace(data().toStdString());
    window_.show();
    QApplication::setActiveWindow(&window_);
    queue_.open(false);
  }

  void releaseFolder() { lock_.reset(); }

  MainWindow& window() { return window_; }
  SessionQueue& queue() { return queue_; }
  QString data() const { return folder_.filePath(QStringLiteral("data")); }
  QString media() const { return folder_.filePath(QStringLiteral("films")); }
  QString file(const QString& name) const { return folder_.filePath(name); }

  /// Whether the queue has been opened and shown.
  bool isShown() {
    return QTest::qWaitFor([this] { return shown_.size() > 0; }, 30'000);
  }

  QString address(const QString& name) const {
    return QString::fromStdString(server_.url("/" + name.toStdString()));
  }

  /// Films that are there, one that is missing, and one of a server that is not there.
  QStringList someAddresses() const {
    QStringList addresses = {address(QStringLiteral("missing.avi")),
                             QStringLiteral("http://127.0.0.1:1/nobody.avi")};
    for (int i = 0; i < 4; ++i) addresses << address(QStringLiteral("%1.avi").arg(i));
    return addresses;
  }
  QString freshAddress() const { return address(QStringLiteral("4.avi")); }

 private:
  session::SessionOptions options() const {
    session::SessionOptions options;
    options.dataFolder = data().toStdString();
    options.mediaFolder = media().toStdString();
    options.pluginFolder = plugins_.toStdString();
    return options;
  }

  const QString plugins_;
  OwnSettings settings_;
  QTemporaryDir folder_;
  std::optional<session::DataFolderLock> lock_;
  support::Nginx server_;
  WindowMemory memory_{folder_.filePath(QStringLiteral("window.ini"))};
  FakeDesktop desktop_;
  FakePlayer player_;
  SessionQueue queue_{options()};
  MainWindow window_{{queue_, memory_, desktop_, &player_}};
  QSignalSpy shown_{&window_, &MainWindow::queueShown};
};

}  // namespace playerx::window
