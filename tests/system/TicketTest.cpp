#include <gmock/gmock.h>

#include "tests/support/Nginx.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class TicketTest : public testing::Test {
 protected:
  support::Nginx server;
  support::TempDir folder;
  PlayerHome home;

  void SetUp() override {
    server.serve("one.avi", distinctBytes(5000, 1));
    server.serve("two.mkv", distinctBytes(5000, 2));
  }

  /// A ticket with two films, its lines ended as given.
  std::string lines(const std::string& end) const {
    std::string text = "TixVeskVersion=1.0" + end;
    for (const char* name : {"one.avi", "two.mkv"}) {
      text += "start" + end + "url=" + server.url(std::string("/") + name) + end + "end" + end;
    }
    return text;
  }

  std::string write(const std::string& text, const std::string& name = "films.tix") const {
    return folder.write(name, text);
  }
};

TEST_F(TicketTest, BothFilmsOfATicketArriveWhateverItsLineEnds) {
  for (const char* end : {"\n", "\r", "\r\n"}) {
    PlayerHome fresh;
    EXPECT_EQ(fresh.run({"get", write(lines(end))}).status, 0);
    EXPECT_THAT(fresh.films(), ElementsAre("one.avi", "two.mkv"));
  }
}

TEST_F(TicketTest, AByteOrderMarkIsPassedOver) {
  EXPECT_EQ(home.run({"get", write("\xEF\xBB\xBF" + lines("\n"))}).status, 0);
  EXPECT_EQ(home.films().size(), 2u);
}

TEST_F(TicketTest, DoubleQuotesAroundThePathAreDropped) {
  EXPECT_EQ(home.run({"get", "\"" + write(lines("\n"), "two words.TIX") + "\""}).status, 0);
  EXPECT_EQ(home.films().size(), 2u);
}

TEST_F(TicketTest, TitlesAreShown) {
  const std::string text =
      "TixVeskVersion=1\nstart\ntitle=Zürich – ein Film\ncontentProvider=P\nurl=" +
      server.url("/one.avi") + "\nend\n";
  const PlayerResult result = home.run({"get", write(text)});
  ASSERT_EQ(result.events("finished").size(), 1u);
  EXPECT_EQ(result.events("finished")[0]["title"], "Zürich – ein Film");
  EXPECT_EQ(result.events("finished")[0]["provider"], "P");
}

