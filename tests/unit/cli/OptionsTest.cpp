#include <gtest/gtest.h>

#include "playerx/cli/Options.h"

namespace playerx::cli {
namespace {

struct Parsed {
  std::optional<Options> options;
  int status = -1;
  std::string output;
  std::string errors;
};

Parsed parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "playerx-cli");
  Parsed parsed;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  parsed.options =
      parseOptions(static_cast<int>(arguments.size()), arguments.data(), &parsed.status);
  parsed.output = testing::internal::GetCapturedStdout();
  parsed.errors = testing::internal::GetCapturedStderr();
  return parsed;
}

TEST(OptionsTest, GetTakesAddressesOrNone) {
  EXPECT_TRUE(parse({"get"}).options->inputs.empty());
  const auto options = parse({"get", "http://h/a.avi", "b.tix"}).options;
  ASSERT_TRUE(options);
  EXPECT_EQ(options->command, Options::kGet);
  EXPECT_EQ(options->inputs, (std::vector<std::string>{"http://h/a.avi", "b.tix"}));
}

TEST(OptionsTest, FoldersStandBeforeOrBehindTheCommand) {
  EXPECT_EQ(parse({"--data", "/d", "list"}).options->session.dataFolder, "/d");
  EXPECT_EQ(parse({"list", "--data", "/d"}).options->session.dataFolder, "/d");
}

TEST(OptionsTest, MoveTakesAPositionWithADirection) {
  const auto options = parse({"move", "3", "top"}).options;
  ASSERT_TRUE(options);
  EXPECT_EQ(options->command, Options::kMove);
  EXPECT_EQ(options->position, 3);
  EXPECT_EQ(options->direction, Options::kTop);
}

TEST(OptionsTest, WrongUsageExitsWithTwo) {
  for (const std::vector<const char*>& arguments : {std::vector<const char*>{},
                                                    {"nonsense"},
                                                    {"remove"},
                                                    {"remove", "0"},
                                                    {"remove", "x"},
                                                    {"move", "1"},
                                                    {"move", "1", "sideways"},
                                                    {"move", "1", "0"},
                                                    {"move", "1", "UP"},
                                                    {"move", "1", "up", "down"},
                                                    {"--nonsense", "list"},
                                                    {"--cacert", "/none", "get"}}) {
    const Parsed parsed = parse(arguments);
    EXPECT_FALSE(parsed.options);
    EXPECT_EQ(parsed.status, kExitUsage);
  }
}

TEST(OptionsTest, OnePlainSentenceNamesWhatIsAllowed) {
  const std::pair<std::vector<const char*>, const char*> cases[] = {
      {{"move", "1", "sideways"}, "\"sideways\" is no direction; give up, down, top or bottom."},
      {{"move", "1", "3"}, "\"3\" is no direction; give up, down, top or bottom."},
      {{"move", "x", "up"},
       "\"x\" is no position; give a whole number from 1 on, as `list` prints it."},
      {{"remove", "0"},
       "\"0\" is no position; give a whole number from 1 on, as `list` prints it."},
      {{"nonsense"},
       "There is no command \"nonsense\"; the commands are get, list, remove, retry, move, clear "
       "and explain."},
      {{},
       "A command is missing; the commands are get, list, remove, retry, move, clear and "
       "explain."},
      {{"list", "--nonsense"},
       "There is no option \"--nonsense\"; `playerx-cli --help` names those that there are."},
      {{"get", "--player"}, "The option \"--player\" needs a value."},
      {{"list", "--data"}, "The option \"--data\" needs a value."},
      {{"remove"}, "The argument \"N\" is missing; `playerx-cli remove --help` shows the usage."},
      {{"move", "1"},
       "The argument \"direction\" is missing; `playerx-cli move --help` shows the usage."},
      {{"list", "x"}, "The argument \"x\" is one too many; `playerx-cli --help` shows the usage."},
  };
  for (const auto& [arguments, sentence] : cases) {
    const Parsed parsed = parse(arguments);
    EXPECT_EQ(parsed.errors, std::string("playerx-cli: ") + sentence + "\n");
    EXPECT_EQ(parsed.status, kExitUsage);
  }
}

TEST(OptionsTest, HelpIsAlsoAWord) {
  const Parsed parsed = parse({"help"});
  EXPECT_FALSE(parsed.options);
  EXPECT_EQ(parsed.status, kExitDone);
  EXPECT_EQ(parsed.output, parse({"--help"}).output);
  EXPECT_EQ(parse({"help", "move"}).output, parse({"move", "--help"}).output);
  EXPECT_EQ(parse({"help", "nonsense"}).status, kExitUsage);
}

TEST(OptionsTest, TheVersionIsThatOfTheProject) {
  const Parsed parsed = parse({"--version"});
  EXPECT_FALSE(parsed.options);
  EXPECT_EQ(parsed.status, kExitDone);
  EXPECT_EQ(parsed.output, "playerx-cli " VERSION_OF_THE_PROJECT "\n");
}

TEST(OptionsTest, HelpExitsWithZero) {
  const Parsed parsed = parse({"--help"});
  EXPECT_FALSE(parsed.options);
  EXPECT_EQ(parsed.status, kExitDone);
}

}  // namespace
}  // namespace playerx::cli
