// window-bench: measures the window with few and with many films, on a queue without transfers.

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>

#include "playerx/window/shell/DownloadsPage.h"
#include "playerx/window/shell/MainWindow.h"
#include "playerx/window/shell/WindowMemory.h"
#include "playerx/window/view/FilmView.h"
#include "tests/unit/window/FakeDesktop.h"
#include "tests/unit/window/FakePlayer.h"
#include "tests/unit/window/Films.h"
#include "tests/unit/window/RecordingQueue.h"

namespace playerx::window {
namespace {

/// Processor time of this thread, in milliseconds.
double threadTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

long residentMegabytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return std::stol(line.substr(6)) / 1024;
  }
  return 0;
}

QList<Film> films(int count) {
  QList<Film> films;
  for (int i = 1; i <= count; ++i) {
    films << (i <= 3 ? arriving(static_cast<FilmId>(i), 0) : film(static_cast<FilmId>(i)));
  }
  return films;
}

class Bench {
 public:
  explicit Bench(int count) : films_(films(count)) {
    QElapsedTimer clock;
    clock.start();
    window_ = std::make_unique<MainWindow>(MainWindow::Parts{queue_, memory_, desktop_, nullptr});
    window_->resize(1000, 700);
    window_->show();
    Q_EMIT queue_.changed(queueOf(films_));
    window_->repaint();
    print("first paint, ms", static_cast<double>(clock.nsecsElapsed()) / 1e6);
    print("resident memory, MB", static_cast<double>(residentMegabytes()));
  }

  /// Three films change ten times a second.
  void updates(int seconds) {
    const double before = threadTime();
    QElapsedTimer clock;
    clock.start();
    for (int tick = 0; tick < seconds * 10; ++tick) {
      QueueUpdate update;
      for (qsizetype i = 0; i < 3; ++i) {
        films_[i].arrived += 500'000;
        films_[i].percent = static_cast<int>(films_[i].arrived * 100 / films_[i].size);
        update.films << films_[i];
      }
      Q_EMIT queue_.changed(update);
      QTest::qWait(100);
    }
    const double share = (threadTime() - before) / static_cast<double>(clock.elapsed()) * 100;
    print("UI thread while three films change, % of a core", share);
  }

  void scroll() {
    QScrollBar& bar = *window_->downloads().view().verticalScrollBar();
    constexpr int kFrames = 600;
    const double before = threadTime();
    QElapsedTimer clock;
    clock.start();
    for (int frame = 0; frame < kFrames; ++frame) {
      bar.setValue(bar.maximum() / kFrames * frame);
      window_->downloads().view().viewport()->repaint();
      QApplication::processEvents();
    }
    print("scrolling, frames a second", kFrames * 1e3 / static_cast<double>(clock.elapsed()));
    print("scrolling, ms of processor time a frame", (threadTime() - before) / kFrames);
  }

 private:
  static void print(const char* what, double value) {
    std::cout << std::left << std::setw(52) << what << std::right << std::fixed
              << std::setprecision(1) << std::setw(10) << value << std::endl;
  }

  QTemporaryDir folder_;
  WindowMemory memory_{folder_.filePath(QStringLiteral("window.ini"))};
  RecordingQueue queue_;
  FakeDesktop desktop_;
  QList<Film> films_;
  std::unique_ptr<MainWindow> window_;
};

}  // namespace
}  // namespace playerx::window

int main(int argc, char** argv) {
  QStandardPaths::setTestModeEnabled(true);
  QApplication application(argc, argv);
  for (const int count : {10, 10'000}) {
    std::cout << count << " films\n";
    playerx::window::Bench bench(count);
    if (count > 100) bench.scroll();
    bench.updates(5);
  }
  return 0;
}
