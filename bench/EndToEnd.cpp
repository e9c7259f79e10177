// The player beside programs that people know, on one server of the machine's own:
//
//     bench_end_to_end [--big BYTES] [--rounds N]

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "bench/Measure.h"
#include "bench/PauseLatency.h"
#include "tests/support/Nginx.h"
#include "tests/support/TempDir.h"
#include "tests/system/BigFile.h"

namespace {

namespace fs = std::filesystem;
using bench::Contestant;
using bench::Usage;
using Command = std::vector<std::string>;

struct Plan {
  std::uint64_t big = 4'000'000'000;
  int rounds = 3;
};

/// Each begins with an empty folder.
Usage runIn(const fs::path& folder, const Command& command) {
  fs::remove_all(folder);
  fs::create_directories(folder);
  const Usage usage = bench::run(command);
  fs::remove_all(folder);
  return usage;
}

/// The programs that fetch `urls` one at a time. `authority` is trusted by all of them; empty for
/// plain HTTP.
std::vector<Contestant> downloaders(const fs::path& folder, const std::vector<std::string>& urls,
                                    const std::string& authority = {}) {
  const std::string ours = folder / "ours", theirs = folder / "theirs", list = folder / "list";
  std::ofstream lines(list);
  for (const std::string& url : urls) lines << url << '\n';

  Command player = {PLAYERX_CLI, "--data", ours + "/data", "--media", ours + "/films"};
  Command curl = {"curl", "-sf", "--output-dir", theirs};
  Command aria2 = {"aria2c", "-q", "-j1", "-d", theirs, "-i", list};
  Command wget = {"wget", "-q", "-P", theirs, "-i", list};
  if (!authority.empty()) {
    player.insert(player.end(), {"--cacert", authority});
    curl.insert(curl.end(), {"--cacert", authority});
    aria2.push_back("--ca-certificate=" + authority);
    wget.push_back("--ca-certificate=" + authority);
  }
  player.push_back("get");
  player.insert(player.end(), urls.begin(), urls.end());
  for (const std::string& url : urls) curl.insert(curl.end(), {"-O", url});
  return {{"playerx-cli", [=] { return runIn(ours, player); }},
          {"curl", [=] { return runIn(theirs, curl); }},
          {"aria2c -j1", [=] { return runIn(theirs, aria2); }},
          {"wget -i", [=] { return runIn(theirs, wget); }}};
}

void oneBigFile(const Plan& plan, const support::Nginx& server, const support::TempDir& folder) {
  const fs::path file = server.root() / "big.avi";
  std::vector<Contestant> contestants = downloaders(folder.path(), {server.url("/big.avi")});
  const std::string copy = folder / "copy";
  contestants.push_back({"cp", [=] {
                           return runIn(copy, {"cp", file.string(), copy + "/big.avi"});
                         }});
  bench::compare("One file of " + std::to_string(plan.big / 1'000'000) + " MB", contestants,
                 plan.rounds);
}

void oneBigFileOverTls(const Plan& plan, const fs::path& root, const support::TempDir& folder) {
  const support::Identity authority = support::pki::authority("Bench");
  const std::string trusted = folder.write("authority.pem", authority.certificatePem());
  const support::Nginx server({.root = root, .tls = support::pki::issue(authority, {})});
  bench::compare("The same over TLS", downloaders(folder.path(), {server.url("/big.avi")}, trusted),
                 plan.rounds);
}

void manyFiles(const Plan& plan, const support::Nginx& server, const support::TempDir& folder,
               int count, std::uint64_t size) {
  std::vector<std::string> urls;
  for (int i = 0; i < count; ++i) {
    const std::string name = std::to_string(size) + "-" + std::to_string(i) + ".avi";
    system_test::writeDistinctFile(server.root() / name, size, i);
    urls.push_back(server.url("/" + name));
  }
  bench::compare(std::to_string(count) + " files of " + std::to_string(size / 1000) + " kB",
                 downloaders(folder.path(), urls), plan.rounds);
}

void pauseInMidTransfer(const support::TempDir& folder) {
  const support::Nginx server({.limitRate = "30m"});
  system_test::writeDistinctFile(server.root() / "big.avi", 1'000'000'000);
  const fs::path plugins = fs::path(PLAYERX_CLI).parent_path() / "../lib/plugins";
  const std::vector<double> times =
      bench::pauseLatencies(plugins, folder / "paused", server.url("/big.avi", "127.0.0.1"), 300);
  std::printf(
      "pause() in mid-transfer (%zu times)\n  median %.2f ms, 99 %% under %.2f ms, most %.2f ms\n",
      times.size(), bench::quantile(times, 0.5), bench::quantile(times, 0.99),
      bench::quantile(times, 1));
}

void measure(const Plan& plan) {
  const support::TempDir folder;
  const support::Nginx server;
  manyFiles(plan, server, folder, 200, 1'000'000);
  manyFiles(plan, server, folder, 1'000, 10'000);
  system_test::writeDistinctFile(server.root() / "big.avi", plan.big);
  oneBigFile(plan, server, folder);
  oneBigFileOverTls(plan, server.root(), folder);
  pauseInMidTransfer(folder);
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  QCoreApplication::setOrganizationName("Vesk");
  QCoreApplication::setApplicationName("VeskPlayerX");
  CLI::App app("Measures the player beside other programs.", "bench_end_to_end");
  Plan plan;
  app.add_option("--big", plan.big, "Bytes of the big file");
  app.add_option("--rounds", plan.rounds, "Rounds of each comparison");
  CLI11_PARSE(app, argc, argv);
  try {
    measure(plan);
  } catch (const std::exception& error) {
    std::cerr << "bench_end_to_end: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
