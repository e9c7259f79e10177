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
  EXPECT_TRUE(parse({"get"}).options->request.inputs.empty());
  const auto options = parse({"get", "http://h/a.avi", "b.tix"}).options;
  ASSERT_TRUE(options);
  EXPECT_EQ(options->command, Options::kGet);
  EXPECT_EQ(options->request.inputs, (std::vector<std::string>{"http://h/a.avi", "b.tix"}));
}

TEST(OptionsTest, FoldersStandBeforeOrBehindTheCommand) {
  EXPECT_EQ(parse({"--data", "/d", "list"}).options->session.dataFolder, "/d");
  EXPECT_EQ(parse({"list", "--data", "/d"}).options->session.dataFolder, "/d");
}

TEST(OptionsTest, MoveTakesAPositionWithADirection) {
  const auto options = parse({"move", "3", "top"}).options;
  ASSERT_TRUE(options);
  EXPECT_EQ(options->command, Options::kRequest);
  EXPECT_EQ(options->request.action, session::Request::Action::kMove);
  EXPECT_EQ(options->request.position, 3);
  EXPECT_EQ(options->request.direction, session::Request::Direction::kTop);
}

TEST(OptionsTest, AddQueuesWithoutStarting) {
  const auto options = parse({"add", "http://h/a.avi", "--again"}).options;
  ASSERT_TRUE(options);
  EXPECT_EQ(options->command, Options::kRequest);
  EXPECT_EQ(options->request.action, session::Request::Action::kAdd);
  EXPECT_FALSE(options->request.starts);
  EXPECT_TRUE(options->request.again);
  EXPECT_TRUE(parse({"get", "http://h/a.avi"}).options->request.starts);
}

TEST(OptionsTest, PauseTakesAPositionOrAllItems) {
  EXPECT_EQ(parse({"pause"}).options->request.position, 0);
  EXPECT_EQ(parse({"pause", "all"}).options->request.position, 0);
  EXPECT_EQ(parse({"resume", "2"}).options->request.position, 2);
  EXPECT_EQ(parse({"retry", "all"}).options->request.action, session::Request::Action::kRetry);
}

TEST(OptionsTest, AFilmIsNamedByItsOption) {
  const auto options = parse({"get", "-o", "b.avi", "http://h/a.avi"}).options;
  ASSERT_TRUE(options);
  EXPECT_EQ(options->request.name, "b.avi");
}

