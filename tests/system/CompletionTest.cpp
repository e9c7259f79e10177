#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

class CompletionTest : public testing::Test {
 protected:
  /// What Bash offers for the last of these words, behind the program and its folders.
  std::vector<std::string> complete(const std::vector<std::string>& words) {
    std::vector<std::string> command = home.commandLine(words);
    command.insert(command.begin(), {"bash", "-c", kScript, COMPLETION});
    support::Process bash(support::ProcessOptions{command, home.environment()});
    EXPECT_EQ(bash.wait(), 0) << bash.errors();
    return linesOf(bash.output());
  }

  static std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
      if (!line.empty()) lines.push_back(line);
    }
    return lines;
  }

  /// The options that the help of a command names.
  std::set<std::string> optionsInHelp(const std::vector<std::string>& arguments) {
    std::istringstream help(home.runForPeople(arguments).output);
    std::set<std::string> options;
    for (std::string word; help >> word;) {
      const std::size_t dashes = word.find("--");
      if (dashes == std::string::npos) continue;
      options.insert(word.substr(dashes, word.find_first_of(",.;[ ", dashes) - dashes));
    }
    return options;
  }

  static constexpr char kScript[] =
      "source \"$0\"; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _playerx_cli; "
      "printf '%s\\n' \"${COMPREPLY[@]}\"";

  PlayerHome home;
};

TEST_F(CompletionTest, CommandsAreCompleted) {
  EXPECT_THAT(complete({"re"}), ElementsAre("remove", "retry", "resume"));
}

TEST_F(CompletionTest, DirectionsAreCompleted) {
  EXPECT_THAT(complete({"move", "1", ""}), ElementsAre("up", "down", "top", "bottom"));
}

TEST_F(CompletionTest, PositionsAreThoseOfTheQueue) {
  EXPECT_EQ(home.run({"add", "http://127.0.0.1:1/a.avi", "http://127.0.0.1:1/b.avi"}).status, 0);
  EXPECT_THAT(complete({"remove", ""}), ElementsAre("1", "2"));
  EXPECT_THAT(complete({"pause", ""}), ElementsAre("all", "1", "2"));
  EXPECT_THAT(complete({"remove", "1", ""}), IsEmpty());
}

TEST_F(CompletionTest, EveryCommandIsOffered) {
  const std::vector<std::string> offered = complete({""});
  const std::string help = home.runForPeople({"--help"}).output;
  const std::size_t commands = help.find("\nCommands:\n");
  ASSERT_NE(commands, std::string::npos);
  for (const std::string& line : linesOf(help.substr(0, help.find("\n\n", commands)))) {
    if (!line.starts_with("  ") || line[2] == '-' || line[2] == ' ') continue;
    EXPECT_THAT(offered, Contains(line.substr(2, line.find(' ', 2) - 2)));
  }
}

TEST_F(CompletionTest, EveryOptionIsOffered) {
  EXPECT_THAT(complete({"--"}), IsSupersetOf(optionsInHelp({"--help"})));
  for (const char* command : {"get", "add", "remove", "clean", "list", "retry"}) {
    EXPECT_THAT(complete({command, "--"}), IsSupersetOf(optionsInHelp({command, "--help"})))
        << command;
  }
}

}  // namespace
}  // namespace system_test
