#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <csignal>

#include "tests/support/ScriptedServer.h"
#include "tests/support/TempDir.h"
#include "tests/support/UniqueFd.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using support::Script;
using support::ScriptedServer;
using testing::HasSubstr;
using testing::Not;

TEST(InterruptTest, AnInterruptWhileThePlayerStartsIsTaken) {
  // The crypto library reads its settings when it is made ready: a pipe holds the player up there,
  // long before it waits for anything itself.
  const support::TempDir folder;
  const std::string pipe = folder / "settings";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  PlayerHome home;
  home.setEnvironment("OPENSSL_CONF", pipe);
  support::Process player = home.start({"get", "http://127.0.0.1:1/a.avi"});
  support::UniqueFd writer;
  ASSERT_TRUE(support::waitFor([&] {
    writer = support::UniqueFd(open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    return static_cast<bool>(writer);
  }));
  player.send(SIGTERM);
  writer = support::UniqueFd();
  EXPECT_EQ(player.wait(), 130);
  EXPECT_THAT(player.output(), Not(HasSubstr("added")));
}

TEST(InterruptTest, AnInterruptBetweenTwoInputsKeepsWhatWasAdded) {
  support::Gate isAsked;
  support::Gate mayAnswer;
  ScriptedServer services;
  services.onPath("/tickets/read", Script().announce(isAsked).stallUntil(mayAnswer).send(
                                       support::okResponse("{\"records\":[]}")));
  const support::TempDir folder;
  const std::string ticket = folder.write("sealed.tix", "VeskSealedTicket 1\nx");
  PlayerHome home;
  home.addOptions({"--services", services.url("")});
  support::Process player =
      home.start({"get", "http://127.0.0.1:1/a.avi", ticket, "http://127.0.0.1:1/b.avi"});
  ASSERT_TRUE(isAsked.wait());
  player.send(SIGINT);
  mayAnswer.open();
  EXPECT_EQ(player.wait(), 130);
  ASSERT_EQ(home.queue().size(), 1u);
  EXPECT_EQ(home.queue()[0]["title"], "a.avi");
}

TEST(InterruptTest, ALargeTicketIsNotReadToItsEnd) {
  const support::TempDir folder;
  std::string text = "TixVeskVersion=1.0\n";
  constexpr std::size_t kTicketSize = 60'000'000;
  text.reserve(kTicketSize + 100);
  while (text.size() < kTicketSize) text += "a=b\n";
  text += "start\nurl=http://127.0.0.1:1/a.avi\nend\n";
  const std::string ticket = folder.write("large.tix", text);
  PlayerHome home;
  support::Process player = home.start({"get", ticket});
  ASSERT_TRUE(
      support::waitFor([&] { return std::filesystem::exists(home.data() / "player.lock"); }));
  player.send(SIGINT);
  EXPECT_EQ(player.wait(), 130);
  EXPECT_THAT(player.errors(), HasSubstr("Interrupted"));
  EXPECT_TRUE(home.queue().empty()) << "the ticket was read all the same";
}

}  // namespace
}  // namespace system_test
