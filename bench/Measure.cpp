#include "bench/Measure.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <stdexcept>

extern char** environ;

namespace bench {
namespace {

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

pid_t start(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t quiet;
  posix_spawn_file_actions_init(&quiet);
  posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  const int error = ::posix_spawnp(&pid, arguments[0], &quiet, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&quiet);
  if (error != 0) throw std::runtime_error("cannot start " + command.front());
  return pid;
}

double median(const std::vector<Usage>& usages, double Usage::*member) {
  std::vector<double> values;
  for (const Usage& usage : usages) values.push_back(usage.*member);
  return quantile(values, 0.5);
}

double medianRatio(const std::vector<Usage>& ours, const std::vector<Usage>& theirs,
                   double Usage::*member) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    ratios.push_back(ours[i].*member / std::max(theirs[i].*member, 1e-6));
  }
  return quantile(ratios, 0.5);
}

void print(const std::string& name, const std::vector<Usage>& ours,
           const std::vector<Usage>& theirs) {
  std::printf("  %-14s %8.3f s %8.3f s %8.1f MB   %6.2f %6.2f\n", name.c_str(),
              median(theirs, &Usage::wall), median(theirs, &Usage::cpu),
              median(theirs, &Usage::memory), medianRatio(ours, theirs, &Usage::wall),
              medianRatio(ours, theirs, &Usage::cpu));
}

}  // namespace

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double quantile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  const auto place = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1) + 0.5);
  return values.at(place);
}

Usage run(const std::vector<std::string>& command) {
  Usage usage;
  rusage used{};
  int status = 0;
  usage.wall = secondsOf([&] {
    const pid_t pid = start(command);
    while (::wait4(pid, &status, 0, &used) < 0 && errno == EINTR) continue;
  });
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error(command.front() + " failed");
  }
  usage.cpu = secondsOf(used.ru_utime) + secondsOf(used.ru_stime);
  usage.memory = static_cast<double>(used.ru_maxrss) / 1024;
  return usage;
}

void compare(const std::string& title, const std::vector<Contestant>& contestants, int rounds) {
  std::vector<std::vector<Usage>> usages(contestants.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < contestants.size(); ++i) {
      usages[i].push_back(contestants[i].run());
    }
  }
  std::printf("%s (%d rounds, medians)\n  %-14s %10s %10s %11s   %s\n", title.c_str(), rounds, "",
              "wall", "CPU", "memory", "ours / this: wall, CPU");
  for (std::size_t i = 0; i < contestants.size(); ++i) {
    print(contestants[i].name, usages.front(), usages[i]);
  }
  std::fflush(stdout);
}

}  // namespace bench
