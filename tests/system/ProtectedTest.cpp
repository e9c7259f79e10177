#include <gmock/gmock.h>

#include <csignal>

#include "tests/support/WaitFor.h"
#include "tests/system/BigFile.h"
#include "tests/system/DemoServer.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ProtectedTest : public testing::Test {
 protected:
  DemoServer server;
  PlayerHome home;

  void SetUp() override { server.introduceTo(home); }

  void expectFilm() {
    EXPECT_TRUE(sameContent(server.film(), home.media() / "film.vesk"));
    EXPECT_THAT(home.films(), ElementsAre("film.vesk", "film.vesk.rights"));
    EXPECT_THAT(home.partials(), IsEmpty());
    EXPECT_FALSE(home.isMarked("film.vesk"));
  }
};

TEST_F(ProtectedTest, AProtectedFilmArrivesConfirmedWithItsRights) {
  const PlayerResult result = home.run({"get", server.ticket()});
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  expectFilm();
  EXPECT_EQ(support::readFile(home.media() / "film.vesk.rights"), "rights of film.mkv");
  EXPECT_EQ(server.authorizations(), 1);
  EXPECT_EQ(server.lastConfirmedBytes(), 200'000u);
}

TEST_F(ProtectedTest, TheTicketIsConsumed) {
  const std::string ticket = server.ticket();
  EXPECT_EQ(home.run({"get", ticket}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(ticket));
  EXPECT_FALSE(std::filesystem::exists(home.media() / "film.tix"));
}

TEST_F(ProtectedTest, AFilmThatIsRemovedTakesItsRightsAlong) {
  EXPECT_EQ(home.run({"get", server.ticket()}).status, 0);
  EXPECT_EQ(home.run({"remove", "1"}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("film.vesk", "film.vesk.rights"));
  const std::string ticket = server.ticket();
  EXPECT_EQ(home.run({"get", "--again", ticket}).status, 0);
  EXPECT_EQ(home.run({"remove", "1", "--with-film"}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("film.vesk", "film.vesk.rights"));
}

/// How the services refuse a film, and what is said of it.
struct Refusal {
  const char* name;
  const char* misbehaviour;
  const char* code;
  testing::Matcher<const std::string&> sentence;
};

std::ostream& operator<<(std::ostream& out, const Refusal& row) { return out << row.name; }

class RefusalTest : public ProtectedTest, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusalTest, IsNamed) {
  server.misbehave(GetParam().misbehaviour);
  const PlayerResult result = home.run({"get", server.ticket()});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.failureCode(), GetParam().code);
  EXPECT_THAT(result.output, GetParam().sentence);
}

INSTANTIATE_TEST_SUITE_P(
    Of, RefusalTest,
    testing::Values(Refusal{"AWithdrawnFilmInTheServicesWords", "error-5000", "services",
                            HasSubstr("The film was withdrawn by its provider.")},
                    Refusal{"AnyOtherError", "error-7", "not_authorized",
                            HasSubstr("error 7: This account may not download.")},
                    Refusal{"AnAnswerThatMakesNoSense", "malformed", "not_authorized",
                            Not(HasSubstr("error -2"))},
                    Refusal{"ServicesThatAreNotReady", "not-ready", "services_unavailable",
                            HasSubstr("The online services are not ready; try again later.")}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(ProtectedTest, TheSlotQuestionIsDeclinedWithoutATerminal) {
  server.misbehave("error-32054");
  const PlayerResult result = home.run({"get", server.ticket()});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.failureCode(), "slots_taken");
  EXPECT_EQ(server.authorizations(), 1);
}

TEST_F(ProtectedTest, TheSlotQuestionIsAskedOnATerminal) {
  server.misbehave("error-32054");
  std::string command;
  for (const std::string& word : home.commandLine({"get", server.ticket()})) {
    command += "'" + word + "' ";
  }
  support::Process terminal({.arguments = {"script", "-qec", command, "/dev/null"},
                             .environment = home.environment(),
                             .input = "2\n"});
  EXPECT_EQ(terminal.wait(), 0) << terminal.output();
  EXPECT_THAT(terminal.output(), HasSubstr("\r\033[KAll slots for"));
  EXPECT_THAT(terminal.output(), HasSubstr("Slot to give up"));
  EXPECT_EQ(server.authorizations(), 2);
  expectFilm();
}

TEST_F(ProtectedTest, DamagedRightsTextStillFetchesTheFilm) {
  server.misbehave("bad-base64");
  EXPECT_EQ(home.run({"get", server.ticket()}).status, 0);
  EXPECT_TRUE(sameContent(server.film(), home.media() / "film.vesk"));
}

TEST_F(ProtectedTest, ExpiredCredentialsAreAuthorisedAnewByARetry) {
  server.misbehave("expired");
  const PlayerResult result = home.run({"get", server.ticket()});
  EXPECT_EQ(result.failureCode(), "http_401");
  EXPECT_THAT(result.output, HasSubstr("has expired"));
  EXPECT_EQ(home.run({"retry", "1"}).status, 0);
  EXPECT_EQ(home.run({"get"}).status, 0);
  EXPECT_EQ(server.authorizations(), 2);
  expectFilm();
}

TEST_F(ProtectedTest, AServiceThatLiesAboutTheSizeEndsCleanly) {
  server.misbehave("lying-size");
  const PlayerResult result = home.run({"get", server.ticket()});
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  EXPECT_EQ(home.queue().size(), 1u);
}

TEST_F(ProtectedTest, ASilentServiceDoesNotHoldCtrlCUp) {
  server.misbehave("silent");
  support::Process player = home.start({"get", server.ticket()});
  ASSERT_TRUE(support::waitFor([this] { return server.authorizations() == 1; }));
  player.send(SIGINT);
  EXPECT_EQ(player.wait(std::chrono::seconds(20)), 130);
  EXPECT_EQ(home.queue().size(), 1u);
}

TEST_F(ProtectedTest, AServiceThatIsGoneIsSaid) {
  PlayerHome alone;
  alone.addOptions({"--services", "http://127.0.0.1:1"});
  const PlayerResult result = alone.run({"get", server.ticket()});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.events("refused").at(0)["reason"]["code"], "services");
  EXPECT_THAT(result.output, HasSubstr("cannot be reached"));
}

TEST_F(ProtectedTest, WithoutServicesASealedTicketYieldsNothing) {
  PlayerHome alone;
  const std::string ticket = server.ticket();
  const PlayerResult result = alone.run({"get", ticket});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.output, HasSubstr("name the online services with --services."));
  EXPECT_TRUE(std::filesystem::exists(ticket));

  const PlayerResult explained = alone.runForPeople({"explain", ticket});
  EXPECT_EQ(explained.status, 1);
  EXPECT_EQ(explained.output,
            ticket + ": This is a protected ticket; name the online services with --services.\n");
}

TEST_F(ProtectedTest, ExplainSaysOfAProtectedTicketThatCannotBeReadWhy) {
  PlayerHome alone;
  alone.addOptions({"--services", "http://127.0.0.1:1"});
  const PlayerResult result = alone.runForPeople({"explain", server.ticket()});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("The online services name no film"));
  EXPECT_THAT(result.errors, HasSubstr("cannot be reached"));
}

