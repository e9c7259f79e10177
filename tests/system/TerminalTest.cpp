#include <gmock/gmock.h>

#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"
#include "tests/system/Terminal.h"

namespace system_test {
namespace {

using testing::Contains;
using testing::HasSubstr;

constexpr char kEraseLine[] = "\r\033[K";

/// A film that takes a second or two to arrive.
class TerminalTest : public testing::Test {
 protected:
  void SetUp() override { server_.serve("film.avi", distinctBytes(400'000)); }

  /// What the terminal of this width shows, one live line after the other.
  std::vector<std::string> liveLines(int columns) {
    std::string shellLine = "stty cols " + std::to_string(columns) + ";";
    for (const std::string& word : home_.commandLine({"get", server_.url("/film.avi")})) {
      shellLine += " '" + word + "'";
    }
    support::Process terminal({.arguments = {"script", "-qec", shellLine, "/dev/null"},
                               .environment = home_.environment()});
    const PlayerResult result = finish(terminal);
    EXPECT_EQ(result.status, 0) << result.output;
    return split(result.output);
  }

  static std::vector<std::string> split(const std::string& output) {
    std::vector<std::string> lines;
    std::size_t start = output.find(kEraseLine);
    while (start != std::string::npos) {
      start += sizeof kEraseLine - 1;
      const std::size_t end = output.find(kEraseLine, start);
      lines.push_back(output.substr(start, std::min(end, output.find('\n', start)) - start));
      start = end;
    }
    return lines;
  }

  /// A shell with job control that has started a download.
  std::unique_ptr<Terminal> startInShell(int columns) {
    auto terminal =
        std::make_unique<Terminal>(std::vector<std::string>{"bash", "--norc", "--noprofile", "-i"},
                                   home_.environment(), columns);
    std::string line;
    for (const std::string& word : home_.commandLine({"get", server_.url("/film.avi")})) {
      line += "'" + word + "' ";
    }
    terminal->type(line + "\n");
    return terminal;
  }

  support::Nginx server_{{.serverSnippet = "limit_rate 200k;"}};
  PlayerHome home_;
};

TEST_F(TerminalTest, TheLiveLineStaysOneLineOfTwentyColumns) {
  std::vector<std::string> lines = liveLines(20);
  ASSERT_FALSE(lines.empty());
  lines.pop_back();  // the outcome
  EXPECT_THAT(lines, Contains(HasSubstr(" %")));
  for (const std::string& line : lines) EXPECT_LE(line.size(), 19u) << line;
}

TEST_F(TerminalTest, AWideTerminalShowsTheTimeLeft) {
  EXPECT_THAT(liveLines(120), Contains(HasSubstr(" left")));
}

TEST_F(TerminalTest, TheLiveLineFollowsTheWindow) {
  server_.serve("film.avi", distinctBytes(2'000'000));
  const auto terminal = startInShell(120);
  ASSERT_TRUE(terminal->waitFor(" left")) << terminal->take();
  terminal->resize(20);
  terminal->take();
  // The first line may have been drawn for the old width.
  ASSERT_TRUE(terminal->waitFor(kEraseLine));
  terminal->take();
  ASSERT_TRUE(terminal->waitFor(" %")) << terminal->take();
  for (const std::string& line : split(kEraseLine + terminal->take())) {
    EXPECT_LE(line.size(), 19u) << line;
  }
}

TEST_F(TerminalTest, TheLiveLineIsThereAgainInTheForeground) {
  server_.serve("film.avi", distinctBytes(2'000'000));
  const auto terminal = startInShell(80);
  ASSERT_TRUE(terminal->waitFor(kEraseLine)) << terminal->take();
  terminal->type("\x1a");
  ASSERT_TRUE(terminal->waitFor("Stopped")) << terminal->take();
  terminal->take();
  terminal->type("fg\n");
  EXPECT_TRUE(terminal->waitFor(kEraseLine)) << terminal->take();
  EXPECT_TRUE(terminal->waitFor("completed: film.avi")) << terminal->take();
}

TEST_F(TerminalTest, ASilenceIsSaidWhileItLasts) {
  support::ScriptedServer silent;
  silent.onRequest([](const std::string& request) {
    using support::Script;
    const std::string head = "HTTP/1.1 200 OK\r\nETag: \"1\"\r\nContent-Length: 1000\r\n\r\n";
    return request.starts_with("HEAD") ? Script().send(head)
                                       : Script().send(head + std::string(500, 'x')).stall();
  });
  Terminal terminal(home_.commandLine({"get", silent.url("/film.avi")}), home_.environment(), 80);
  EXPECT_TRUE(terminal.waitFor("no byte for 5 s")) << terminal.take();
  EXPECT_TRUE(terminal.waitFor("no byte for 6 s")) << terminal.take();
}

TEST_F(TerminalTest, AServerThatDoesNotSayHowLongTheFilmIsIsSaidToBeSilent) {
  support::ScriptedServer silent;
  silent.always(support::Script().readRequest().stall());
  Terminal terminal(home_.commandLine({"get", silent.url("/film.avi")}), home_.environment(), 80);
  EXPECT_TRUE(terminal.waitFor("no answer for 5 s")) << terminal.take();
  EXPECT_TRUE(terminal.waitFor("no answer for 6 s")) << terminal.take();
}

TEST_F(TerminalTest, WideTitlesKeepThePercentageOnOneLine) {
  const std::string name = "\u6620\u753b\u306e\u540d\u524d \u05e1\u05e8\u05d8.avi";
  server_.serve(name, distinctBytes(400'000));
  Terminal terminal(home_.commandLine({"get", server_.url("/" + name)}), home_.environment(), 24);
  ASSERT_TRUE(terminal.waitFor("completed")) << terminal.take();
  const std::vector<std::string> lines = split(terminal.take());
  EXPECT_THAT(lines, Contains(HasSubstr(" %")));
}

}  // namespace
}  // namespace system_test
