// bench_window: what the window costs with few and with many films.

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFile>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>

#include "bench/Measure.h"
#include "bench/Player.h"
#include "playerx/window/actions/ActionSet.h"
#include "playerx/window/actions/FilmCommands.h"
#include "playerx/window/model/WindowMemory.h"
#include "playerx/window/queue/SessionQueue.h"
#include "playerx/window/shell/FilterBar.h"
#include "playerx/window/shell/MainWindow.h"
#include "playerx/window/view/FilmView.h"
#include "playerx/window/view/MessageStrip.h"
#include "tests/support/Nginx.h"
#include "tests/support/Process.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/window/FakeDesktop.h"
#include "tests/unit/window/FakePlayer.h"
#include "tests/unit/window/Films.h"
#include "tests/unit/window/Heartbeat.h"
#include "tests/unit/window/LiveQueue.h"
#include "tests/unit/window/PartOf.h"
#include "tests/unit/window/RecordingQueue.h"

namespace playerx::window {
namespace {

/// Processor time of this thread, in milliseconds.
double threadTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

void print(const char* what, double value) { std::printf("  %-56s %8.1f\n", what, value); }

/// The window of a player that is started: with a queue file, and the module to be loaded.
void startup(int count) {
  const QTemporaryDir folder;
  bench::writeQueueFile(folder.filePath(QStringLiteral("data/downloadmanager.xml")).toStdString(),
                        count);
  session::SessionOptions options;
  options.dataFolder = folder.filePath(QStringLiteral("data")).toStdString();
  options.mediaFolder = folder.filePath(QStringLiteral("films")).toStdString();
  options.pluginFolder = PLUGINS;
  QElapsedTimer clock;
  clock.start();
  WindowMemory memory(folder.filePath(QStringLiteral("window.ini")));
  SessionQueue queue(options);
  FakeDesktop desktop;
  MainWindow window({queue, memory, desktop, nullptr});
  QSignalSpy shown(&window, &MainWindow::queueShown);
  window.show();
  queue.open(false);
  window.repaint();
  print("first paint, ms", static_cast<double>(clock.nsecsElapsed()) / 1e6);
  shown.wait(60'000);
  window.repaint();
  print("painted with the films of the queue, ms", static_cast<double>(clock.nsecsElapsed()) / 1e6);
}

/// A window over films that come from nowhere.
class Work {
 public:
  explicit Work(int count) {
    for (int i = 1; i <= count; ++i) {
      films_ << (i <= 3 ? arriving(static_cast<FilmId>(i), 0) : film(static_cast<FilmId>(i)));
    }
    window_.resize(1000, 700);
    window_.show();
    Q_EMIT queue_.changed(queueOf(films_));
    window_.repaint();
  }

  /// Three films change ten times a second.
  void update(int seconds) {
    const double before = threadTime();
    QElapsedTimer clock;
    clock.start();
    for (int tick = 0; tick < seconds * 10; ++tick) {
      tellOfThree();
      QTest::qWait(100);
    }
    const double share = (threadTime() - before) / static_cast<double>(clock.elapsed()) * 100;
    print("UI thread while three films change, % of a core", share);
  }

  /// The same, while the user scrolls from one end to the other.
  void scroll() {
    QScrollBar& bar = *partOf<FilmView>(window_).verticalScrollBar();
    constexpr int kFrames = 600;
    const double before = threadTime();
    QElapsedTimer clock, tick;
    clock.start();
    tick.start();
    for (int frame = 0; frame < kFrames; ++frame) {
      if (tick.hasExpired(100)) {
        tellOfThree();
        tick.restart();
      }
      bar.setValue(bar.maximum() / kFrames * frame);
      partOf<FilmView>(window_).viewport()->repaint();
      QApplication::processEvents();
    }
    print("scrolling meanwhile, frames a second",
          kFrames * 1e3 / static_cast<double>(clock.elapsed()));
    print("  processor time of a frame, ms", (threadTime() - before) / kFrames);
  }

 private:
  void tellOfThree() {
    QueueUpdate update;
    for (qsizetype i = 0; i < 3; ++i) {
      films_[i].arrived += 500'000;
      films_[i].percent = static_cast<int>(films_[i].arrived * 100 / films_[i].size);
      update.films << films_[i];
    }
    Q_EMIT queue_.changed(update);
  }

  QTemporaryDir folder_;
  WindowMemory memory_{folder_.filePath(QStringLiteral("window.ini"))};
  RecordingQueue queue_;
  FakeDesktop desktop_;
  QList<Film> films_;
  MainWindow window_{{queue_, memory_, desktop_, nullptr}};
};

/// Megabytes that a process has held at most.
double peakOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) * 1.024e-3;
  }
  return 0;
}

