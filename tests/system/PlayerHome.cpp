#include "tests/system/PlayerHome.h"

#include <sys/xattr.h>

#include <algorithm>
#include <chrono>
#include <sstream>
#include <stdexcept>

#include "tests/support/JsonSchema.h"

namespace system_test {

namespace fs = std::filesystem;

namespace {

/// A gigabyte on a busy machine with a sanitizer takes its time.
constexpr std::chrono::minutes kLongestRun(4);

std::vector<std::string> filesIn(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.is_regular_file()) names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

std::vector<Json> PlayerResult::events() const {
  std::vector<Json> list;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    list.push_back(Json::parse(line));
    const std::string faults = support::faultsOf(list.back(), support::schemaOfLines());
    if (!faults.empty()) throw std::runtime_error(line + "\n" + faults);
  }
  return list;
}

std::vector<Json> PlayerResult::events(const std::string& kind) const {
  std::vector<Json> list = events();
  std::erase_if(list, [&kind](const Json& event) { return event["event"] != kind; });
  return list;
}

std::string PlayerResult::failureCode() const {
  const std::vector<Json> failures = events("failed");
  if (failures.size() != 1)
    return std::to_string(failures.size()) + " failures\n" + output + errors;
  return failures[0]["reason"]["code"];
}

PlayerHome::PlayerHome() : media_(folder_ / "films") {
  environment_["HOME"] = folder_.path();
  environment_["XDG_CONFIG_HOME"] = folder_ / "config";
  environment_["XDG_DATA_HOME"] = folder_ / "share";
}

void PlayerHome::setEnvironment(const std::string& name, const std::string& value) {
  environment_[name] = value;
}

void PlayerHome::removeFromEnvironment(const std::string& name) {
  environment_.erase(name);
  removed_.push_back(name);
}

void PlayerHome::mountFirst(const std::string& shellLine, const std::string& argument) {
  launcher_ = {"unshare", "--map-root-user", "--mount", "sh", "-c", shellLine + " && exec \"$@\"",
               argument};
}

void PlayerHome::addOptions(const std::vector<std::string>& options) {
  options_.insert(options_.end(), options.begin(), options.end());
}

support::ProcessOptions PlayerHome::command(const std::vector<std::string>& front,
                                            const std::vector<std::string>& arguments) const {
  std::vector<std::string> words = launcher_;
  const auto append = [&words](const std::vector<std::string>& more) {
    words.insert(words.end(), more.begin(), more.end());
  };
  append({PLAYERX_CLI});
  append(front);
  if (namesFolders_) append({"--data", data().string(), "--media", media_.string()});
  append(options_);
  append(arguments);
  return {.arguments = words, .environment = environment_, .removed = removed_};
}

support::ProcessOptions PlayerHome::startOptions(const std::vector<std::string>& arguments) const {
  return command({"--json"}, arguments);
}

support::Process PlayerHome::start(const std::vector<std::string>& arguments) const {
  return support::Process(startOptions(arguments));
}

PlayerResult PlayerHome::run(const std::vector<std::string>& arguments) const {
  support::Process process(startOptions(arguments));
  return finish(process);
}

PlayerResult PlayerHome::runForPeople(const std::vector<std::string>& arguments) const {
  support::Process process(command({}, arguments));
  return finish(process);
}

std::vector<std::string> PlayerHome::commandLine(const std::vector<std::string>& arguments) const {
  return command({}, arguments).arguments;
}

std::vector<Json> PlayerHome::queue() const { return run({"list"}).events("listed"); }

std::vector<std::string> PlayerHome::films() const { return filesIn(media_); }

bool PlayerHome::isMarked(const std::string& film) const {
  return ::lgetxattr((media() / film).c_str(), "user.vesk.film", nullptr, 0) >= 0;
}

std::vector<std::string> PlayerHome::partials() const { return filesIn(data() / "partial"); }

std::string lackOfNamespaces() {
  support::TempDir folder;
  support::Process trial(std::vector<std::string>{"unshare", "--map-root-user", "--mount", "sh",
                                                  "-c", "mount -t tmpfs -o size=64k trial \"$0\"",
                                                  folder.path()});
  if (trial.wait() == 0) return {};
  return "this test needs a user namespace of its own in which it may mount a file system "
         "(unshare, mount; kernel.unprivileged_userns_clone=1 for users that are not root): " +
         trial.errors();
}

PlayerResult finish(support::Process& process) {
  PlayerResult result;
  result.status = process.wait(kLongestRun).value_or(-1);
  result.output = process.output();
  result.errors = process.errors();
  return result;
}

}  // namespace system_test