/// A film that takes a few seconds.
class ProtectedCrashTest : public testing::Test {
 protected:
  static constexpr std::uint64_t kSize = 3'000'000;

  DemoServer server{kSize, 2'000'000};
  PlayerHome home;

  void SetUp() override { server.introduceTo(home); }

  void kill(support::Process& player) {
    player.send(SIGKILL);
    player.wait();
  }

  void expectWholeOnce() {
    const PlayerResult result = home.run({"get"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    ASSERT_EQ(home.queue().size(), 1u);
    const std::string path = home.queue()[0]["path"];
    EXPECT_TRUE(sameContent(server.film(), path)) << path;
    EXPECT_EQ(home.films().size(), 2u) << testing::PrintToString(home.films());
    EXPECT_EQ(server.lastConfirmedBytes(), kSize);
  }
};

TEST_F(ProtectedCrashTest, KilledBetweenAuthorisationAndFirstByte) {
  support::Process player = home.start({"get", server.ticket()});
  ASSERT_TRUE(support::waitFor([this] { return server.authorizations() == 1; }));
  kill(player);
  expectWholeOnce();
}

TEST_F(ProtectedCrashTest, WithoutTheServicesTheRestIsNotBlamedOnTheServerOfTheFilm) {
  support::Process player = home.start({"get", server.ticket()});
  ASSERT_TRUE(player.waitForOutput("\"percent\":1"));
  kill(player);
  home.addOptions({"--services", "http://127.0.0.1:1"});
  const PlayerResult result = home.run({"get"});
  EXPECT_EQ(result.failureCode(), "services_unavailable");
  EXPECT_THAT(result.output, HasSubstr("cannot be reached"));
}

TEST_F(ProtectedCrashTest, KilledInMidTransfer) {
  support::Process player = home.start({"get", server.ticket()});
  ASSERT_TRUE(player.waitForOutput("\"percent\":1"));
  ASSERT_TRUE(player.waitForOutput("\"percent\":3"));
  kill(player);
  expectWholeOnce();
}

}  // namespace
}  // namespace system_test
