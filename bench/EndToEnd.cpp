#include <QCoreApplication>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "bench/Measure.h"
#include "bench/PauseLatency.h"
#include "tests/support/Nginx.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/system/BigFile.h"

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kGigabyte = 1'000'000'000;
constexpr int kSmallFiles = 200;

void mustSucceed(const std::vector<std::string>& command) {
  support::Process process(command);
  if (process.wait(std::chrono::minutes(10)) != 0) {
    throw std::runtime_error(command.front() + " failed: " + process.errors());
  }
}

/// The player with fresh folders each time.
void get(const fs::path& home, const std::vector<std::string>& urls) {
  fs::remove_all(home);
  std::vector<std::string> command = {PLAYERX_CLI, "--data",       home / "data",
                                      "--media",   home / "films", "get"};
  command.insert(command.end(), urls.begin(), urls.end());
  mustSucceed(command);
}

void curl(const fs::path& home, const std::vector<std::string>& urls) {
  fs::remove_all(home);
  fs::create_directories(home);
  std::vector<std::string> command = {"curl", "-s", "--output-dir", home};
  for (const std::string& url : urls) {
    command.push_back("-O");
    command.push_back(url);
  }
  mustSucceed(command);
}

void oneBigFile(const support::Nginx& server, const support::TempDir& folder) {
  system_test::writeDistinctFile(server.root() / "big.avi", kGigabyte);
  const std::vector<std::string> urls = {server.url("/big.avi", "127.0.0.1")};
  bench::compare(
      "One file of 1 GB", "playerx-cli", [&] { get(folder / "ours", urls); }, "curl",
      [&] { curl(folder / "theirs", urls); }, 5);
}

void manySmallFiles(const support::Nginx& server, const support::TempDir& folder) {
  std::vector<std::string> urls;
  for (int i = 0; i < kSmallFiles; ++i) {
    const std::string name = "small" + std::to_string(i) + ".avi";
    system_test::writeDistinctFile(server.root() / name, 1'000'000, i);
    urls.push_back(server.url("/" + name, "127.0.0.1"));
  }
  bench::compare(
      "200 files of 1 MB, one after the other", "playerx-cli", [&] { get(folder / "ours", urls); },
      "curl", [&] { curl(folder / "theirs", urls); }, 5);
}

void pauseInMidTransfer(const support::TempDir& folder) {
  const support::Nginx server({.limitRate = "30m"});
  system_test::writeDistinctFile(server.root() / "big.avi", kGigabyte);
  const fs::path plugins = fs::path(PLAYERX_CLI).parent_path() / "../lib/plugins";
  const std::vector<double> times =
      bench::pauseLatencies(plugins, folder / "paused", server.url("/big.avi", "127.0.0.1"), 300);
  std::printf(
      "pause() in mid-transfer (%zu times)\n  median %.2f ms, 99 %% under %.2f ms, most %.2f ms\n",
      times.size(), bench::quantile(times, 0.5), bench::quantile(times, 0.99),
      bench::quantile(times, 1));
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  QCoreApplication::setOrganizationName("Vesk");
  QCoreApplication::setApplicationName("VeskPlayerX");
  try {
    const support::Nginx server;
    const support::TempDir folder;
    oneBigFile(server, folder);
    manySmallFiles(server, folder);
    pauseInMidTransfer(folder);
  } catch (const std::exception& error) {
    std::cerr << "bench_end_to_end: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
