#include "tests/soak/calls/FailingPlayer.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sstream>

namespace soak {
namespace {

const std::map<std::string, std::vector<int>>& errorsOfCalls() {
  static const std::map<std::string, std::vector<int>> errors = {
      {"open", {EACCES, EINTR, EIO, EMFILE, ENFILE, ENOMEM, ENOSPC}},
      {"read", {EINTR, EIO, ENOMEM}},
      {"write", {0, EINTR, EIO, ENOSPC}},
      {"fsync", {EIO, ENOSPC}},
      {"ftruncate", {EIO, ENOSPC}},
      {"fallocate", {EINTR, EIO, ENOSPC, EOPNOTSUPP}},
      {"rename", {EACCES, EIO, ENOSPC}},
      {"unlink", {EACCES, EIO}},
      {"mkdir", {EACCES, EIO, ENOSPC}},
      {"fsetxattr", {EIO, ENOSPC, EOPNOTSUPP}},
      {"close", {EIO, ENOSPC}},
      {"pthread_create", {EAGAIN}},
  };
  return errors;
}

// No system interrupts for ever.
int longest(int error) { return error == EINTR ? 5 : kForEver; }

void readRecord(const std::filesystem::path& file, FailingRun& run) {
  if (!std::filesystem::exists(file)) return;
  std::istringstream lines(support::readFile(file));
  for (std::string call; std::getline(lines, call);) {
    const bool hasFailed = call.starts_with('!');
    run.hasFailed |= hasFailed;
    ++run.calls[hasFailed ? call.substr(1) : call];
  }
}

}  // namespace

std::string Failure::text() const {
  return call + " " + std::to_string(from) + (times == 1 ? "" : " and on") + ": " +
         (error == 0 ? "half" : std::strerror(error));
}

FailingRun runFailing(const system_test::PlayerHome& home, const std::vector<std::string>& command,
                      const Failure& failure) {
  const support::TempDir folder;
  support::ProcessOptions options = home.startOptions(command);
  options.environment.insert({{"LD_PRELOAD", FAILING_CALLS},
                              {"ASAN_OPTIONS", "verify_asan_link_order=0"},
                              {"VESK_CALLS_FOLDER", home.data().parent_path().string() + "/"},
                              {"VESK_CALLS_RECORD", (folder / "calls").string()},
                              {"VESK_FAILING_CALL", failure.call},
                              {"VESK_FAILING_FROM", std::to_string(failure.from)},
                              {"VESK_FAILING_TIMES", std::to_string(failure.times)},
                              {"VESK_FAILING_ERROR", std::to_string(failure.error)}});
  support::Process player(options);
  FailingRun run;
  run.result = system_test::finish(player);
  readRecord(folder / "calls", run);
  return run;
}

std::vector<Failure> failuresOf(const std::map<std::string, int>& calls) {
  std::vector<Failure> failures;
  for (const auto& [call, count] : calls) {
    for (const int error : errorsOfCalls().at(call)) {
      for (int from = 1; from <= count; ++from) {
        failures.push_back({call, error, from, 1});
        failures.push_back({call, error, from, longest(error)});
      }
    }
  }
  return failures;
}

}  // namespace soak
