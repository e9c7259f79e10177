#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/file.h>
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

  /// The next reply, behind whatever else is said; all that was said when no reply comes.
  static std::string hear(const support::UniqueFd& visitor) {
    std::string said;
    char piece[4096];
    for (;;) {
      const auto start = said.rfind('\n', said.size() - 2) + 1;
      if (said.ends_with('\n') && said.find("{\"reply\"", start) == start)
        return said.substr(start);
      const auto got = recv(visitor.get(), piece, sizeof piece, 0);
      if (got <= 0) return said;
      said.append(piece, static_cast<std::size_t>(got));
    }
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

TEST_F(AttackedSocketTest, WhoIsNotServedForTheOthersIsToldSo) {
  std::vector<support::UniqueFd> visitors;
  for (int i = 0; i < 300; ++i) visitors.push_back(visit());
  const PlayerResult added = home.run({"add", server.url("/b.avi")});
  EXPECT_EQ(added.status, 1);
  EXPECT_THAT(added.errors, testing::HasSubstr("talks with as many others as it can"));
  EXPECT_EQ(home.run({"watch"}).status, 1);
  EXPECT_EQ(home.queue().size(), 1u) << "the saved one";
  visitors.clear();
  expectUnharmed();
}

TEST_F(AttackedSocketTest, OfTwoHundredAtOnceEachIsServedOrTurnedAway) {
  std::vector<support::UniqueFd> visitors;
  for (int i = 0; i < 200; ++i) visitors.push_back(visit());
  for (std::size_t i = 0; i < visitors.size(); ++i) {
    const std::string url = server.url("/" + std::to_string(i) + ".avi");
    say(visitors[i], R"({"action":"add","inputs":[")" + url + "\"]}\n");
  }
  std::size_t served = 0;
  std::size_t refused = 0;
  for (const auto& visitor : visitors) {
    const std::string answer = hear(visitor);
    served += answer.find("\"reply\":\"done\"") != std::string::npos ? 1 : 0;
    refused += answer.find("\"busy\":true") != std::string::npos ? 1 : 0;
  }
  EXPECT_EQ(served + refused, visitors.size());
  EXPECT_GE(served, 64u);
  visitors.clear();
  EXPECT_EQ(home.queue().size(), 1 + served);
  player->send(SIGTERM);
}

TEST_F(AttackedSocketTest, WhatTheCommandLineRefusesIsRefusedThere) {
  const support::UniqueFd visitor = visit();
  for (const char* options :
       {R"("headers":["A: b\r\nC: d"])", R"("headers":["Range: bytes=0-"])", R"("sha256":"zz")",
        R"("cookieFile":"jar")", R"("cookieFile":"/")", R"("netrcFile":"/none")",
        R"("referer":"a\nb")", R"("tries":4000000000)", R"("timeoutSeconds":86401)"}) {
    say(visitor, R"({"action":"add","inputs":[")" + server.url("/b.avi") + R"("],"options":{)" +
                     options + "}}\n");
    EXPECT_THAT(hear(visitor), testing::HasSubstr(R"({"reply":"wrong_use","notes":[")")) << options;
  }
  EXPECT_EQ(home.queue().size(), 1u);
  expectUnharmed();
}

TEST_F(AttackedSocketTest, AVisitorThatNeverReadsHarmsNobody) {
  const support::UniqueFd visitor = visit();
  std::string requests;
  for (int i = 0; i < 2000; ++i) requests += "{\"action\":\"list\"}\n";
  say(visitor, requests);
  expectUnharmed();
}

/// A queue that is held by something else than this program.
class StrangerTest : public AttackedSocketTest {
 protected:
  StrangerTest() {
    const std::string place = door();
    player->send(SIGKILL);
    player->wait();
    std::filesystem::remove(place);
    lock_ = support::UniqueFd(open((home.data() / "player.lock").c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_EQ(flock(lock_.get(), LOCK_EX | LOCK_NB), 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    place.copy(address.sun_path, sizeof address.sun_path - 1);
    const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
    EXPECT_EQ(bind(listener_.get(), generic, sizeof address), 0);
    EXPECT_EQ(listen(listener_.get(), 5), 0);
  }

  /// What a command says that is met with these words, and whose request is then left unanswered.
  PlayerResult meet(const std::string& words, const std::vector<std::string>& command) {
    support::Process visitor(home.startOptions(command));
    {
      const support::UniqueFd connection(accept(listener_.get(), nullptr, nullptr));
      say(connection, words + "\n");
      char request[4096];
      while (recv(connection.get(), request, sizeof request, 0) == sizeof request) continue;
    }
    return finish(visitor);
  }

  /// Greets each visit of a command, and ends it, until the command ends.
  void greetForEver(const std::string& words, support::Process& visitor) {
    pollfd visit{listener_.get(), POLLIN, 0};
    while (visitor.running()) {
      if (poll(&visit, 1, 20) <= 0) continue;
      const support::UniqueFd connection(accept(listener_.get(), nullptr, nullptr));
      say(connection, words + "\n");
    }
  }

 private:
  support::UniqueFd lock_;
  support::UniqueFd listener_{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

TEST_F(StrangerTest, AnotherVersionIsNamed) {
  const std::string greeting = R"({"queue":"playerx","protocol":2,"version":"9.9","pid":7})";
  for (const char* command : {"get", "pause", "watch"}) {
    const PlayerResult result = meet(greeting, {command});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, testing::HasSubstr("another version of the player (9.9"));
  }
}

TEST_F(StrangerTest, AnAnswerThatDoesNotComeIsSaid) {
  const std::string greeting = R"({"queue":"playerx","protocol":1,"version":"1.0.0","pid":7})";
  const PlayerResult result = meet(greeting, {"remove", "1"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, testing::HasSubstr("has ended before it answered"));
}

TEST_F(StrangerTest, MoreThanItTakesAtOnceIsNotSent) {
  const std::string greeting = R"({"queue":"playerx","protocol":1,"version":"1.0.0","pid":7})";
  std::string list;
  for (int i = 0; i < 2200; ++i) {
    list += "http://h/" + std::string(8000, 'a') + std::to_string(i) + ".avi\n";
  }
  const support::TempDir folder;
  for (const char* command : {"add", "get"}) {
    const PlayerResult result = meet(greeting, {command, "-i", folder.write("list", list)});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, testing::HasSubstr("more than the player that holds the queue"));
  }
}

TEST_F(StrangerTest, OneThatEndsEachTimeIsNotAskedForEver) {
  const std::string greeting = R"({"queue":"playerx","protocol":1,"version":"1.0.0","pid":7})";
  support::Process visitor(home.startOptions({"get", server.url("/b.avi")}));
  greetForEver(greeting, visitor);
  const PlayerResult result = finish(visitor);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, testing::HasSubstr("ends each time before it answers"));
}

TEST_F(StrangerTest, GarbageInPlaceOfAGreetingIsSaid) {
  const PlayerResult result = meet("\x01\xff{", {"add", server.url("/b.avi")});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, testing::HasSubstr("is not understood"));
}

}  // namespace
}  // namespace system_test
