// What the length of the queue costs:
//
//     bench_long_queue [--rounds N] [--minute SECONDS] [--only NAME]

#include <fcntl.h>
#include <libxml/parser.h>
#include <malloc.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <thread>

#include "bench/Measure.h"
#include "bench/Player.h"
#include "tests/support/Nginx.h"
#include "tests/system/BigFile.h"

namespace {

namespace fs = std::filesystem;
using bench::Player;
using bench::quantile;
using bench::secondsOf;

struct Plan {
  int rounds = 3;
  int minute = 60;   ///< seconds
  std::string only;  ///< the measurement; empty: all
};

const fs::path kPlugins = fs::path(PLAYERX_CLI).parent_path() / "../lib/plugins";

double median(const std::vector<double>& values) { return quantile(values, 0.5); }

std::string bytesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

double secondsOfParsing(const fs::path& file) {
  const std::string bytes = bytesOf(file);
  const double seconds = secondsOf([&bytes] {
    xmlFreeDoc(
        xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), "queue.xml", nullptr, 0));
  });
  // The allocator would sort the pieces of the freed tree within what is measured next.
  ::malloc_trim(0);
  return seconds;
}

/// One file of 10 kB and a session; the files have different names.
class SmallFilms {
 public:
  explicit SmallFilms(int count) {
    for (int i = 0; i < count; ++i) {
      system_test::writeDistinctFile(server_.root() / nameOf(i), 10'000, i);
    }
  }

  /// The time from adding a film to its completion, for each of some that come one after another.
  std::vector<double> fetch(Player& player, int count) {
    std::vector<double> seconds;
    for (int i = 0; i < count; ++i) {
      seconds.push_back(secondsOf([&] {
        player.add(server_.url("/" + nameOf(next_++)));
        player.waitUntilIdle();
      }));
    }
    return seconds;
  }

  std::string nextUrl() { return server_.url("/" + nameOf(next_++)); }

 private:
  static std::string nameOf(int number) { return "small-" + std::to_string(number) + ".avi"; }

  support::Nginx server_;
  int next_ = 0;
};

void filmBesideOthers(const Plan& plan, const fs::path& home) {
  constexpr int kFilms = 20;
  std::vector<double> alone;
  std::printf("A film of 10 kB beside other items (median of %d films, %d rounds)\n", kFilms,
              plan.rounds);
  for (const int others : {0, 1'000, 10'000, 100'000}) {
    std::vector<double> times, ratios;
    for (int round = 0; round < plan.rounds; ++round) {
      SmallFilms films(2 * kFilms);
      double without = 0;
      {
        Player player(home, kPlugins, 0);
        player.open();
        player.start();
        without = median(films.fetch(player, kFilms));
      }
      Player player(home, kPlugins, others);
      player.open();
      player.start();
      times.push_back(median(films.fetch(player, kFilms)));
      ratios.push_back(times.back() / without);
    }
    std::printf("  %7d others %9.2f ms   %6.2f of that without\n", others, 1e3 * median(times),
                median(ratios));
  }
}

/// The time of one call of `change` with 1, 2, 3...
double secondsEach(int count, const std::function<void(int)>& change) {
  for (int i = 1; i <= 3; ++i) change(i);  // the file's versions are made
  const double all = secondsOf([&] {
    for (int i = 4; i < 4 + count; ++i) change(i);
  });
  return all / count;
}

double secondsOfOneWrite(const fs::path& file, int count) {
  const std::string bytes = bytesOf(file);
  const std::string other = file.string() + ".other";
  const int descriptor = ::open(other.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
  const double each = secondsEach(count, [&](int) {
    if (::pwrite(descriptor, bytes.data(), bytes.size(), 0) < 0) std::abort();
  });
  ::close(descriptor);
  fs::remove(other);
  return each;
}

void announcements(const fs::path& home) {
  std::printf(
      "One announcement, saved and told: nothing in the file changes, a number does, a number "
      "grows "
      "by a digit; one write of the same bytes\n");
  for (const int items : {10, 1'000, 10'000, 100'000}) {
    Player player(home, kPlugins, items);
    player.open();
    const unsigned int first = player.session().reader().getVersions().front().id;
    const int count = std::max(20, 20'000 / items);
    const double same =
        secondsEach(count, [&](int i) { player.manager().updateSlotAssignment(first, i); });
    const double changed =
        secondsEach(count, [&](int i) { player.manager().updateSize(first, 10'000 + i % 1'000); });
    const double longer = secondsEach(
        count, [&](int i) { player.manager().updateSize(first, i % 2 == 0 ? 9'999 : 10'000); });
    const double write = secondsOfOneWrite(player.queueFile(), count);
    std::printf("  %7d items %9.3f ms %9.3f ms %9.3f ms; write %9.3f ms\n", items, 1e3 * same,
                1e3 * changed, 1e3 * longer, 1e3 * write);
  }
}

void movesToTheTop(const fs::path& home) {
  std::printf("moveToTop of the last item, every step announced and saved\n");
  for (const int items : {1'000, 10'000}) {
    Player player(home, kPlugins, items);
    player.open();
    const unsigned int last = player.session().reader().getVersions().back().id;
    const double seconds = secondsOf([&] { player.manager().moveToTop(last); });
    std::printf("  %7d items %9.3f s\n", items, seconds);
  }
}

void starts(const Plan& plan, const fs::path& home) {
  std::printf("Start until the first byte of a new film flows; list; beside a parse by libxml2\n");
  for (const int items : {10'000, 100'000}) {
    SmallFilms films(plan.rounds);
    std::vector<double> begins, lists, parses;
    for (int round = 0; round < plan.rounds; ++round) {
      const std::string url = films.nextUrl();
      Player player(home, kPlugins, items);
      parses.push_back(secondsOfParsing(player.queueFile()));
      lists.push_back(bench::run({PLAYERX_CLI, "--data", (home / "data").string(), "list"}).wall);
      begins.push_back(secondsOf([&] {
        player.open();
        player.start();
        player.add(url);
        while (player.arrived(url) == 0) std::this_thread::yield();
      }));
      player.waitUntilIdle();
    }
    std::printf("  %7d items: start %.3f s (%.2f), list %.3f s (%.2f), parse %.3f s\n", items,
                median(begins), median(begins) / median(parses), median(lists),
                median(lists) / median(parses), median(parses));
  }
}

void memory(const fs::path& home) {
  fs::remove_all(home);
  const fs::path file = home / "data/downloadmanager.xml";
  bench::writeQueueFile(file, 100'000);
  SmallFilms films(1);
  const double megabytes = static_cast<double>(fs::file_size(file)) / 1e6;
  const auto run = [&](const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {PLAYERX_CLI, "--data", home / "data", "--media",
                                        home / "films"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return bench::run(command).memory * 1.048576;
  };
  const double got = run({"get", films.nextUrl()});
  const double listed = run({"list"});
  std::printf(
      "Resident memory at most, 100,000 items\n  file %.1f MB, get %.1f MB (%.1f), list "
      "%.1f MB (%.1f)\n",
      megabytes, got, got / megabytes, listed, listed / megabytes);
}

void printTimes(const char* what, const std::vector<double>& seconds) {
  std::printf("  %-10s median %7.2f ms, 99 %% under %7.2f ms, most %7.2f ms\n", what,
              1e3 * median(seconds), 1e3 * quantile(seconds, 0.99), 1e3 * quantile(seconds, 1));
}

/// Whether the library is at work on the first item. The item itself keeps its status between two
/// transfers.
bool isFirstArriving(playerx::session::PlayerSession& session) {
  const VeskPlayerX::QueuedVersion first = session.reader().getVersions().front();
  const std::unique_ptr<VeskPlayerX::DownloadItemInterface> item(
      session.reader().getCopy(first.id));
  const auto transfer = session.findTransfer(playerx::model::stateOf(*item).url);
  return first.status == DownloadStatusDownloading && transfer &&
         transfer->phase == playerx::TransferPhase::kArriving;
}

/// Interrupts the transfer of the first item again and again, beside 10,000 others.
void latencies(const fs::path& home, const char* kind, const std::string& rate, int count) {
  const support::Nginx server({.limitRate = rate});
  system_test::writeDistinctFile(server.root() / "one.avi", 500'000'000);
  system_test::writeDistinctFile(server.root() / "two.avi", 500'000'000, 1);
  const std::string one = server.url("/one.avi"), two = server.url("/two.avi");
  Player player(home, kPlugins, 10'000);
  player.open();
  player.start();
  player.add(one);
  player.add(two);
  std::vector<double> pauses, resumes, cancels, moves;
  const auto waitForTransfer = [&] {
    player.waitUntil([&] { return isFirstArriving(player.session()); });
  };
  for (int i = 0; i < count; ++i) {
    waitForTransfer();
    pauses.push_back(secondsOf([&] { player.manager().pause(); }));
    resumes.push_back(secondsOf([&] { player.manager().resume(); }));
    waitForTransfer();
    cancels.push_back(secondsOf([&] { player.manager().cancel(); }));
    waitForTransfer();
    const unsigned int second = player.session().reader().getVersions()[1].id;
    moves.push_back(secondsOf([&] { player.manager().moveUp(second); }));
  }
  player.manager().pause();
  std::printf("Operations beside 10,000 items while a transfer %s (%d times each)\n", kind, count);
  printTimes("pause", pauses);
  printTimes("resume", resumes);
  printTimes("cancel", cancels);
  printTimes("moveUp", moves);
}

/// How often the threads of this process have gone to sleep of themselves.
long sleepsOfAllThreads() {
  long sleeps = 0;
  for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
    std::ifstream status(thread.path() / "status");
    constexpr std::string_view kField = "voluntary_ctxt_switches:";
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with(kField)) sleeps += std::stol(line.substr(kField.size()));
    }
  }
  return sleeps;
}

void idle(const Plan& plan, const fs::path& home) {
  Player player(home, kPlugins, 10);
  player.open();
  player.start();
  player.manager().pause();
  std::this_thread::sleep_for(std::chrono::seconds(3));  // the saves of the start are synced
  const long before = sleepsOfAllThreads();
  std::this_thread::sleep_for(std::chrono::seconds(plan.minute));
  const long wakeUps = sleepsOfAllThreads() - before - 1;  // one is this thread's own
  std::printf(
      "Idle with a paused queue\n  %ld wake-ups in %d s; the scheduler's interval of 500 ms "
      "gives %d\n",
      wakeUps, plan.minute, 2 * plan.minute);
}

/// Measures one thing, in a folder of its own.
using Measurement = std::function<void(const Plan& plan, const fs::path& home)>;

const std::map<std::string, Measurement>& measurements() {
  static const std::map<std::string, Measurement> all = {
      {"announcements", [](const Plan&, const fs::path& home) { announcements(home); }},
      {"films", filmBesideOthers},
      {"idle", idle},
      {"memory", [](const Plan&, const fs::path& home) { memory(home); }},
      {"moves", [](const Plan&, const fs::path& home) { movesToTheTop(home); }},
      {"operations",
       [](const Plan&, const fs::path& home) {
         latencies(home, "runs", "30m", 100);
         latencies(home, "stalls", "1k", 100);
       }},
      {"starts", starts},
  };
  return all;
}

void measure(const Plan& plan) {
  for (const auto& [name, measurement] : measurements()) {
    if (!plan.only.empty() && name != plan.only) continue;
    const support::TempDir folder;
    measurement(plan, folder / "home");
  }
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  QCoreApplication::setOrganizationName("Vesk");
  QCoreApplication::setApplicationName("VeskPlayerX");
  CLI::App app("Measures what the length of the queue costs.", "bench_long_queue");
  Plan plan;
  app.add_option("--rounds", plan.rounds, "Rounds of each comparison");
  app.add_option("--minute", plan.minute, "Seconds for which the idle player is watched");
  app.add_option("--only", plan.only, "One measurement alone");
  CLI11_PARSE(app, argc, argv);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  try {
    measure(plan);
  } catch (const std::exception& error) {
    std::cerr << "bench_long_queue: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
