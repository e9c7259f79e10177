#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

#include "tests/support/Nginx.h"
#include "tests/support/UniqueFd.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using testing::ElementsAre;

/// A player that downloads while others do to its socket what they should not.
class AttackedSocketTest : public testing::Test {
 protected:
  AttackedSocketTest() {
    std::filesystem::permissions(runtime.path(), std::filesystem::perms::owner_all);
    home.setEnvironment("XDG_RUNTIME_DIR", runtime.path());
    writeDistinctFile(server.root() / "a.avi", 8'000'000);
    player = std::make_unique<support::Process>(
        home.startOptions({"get", "--limit-rate", "100K", server.url("/a.avi")}));
    EXPECT_TRUE(player->waitForOutput("\"downloading\"")) << player->errors();
  }

  std::filesystem::path door() const {
    for (const auto& entry : std::filesystem::directory_iterator(runtime.path())) {
      if (entry.is_socket()) return entry.path();
    }
    return {};
  }

  support::UniqueFd visit() const {
    support::UniqueFd visitor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, door().c_str(), sizeof address.sun_path - 1);
    const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
    if (connect(visitor.get(), generic, sizeof address) != 0) return {};
    return visitor;
  }

  static void say(const support::UniqueFd& visitor, const std::string& text) {
    [[maybe_unused]] const auto sent =
        send(visitor.get(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }

  /// The player still answers, and brings its film to the end.
  void expectUnharmed() {
    const PlayerResult result = home.run({"limit", "none"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(player->wait(std::chrono::minutes(1)), 0) << player->errors();
    EXPECT_THAT(home.films(), ElementsAre("a.avi"));
  }

  support::Nginx server;
  support::TempDir runtime;
  PlayerHome home;
  std::unique_ptr<support::Process> player;
};

TEST_F(AttackedSocketTest, TheSocketIsItsOwnersAlone) {
  struct stat status {};
  ASSERT_EQ(stat(door().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 077U, 0U);
  expectUnharmed();
}

TEST_F(AttackedSocketTest, GarbageHarmsNobody) {
  for (const std::string& garbage :
       {std::string("\n\n\n"), std::string(100'000, '['), std::string("\0\xff\xfe\n", 4),
        std::string("{\"action\":\"add\",\"inputs\":[7]}\n"), std::string("GET / HTTP/1.1\r\n\r\n"),
        std::string("{\"action\":\"move\",\"position\":-9223372036854775808}\n")}) {
    const support::UniqueFd visitor = visit();
    ASSERT_TRUE(visitor);
    say(visitor, garbage);
  }
  expectUnharmed();
}

TEST_F(AttackedSocketTest, AThousandConnectionsHarmNobody) {
  for (int round = 0; round < 20; ++round) {
    std::vector<support::UniqueFd> visitors;
    for (int i = 0; i < 50; ++i) visitors.push_back(visit());
    for (const auto& visitor : visitors) say(visitor, "{\"action\":\"watch\"}\n{\"act");
  }
  expectUnharmed();
}

TEST_F(AttackedSocketTest, AVisitorThatNeverReadsHarmsNobody) {
  const support::UniqueFd visitor = visit();
  std::string requests;
  for (int i = 0; i < 2000; ++i) requests += "{\"action\":\"list\"}\n";
  say(visitor, requests);
  expectUnharmed();
}

}  // namespace
}  // namespace system_test