TEST(OptionsTest, SeveralListsAreRead) {
  const auto options = parse({"add", "-i", "one", "--input-file", "two", "http://h/a.avi"}).options;
  ASSERT_TRUE(options);
  EXPECT_EQ(options->inputFiles, (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(options->request.inputs, std::vector<std::string>{"http://h/a.avi"});
  EXPECT_EQ(parse({"add", "-i"}).status, kExitUsage);
}

TEST(OptionsTest, RemoveTakesTheFilmOnDemand) {
  EXPECT_FALSE(parse({"remove", "1"}).options->request.withFilm);
  EXPECT_TRUE(parse({"remove", "1", "--with-film"}).options->request.withFilm);
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
      {{"--cacert", "/none", "list"},
       "There is no file \"/none\" of certificate authorities; check --cacert."},
      {{"--plugins", "/none", "list"},
       "There is no folder \"/none\" of plug-ins; check --plugins."},
      {{"--data", "", "list"}, "A folder without a name cannot be used; check --data and --media."},
      {{"move", "1", "3"}, "\"3\" is no direction; give up, down, top or bottom."},
      {{"move", "x", "up"},
       "\"x\" is no position; give a whole number from 1 on, as `list` prints it."},
      {{"remove", "0"},
       "\"0\" is no position; give a whole number from 1 on, as `list` prints it."},
      {{"nonsense"},
       "There is no command \"nonsense\"; the commands are get, add, list, watch, remove, retry, "
       "move, pause, resume, limit, clear, clean and explain."},
      {{},
       "A command is missing; the commands are get, add, list, watch, remove, retry, move, pause, "
       "resume, limit, clear, clean and explain."},
      {{"list", "--nonsense"},
       "There is no option \"--nonsense\"; `playerx-cli --help` names those that there are."},
      {{"get", "-P", "films"}, "There is no option \"-P\"; did you mean \"--media\"?"},
      {{"get", "--password=secret"},
       "There is no option \"--password\"; did you mean \"--netrc\"?"},
      {{"http://h/a.avi"},
       "A command is missing before \"http://h/a.avi\"; `playerx-cli get` downloads it."},
      {{"lst"}, "There is no command \"lst\"; did you mean \"list\"?"},
      {{"get", "--plya"}, "There is no option \"--plya\"; did you mean \"--play\"?"},
      {{"--jsno", "list"}, "There is no option \"--jsno\"; did you mean \"--json\"?"},
      {{"add"}, "The argument \"input\" is missing; `playerx-cli add --help` shows the usage."},
      {{"get", "-o", "a/b", "http://h/a.avi"},
       "\"a/b\" is no file name; --media chooses the folder."},
      {{"get", "-o", "b.avi", "http://h/a.avi", "http://h/c.avi"},
       "The option \"--output\" needs one address, no more."},
      {{"add", "--cookie-jar", "", "http://h/a.avi"},
       "Cookies cannot be kept in \"\"; name a file in a folder that exists."},
      {{"get", "--tries", "-1"},
       "\"-1\" is no number of tries; give 1 or more, or 0 or inf for no limit."},
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
  EXPECT_EQ(parse({"help", "help"}).output, parse({"help", "--help"}).output);
  const Parsed unknown = parse({"help", "nonsense"});
  EXPECT_EQ(unknown.status, kExitUsage);
  EXPECT_NE(unknown.errors.find("There is no command \"nonsense\""), std::string::npos);
}

TEST(OptionsTest, HelpIsACommandLikeAnyOther) {
  const std::string help = parse({"--help"}).output;
  EXPECT_EQ(parse({"--data", "/d", "help"}).output, help);
  EXPECT_EQ(parse({"help", "--json"}).output, help);
  EXPECT_EQ(parse({"--json", "help", "get"}).output, parse({"get", "--help"}).output);
  const Parsed tooMany = parse({"help", "get", "list"});
  EXPECT_EQ(tooMany.status, kExitUsage);
  EXPECT_NE(tooMany.errors.find("The argument \"list\" is one too many"), std::string::npos);
}

TEST(OptionsTest, TheHelpNamesValuesByWhatTheyAre) {
  for (const std::string& help : {parse({"--help"}).output, parse({"get", "--help"}).output,
                                  parse({"move", "--help"}).output}) {
    EXPECT_EQ(help.find("TEXT"), std::string::npos) << help;
  }
  const std::string help = parse({"--help"}).output;
  EXPECT_NE(help.find("[OPTIONS] COMMAND\n"), std::string::npos) << help;
  EXPECT_NE(help.find("--cacert FILE "), std::string::npos) << help;
  EXPECT_NE(help.find("--plugins DIR "), std::string::npos) << help;
}

TEST(OptionsTest, TheHelpOfACommandNamesThatOfAll) {
  EXPECT_NE(parse({"get", "--help"}).output.find("`playerx-cli help` shows"), std::string::npos);
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

TEST(OptionsTest, RatesAreGivenAsCurlTakesThem) {
  const auto rate = [](const char* text) {
    return *parse({"get", "--limit-rate", text}).options->request.rateLimit;
  };
  EXPECT_EQ(rate("500"), 500u);
  EXPECT_EQ(rate("500k"), 500u * 1024);
  EXPECT_EQ(rate("1.5M"), 1536u * 1024);
  EXPECT_EQ(rate("none"), 0u);
  EXPECT_FALSE(parse({"get"}).options->request.rateLimit);
  for (const char* text : {"", "K", "-1", "1T", "1e99", "nan", "5 K"}) {
    EXPECT_EQ(parse({"limit", text}).status, kExitUsage) << text;
  }
}

TEST(OptionsTest, SeveralHeadersAreSent) {
  const auto options =
      parse({"add", "--header", "A: b", "--header", "C: d, e", "http://h/a.avi"}).options;
  ASSERT_TRUE(options);
  EXPECT_EQ(options->request.options.headers, (std::vector<std::string>{"A: b", "C: d, e"}));
  EXPECT_EQ(options->request.inputs, std::vector<std::string>{"http://h/a.avi"});
}

TEST(OptionsTest, AChecksumIsGivenOrLookedFor) {
  const std::string sum = "SHA-256=" + std::string(64, 'a');
  EXPECT_EQ(
      parse({"get", "--checksum", sum.c_str(), "http://h/a.avi"}).options->request.options.sha256,
      std::string(64, 'a'));
  EXPECT_TRUE(parse({"get", "--checksum", "sha-256"}).options->request.options.hasChecksumFile);
}

TEST(OptionsTest, TriesAndTimeLimitAreNumbers) {
  const FilmOptions options =
      parse({"get", "--tries", "3", "--timeout", "0.5"}).options->request.options;
  EXPECT_EQ(options.tries, 3u);
  EXPECT_EQ(options.timeout, std::chrono::seconds(1));
  for (const char* noLimit : {"0", "inf"}) {
    EXPECT_GT(parse({"get", "--tries", noLimit}).options->request.options.tries, 1'000'000u);
  }
}

}  // namespace
}  // namespace playerx::cli