TEST_F(TicketTest, ATicketThatNamesNothingIsRefused) {
  for (const std::string& text : {std::string(), std::string("TixVeskVersion=2\n"),
                                  std::string(100'000, '\0'), std::string(1'000'000, 'x')}) {
    const PlayerResult result = home.run({"get", write(text)});
    EXPECT_EQ(result.status, 2);
    ASSERT_EQ(result.events("refused").size(), 1u);
    EXPECT_EQ(result.events("refused")[0]["reason"]["code"], "empty_ticket");
  }
  EXPECT_THAT(home.queue(), IsEmpty());
}

TEST_F(TicketTest, AMissingTicketIsRefused) {
  const PlayerResult result = home.run({"get", folder / "none.tix"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.events("refused").at(0)["reason"]["code"], "bad_ticket");
}

TEST_F(TicketTest, AFloodOfFilmsIsRefused) {
  std::string text = "TixVeskVersion=1.0\n";
  for (int i = 0; i <= 10'000; ++i) text += "start\nurl=http://h/a.avi\nend\n";
  const PlayerResult result = home.run({"get", write(text)});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.events("refused").at(0)["reason"]["code"], "bad_ticket");
  EXPECT_THAT(home.queue(), IsEmpty());

  const PlayerResult explained = home.run({"explain", write(text)});
  EXPECT_EQ(explained.status, 1);
  EXPECT_THAT(explained.events("explained"), IsEmpty());
  EXPECT_EQ(explained.events("problem").at(0)["note"],
            result.events("refused").at(0)["reason"]["sentence"]);
}

TEST_F(TicketTest, ExplainTakesNoAddress) {
  const PlayerResult result = home.run({"explain", "http://h/a.tix"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.events("problem").at(0)["note"], "This is an address, not a ticket file.");
}

TEST_F(TicketTest, ExplainShowsNoPassword) {
  const std::string address = "http://me:secret@h/a.avi";
  const PlayerResult people = home.runForPeople({"explain", address});
  EXPECT_THAT(people.output + people.errors, Not(HasSubstr("secret")));
  const PlayerResult program = home.run({"explain", address});
  EXPECT_THAT(program.output + program.errors, Not(HasSubstr("secret")));
  EXPECT_EQ(program.events("problem").at(0)["ticket"], "http://h/a.avi");
}

TEST_F(TicketTest, BlanksDoNotCarryAFloodPastTheLimits) {
  std::string text = "TixVeskVersion=1.0\n";
  for (int i = 0; i <= 10'000; ++i) text += " \tstart\nurl=http://h/a.avi\n \tend\n";
  const PlayerResult result = home.run({"get", write(text)});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.events("refused").at(0)["reason"]["code"], "bad_ticket");
  EXPECT_THAT(home.queue(), IsEmpty());
}

TEST_F(TicketTest, ExplainTellsWhatWouldArrive) {
  const std::string ticket = write(lines("\n"));
  const PlayerResult result = home.run({"explain", ticket});
  EXPECT_EQ(result.status, 0) << result.errors;
  ASSERT_EQ(result.events("explained").size(), 2u);
  const Json first = result.events("explained")[0];
  EXPECT_EQ(first["title"], "one.avi");
  EXPECT_EQ(first["provider"], "localhost");
  EXPECT_EQ(first["url"], server.url("/one.avi"));
  EXPECT_EQ(first["size"], 5000);
  EXPECT_EQ(first["fits"], true);
  EXPECT_THAT(home.queue(), IsEmpty());
}

TEST_F(TicketTest, ExplainNamesLineWithReason) {
  const std::string ticket = write("TixVeskVersion=1.0\n\nstart\ntitle=x\nend\n");
  const PlayerResult result = home.runForPeople({"explain", ticket});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output,
            ticket + ", line 3: This film has no line \"url=\", so it cannot be fetched.\n");
}

TEST_F(TicketTest, ExplainNamesAFilmThatIsNotThere) {
  const std::string text = "TixVeskVersion=1.0\nstart\nurl=" + server.url("/none.avi") + "\nend\n";
  const PlayerResult result = home.runForPeople({"explain", write(text)});
  EXPECT_THAT(result.output, HasSubstr("(404)"));
}

TEST_F(TicketTest, ASpaceInAnAddressIsNamed) {
  const std::string ticket = write("TixVeskVersion=1.0\nstart\nurl=http://h/a b.avi\nend\n");
  EXPECT_THAT(home.run({"explain", ticket}).output, HasSubstr("must be escaped"));
  EXPECT_THAT(home.run({"get", ticket}).output, HasSubstr("must be escaped"));
}

class PlayTest : public TicketTest {
 protected:
  std::filesystem::path played() const { return folder / "played"; }

  /// A player program that notes what it is to play.
  std::string recorder() const {
    const auto script = folder.write(
        "player.sh", "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" + played().string() + "'\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    return script;
  }
};

TEST_F(PlayTest, AFinishedFilmIsPlayedFromItsPathOrAddress) {
  const PlayerResult result =
      home.run({"get", "--play", "--player", recorder(), server.url("/one.avi")});
  EXPECT_EQ(result.status, 0) << result.errors;
  // The shell makes the file before it writes into it.
  ASSERT_TRUE(support::waitFor([this] {
    return std::filesystem::exists(played()) && support::readFile(played()).ends_with("\n");
  }));
  EXPECT_THAT(
      support::readFile(played()),
      testing::AnyOf((home.media() / "one.avi").string() + "\n", server.url("/one.avi") + "\n"));
  EXPECT_THAT(result.errors, HasSubstr("Playing "));
}

TEST_F(PlayTest, AMissingPlayerProgramIsSaidOnce) {
  const PlayerResult result =
      home.run({"get", "--play", "--player", "no-such-program", server.url("/one.avi")});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors, HasSubstr("--player"));
}

}  // namespace
}  // namespace system_test
