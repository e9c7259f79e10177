#include <gmock/gmock.h>

#include "tests/support/Nginx.h"
#include "tests/support/TempDir.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class CommandLineTest : public testing::Test {
 protected:
  std::string offer(const std::string& name) {
    server.serve(name, distinctBytes(5000));
    return server.url("/" + name);
  }

  /// Runs the command with this text on its standard input.
  PlayerResult runWithInput(const std::vector<std::string>& arguments, const std::string& input) {
    support::ProcessOptions options = home.startOptions(arguments);
    options.input = input;
    support::Process process(options);
    return finish(process);
  }

  support::Nginx server;
  PlayerHome home;
};

TEST_F(CommandLineTest, AListComesFromStandardInput) {
  const std::string list = "# two\n\n" + offer("a.avi") + "\r\n  " + offer("b.avi");
  const PlayerResult result = runWithInput({"get", "-i", "-"}, list);
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
}

TEST_F(CommandLineTest, AListThatNamesNothingIsWrongUsage) {
  const PlayerResult result = runWithInput({"add", "-i", "-"}, "# nothing\n\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("The list - names no films."));
  EXPECT_THAT(home.run({"get", "-i", "/none"}).errors, HasSubstr("No such file"));
}

TEST_F(CommandLineTest, ListsAndArgumentsAreAddedTogether) {
  const support::TempDir folder;
  const std::string list = folder.write("list", offer("c.avi"));
  const PlayerResult result =
      runWithInput({"add", offer("a.avi"), "-i", "-", "-i", list}, offer("b.avi"));
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(home.queue().size(), 3u);
}

TEST_F(CommandLineTest, QuietSaysNothingOfWhatGoesWell) {
  const PlayerResult result = home.runForPeople({"get", "--quiet", offer("a.avi")});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output + result.errors, IsEmpty());
  EXPECT_THAT(home.films(), ElementsAre("a.avi"));
}

TEST_F(CommandLineTest, QuietSaysWhatFails) {
  const PlayerResult result = home.runForPeople({"-q", "get", server.url("/none.avi")});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, HasSubstr("failed: none.avi: localhost has no film"));
  EXPECT_THAT(home.runForPeople({"-q", "list"}).output, HasSubstr("none.avi"));
}

TEST_F(CommandLineTest, AllThatFailedIsRetriedInItsOrder) {
  const std::string first = server.url("/a.avi");
  const std::string second = server.url("/b.avi");
  EXPECT_EQ(home.run({"get", first, second}).status, 1);
  offer("a.avi");
  offer("b.avi");
  EXPECT_THAT(home.run({"retry", "all"}).errors,
              HasSubstr("Queued again: 2 items; `get` downloads them."));
  EXPECT_EQ(home.queue().at(0)["url"], first);
  EXPECT_EQ(home.run({"get"}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
}

TEST_F(CommandLineTest, WhatIsRemovedWithItsFilmIsGone) {
  EXPECT_EQ(home.run({"get", offer("a.avi"), offer("b.avi")}).status, 0);
  EXPECT_EQ(home.run({"remove", "1"}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
  EXPECT_EQ(home.run({"remove", "--with-film", "1"}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("a.avi"));
}

TEST_F(CommandLineTest, ACommandSaysWhatItHasDone) {
  EXPECT_EQ(home.run({"add", offer("a.avi"), offer("b.avi")}).status, 0);
  const auto output = [this](const std::vector<std::string>& arguments) {
    return home.runForPeople(arguments).output;
  };
  EXPECT_EQ(output({"move", "2", "top"}), "b.avi is now item 1 of 2.\n");
  EXPECT_EQ(output({"pause", "1"}), "Paused: b.avi.\n");
  EXPECT_EQ(output({"resume", "1"}), "Resumed: b.avi; `get` downloads it.\n");
  EXPECT_EQ(output({"--quiet", "remove", "1"}), "");
  EXPECT_EQ(output({"remove", "1"}), "Removed: a.avi.\n");
  EXPECT_EQ(output({"clear"}), "No item is complete.\n");
  EXPECT_EQ(output({"--json", "clear"}), "");
}

TEST_F(CommandLineTest, EveryLineForProgramsNamesItsVersion) {
  const PlayerResult result = home.run({"get", offer("a.avi"), server.url("/none.avi"), "film"});
  EXPECT_THAT(result.events(), Not(IsEmpty()));
  for (const Json& event : result.events()) EXPECT_EQ(event["version"], 1) << event;
}

}  // namespace
}  // namespace system_test
