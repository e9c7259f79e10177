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

/// Online services, with a film of theirs, that answer but one request.
class SilentServicesTest : public testing::TestWithParam<const char*> {
 protected:
  /// What the player needs to end, and what an exchange may take.
  static constexpr std::chrono::seconds kEnd{5};

  SilentServicesTest() {
    server_.onRequest([this](const std::string& request) { return answer(request); });
    home_.addOptions({"--services", server_.url("")});
  }

  Script answer(const std::string& request) {
    if (request.find(GetParam()) != std::string::npos) return Script().announce(isAsked_).stall();
    const bool isHead = request.starts_with("HEAD");
    if (isHead) return Script().send(support::bareResponse("200 OK", "Content-Length: 4\r\n"));
    return Script().send(support::okResponse(bodyFor(request)));
  }

  std::string bodyFor(const std::string& request) const {
    if (request.starts_with("POST /tickets/read")) {
      return R"({"records":[{"ticket":"t","title":"Film","usageId":1}]})";
    }
    if (request.starts_with("GET /ready")) return R"({"ready":true})";
    if (request.starts_with("POST /downloads/authorize")) {
      return R"({"success":true,"username":"","password":"","ticketId":7,"size":4,"rights":"",)"
             R"("url":")" +
             server_.url("/film.mkv") + "\"}";
    }
    return "film";
  }

  std::string ticket() const { return folder_.write("t.tix", "VeskSealedTicket 1\nx"); }

  support::Gate isAsked_;
  ScriptedServer server_;
  support::TempDir folder_;
  PlayerHome home_;
};

TEST_P(SilentServicesTest, DoNotHoldAnInterruptUp) {
  support::Process player = home_.start({"get", ticket()});
  ASSERT_TRUE(isAsked_.wait());
  player.send(SIGTERM);
  EXPECT_EQ(player.wait(kEnd), 130) << player.output() << player.errors();
}

TEST_P(SilentServicesTest, LeaveTheTicketOrItsFilmInPlace) {
  const std::string file = ticket();
  support::Process player = home_.start({"get", file});
  ASSERT_TRUE(isAsked_.wait());
  player.send(SIGINT);
  EXPECT_EQ(player.wait(kEnd), 130) << player.output() << player.errors();
  EXPECT_THAT(player.errors(), HasSubstr("Interrupted"));
  EXPECT_EQ(home_.queue().size(), std::filesystem::exists(file) ? 0u : 1u);
  for (const Json& item : home_.queue()) EXPECT_NE(item["status"], "failed");
}

INSTANTIATE_TEST_SUITE_P(Requests, SilentServicesTest,
                         testing::Values("/tickets/read", "/ready", "/downloads/authorize"),
                         [](const auto& test) {
                           const std::filesystem::path path = test.param;
                           return path.filename().string();
                         });

class SilentConfirmationTest : public SilentServicesTest {};

TEST_P(SilentConfirmationTest, DoesNotHoldTheEndUp) {
  support::Process player = home_.start({"get", ticket()});
  ASSERT_TRUE(isAsked_.wait());
  EXPECT_EQ(player.wait(kEnd), 0) << player.output() << player.errors();
  EXPECT_EQ(home_.queue().at(0)["status"], "completed");
}

INSTANTIATE_TEST_SUITE_P(Requests, SilentConfirmationTest, testing::Values("/downloads/confirm"),
                         [](const auto&) { return "confirm"; });

}  // namespace
}  // namespace system_test
