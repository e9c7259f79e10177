#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace system_test {

using Json = nlohmann::json;

/// What one run of the command line did.
struct PlayerResult {
  int status = -1;
  std::string output;
  std::string errors;

  /// The JSON lines of standard output; std::runtime_error when a line is not JSON or breaks
  /// the schema of docs/json-output.schema.json.
  std::vector<Json> events() const;

  /// The events of one kind ("added", "failed", ...).
  std::vector<Json> events(const std::string& kind) const;

  /// The reason code of the only failure; a text that says what is wrong when there is not just
  /// one.
  std::string failureCode() const;
};

/// A user of the player: folders of their own, and the program to run in them.
/// Owner: the test, on the thread that made it.
class PlayerHome {
 public:
  PlayerHome();

  std::filesystem::path data() const { return folder_ / "data"; }
  std::filesystem::path media() const { return media_; }
  std::filesystem::path queueFile() const { return data() / "downloadmanager.xml"; }
  void setMedia(const std::filesystem::path& folder) { media_ = folder; }
  void setEnvironment(const std::string& name, const std::string& value);
  void removeFromEnvironment(const std::string& name);

  /// Leaves the folders to the program: no "--data", no "--media".
  void nameNoFolders() { namesFolders_ = false; }

  /// Starts the program in mount and user namespaces of its own, after this line of shell, in which
  /// "$0" is `argument`. What is mounted goes with the program. Ask `lackOfNamespaces` before.
  void mountFirst(const std::string& shellLine, const std::string& argument);

  /// Options put in front of every command.
  void addOptions(const std::vector<std::string>& options);

  /// What `start` starts.
  support::ProcessOptions startOptions(const std::vector<std::string>& arguments) const;

  /// Starts `playerx-cli --json` with these arguments.
  support::Process start(const std::vector<std::string>& arguments) const;

  /// Starts it and waits for its end.
  PlayerResult run(const std::vector<std::string>& arguments) const;

  /// As `run`, without "--json".
  PlayerResult runForPeople(const std::vector<std::string>& arguments) const;

  /// The words of a command for people, to be started by other means in `environment`.
  std::vector<std::string> commandLine(const std::vector<std::string>& arguments) const;
  const std::map<std::string, std::string>& environment() const { return environment_; }

  /// The queue as `list` prints it.
  std::vector<Json> queue() const;

  /// Names of the files in the media folder, sorted.
  std::vector<std::string> films() const;

  /// Whether a film carries the mark of one whose completion may have been lost.
  bool isMarked(const std::string& film) const;

  /// Files below the folder of unfinished films.
  std::vector<std::string> partials() const;

 private:
  support::ProcessOptions command(const std::vector<std::string>& front,
                                  const std::vector<std::string>& arguments) const;

  support::TempDir folder_;
  std::filesystem::path media_;
  bool namesFolders_ = true;
  std::vector<std::string> launcher_;
  std::map<std::string, std::string> environment_;
  std::vector<std::string> removed_;
  std::vector<std::string> options_;
};

/// Why `mountFirst` does not work on this machine; empty when it does.
std::string lackOfNamespaces();

/// Waits for the end of a started player.
PlayerResult finish(support::Process& process);

}  // namespace system_test