/// Both programs with the same queue, while one more film is downloaded.
void memory(int count) {
  const QTemporaryDir folder;
  const std::string data = folder.filePath(QStringLiteral("data")).toStdString();
  const std::string films = folder.filePath(QStringLiteral("films")).toStdString();
  const support::Nginx server;
  server.serve("a.avi", std::string(10'000, 'a'));
  bench::writeQueueFile(data + "/downloadmanager.xml", count);
  const double cli =
      bench::run({PLAYERX_CLI, "--data", data, "--media", films, "get", server.url("/a.avi")})
          .memory *
      1.048576;
  server.serve("b.avi", std::string(10'000, 'b'));
  support::ProcessOptions options;
  options.arguments = {PLAYERX, "--data", data, "--media", films, server.url("/b.avi")};
  support::Process window(options);
  support::waitFor([&] { return std::filesystem::exists(films + "/b.avi"); });
  print("resident at most, playerx, MB", peakOf(window.pid()));
  print("resident at most, playerx-cli get, MB", cli);
  window.send(SIGTERM);
  window.wait();
}

/// For how long the UI thread hears of nothing while `act` is done, and what follows from it until
/// `isDone`: by the clock, and in processor time of its own.
template <class Act, class IsDone>
void freeze(const char* what, Act act, IsDone isDone) {
  constexpr int kPaintedMs = 400;
  const Heartbeat heart;
  act();
  if (!QTest::qWaitFor(isDone, 120'000)) std::printf("not done: ");
  QTest::qWait(kPaintedMs);
  std::printf("  %-56s %8.1f %8.1f\n", what, heart.longestGapMs(), heart.longestWorkMs());
}

QString addresses(int count) {
  QStringList lines;
  for (int i = 0; i < count; ++i) lines << QStringLiteral("https://films.example/%1.avi").arg(i);
  return lines.join(u'\n');
}

/// What people hand over, in a window with the download manager at work.
void freezesOfInputs() {
  for (const int count : {1000, 10'000}) {
    LiveQueue live;
    live.isShown();
    live.queue().pauseAll();
    MainWindow& window = live.window();
    std::printf("  %d addresses\n", count);
    freeze(
        "copied", [&] { QApplication::clipboard()->setText(addresses(count)); },
        [&] { return partOf<ActionSet>(window).of(Verb::kPaste)->isEnabled(); });
    freeze(
        "pasted and added", [&] { partOf<ActionSet>(window).of(Verb::kPaste)->trigger(); },
        [&] { return partOf<FilmModel>(window).rowCount() == count; });
    freeze(
        "shown in the dialog",
        [&] { partOf<ActionSet>(window).of(Verb::kAddAddresses)->trigger(); }, [] { return true; });
    QApplication::clipboard()->clear();
  }
  LiveQueue live;
  live.isShown();
  QFile ticket(live.file(QStringLiteral("large.tix")));
  if (ticket.open(QIODevice::WriteOnly)) {
    ticket.write("TixVeskVersion=1.0\n" + QByteArray("end\n").repeated(15'000'000));
  }
  ticket.close();
  freeze(
      "a ticket of 60 MB", [&] { live.window().take({ticket.fileName()}); },
      [&] { return !partOf<MessageStrip>(live.window()).text().isEmpty(); });
}

/// What is done with a long list, every other film of which is done.
void freezesOfTheList(int count) {
  const QTemporaryDir folder;
  WindowMemory memory{folder.filePath(QStringLiteral("window.ini"))};
  RecordingQueue queue;
  FakeDesktop desktop;
  MainWindow window{{queue, memory, desktop, nullptr}};
  QList<Film> films, left;
  for (int i = 1; i <= count; ++i) {
    films << film(static_cast<FilmId>(i), i % 2 == 0 ? FilmState::kDone : FilmState::kWaiting);
    if (i % 2 != 0) left << films.last();
  }
  window.resize(1000, 700);
  window.show();
  const auto trigger = [&](Verb verb) {
    return [&, verb] { partOf<ActionSet>(window).of(verb)->trigger(); };
  };
  const auto atOnce = [] { return true; };
  freeze(
      "the whole queue comes", [&] { Q_EMIT queue.changed(queueOf(films)); }, atOnce);
  freeze("all are chosen", trigger(Verb::kSelectAll), atOnce);
  freeze(
      "a filter hides every other film", [&] { partOf<FilterBar>(window).setGroup(1); }, atOnce);
  freeze(
      "and is taken away", [&] { partOf<FilterBar>(window).setGroup(0); }, atOnce);
  freeze("every other film is cleared", trigger(Verb::kClearDone), atOnce);
  freeze("and comes back", trigger(Verb::kUndo), atOnce);
  freeze(
      "every other film is gone", [&] { Q_EMIT queue.changed(queueOf(left)); }, atOnce);
  std::reverse(left.begin(), left.end());
  freeze(
      "the order is turned round", [&] { Q_EMIT queue.changed(queueOf(left)); }, atOnce);
}

}  // namespace
}  // namespace playerx::window

int main(int argc, char** argv) {
  QStandardPaths::setTestModeEnabled(true);
  QApplication application(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Vesk"));
  QApplication::setApplicationName(QStringLiteral("VeskPlayerX"));
  // What Qt loads for the first window of a program is not what a queue costs.
  { const QWidget first; }
  for (const int count : {10, 10'000}) {
    std::printf("%d films\n", count);
    playerx::window::startup(count);
    playerx::window::Work work(count);
    if (count > 100) work.scroll();
    work.update(5);
    playerx::window::memory(count);
  }
  std::printf("without an event for at most, ms (the clock; work)\n");
  playerx::window::freezesOfInputs();
  playerx::window::freezesOfTheList(10'000);
  return 0;
}
