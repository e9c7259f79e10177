#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "tests/support/Loopback.h"
#include "tests/support/ScriptedServer.h"

namespace support {
namespace {

std::string readAll(int fd) {
  std::string all;
  char piece[4096];
  ssize_t got = 0;
  while ((got = ::recv(fd, piece, sizeof piece, 0)) > 0)
    all.append(piece, static_cast<std::size_t>(got));
  return all;
}

std::string exchange(std::uint16_t port, const std::string& request) {
  const UniqueFd fd = connectToLoopback(port);
  ::send(fd.get(), request.data(), request.size(), MSG_NOSIGNAL);
  return readAll(fd.get());
}

TEST(ScriptedServerTest, ScriptsAreUsedInTurnAndRequestsAreKept) {
  ScriptedServer server;
  server.next(Script::answer("first")).next(Script::answer("second"));
  EXPECT_EQ(exchange(server.port(), "A\r\n\r\n"), "first");
  EXPECT_EQ(exchange(server.port(), "B\r\n\r\nmore"), "second");
  EXPECT_EQ(server.ended(0).received, "A\r\n\r\n");
  EXPECT_EQ(server.ended(1).received, "B\r\n\r\nmore");
  EXPECT_EQ(server.connectionCount(), 2u);
}

TEST(ScriptedServerTest, ThePathChoosesTheScript) {
  ScriptedServer server;
  server.onPath("/a", Script().send("for a")).onPath("/b?c=1", Script().send("for b"));
  server.onRequest(
      [](const std::string& request) { return Script().send("asked " + request.substr(0, 5)); });
  EXPECT_EQ(exchange(server.port(), "GET /b?c=1 HTTP/1.0\r\n\r\n"), "for b");
  EXPECT_EQ(exchange(server.port(), "GET /a HTTP/1.0\r\n\r\n"), "for a");
  EXPECT_EQ(exchange(server.port(), "HEAD / HTTP/1.0\r\n\r\n"), "asked HEAD ");
}

TEST(ScriptedServerTest, EveryPieceIsReadByThePeerBeforeTheNextIsSent) {
  ScriptedServer server;
  server.next(Script().sendPieces("abcdefg", 3));
  const UniqueFd fd = connectToLoopback(server.port());
  std::string sizes;
  char piece[64];
  ssize_t got = 0;
  while ((got = ::recv(fd.get(), piece, sizeof piece, 0)) > 0) sizes += std::to_string(got);
  EXPECT_EQ(sizes, "331");
}

TEST(ScriptedServerTest, AStallEndsWhenTheGateOpens) {
  ScriptedServer server;
  Gate reached, go;
  server.next(Script().readRequest().announce(reached).stallUntil(go).send("late"));
  const UniqueFd fd = connectToLoopback(server.port());
  ::send(fd.get(), "X\r\n\r\n", 5, MSG_NOSIGNAL);
  ASSERT_TRUE(reached.wait());
  EXPECT_FALSE(server.connection(0).ended);
  go.open();
  EXPECT_EQ(readAll(fd.get()), "late");
}

TEST(ScriptedServerTest, AResetIsSeenAsAReset) {
  ScriptedServer server;
  server.next(Script().readBytes(1).reset());
  const UniqueFd fd = connectToLoopback(server.port());
  ::send(fd.get(), "X", 1, MSG_NOSIGNAL);
  char byte = 0;
  EXPECT_EQ(::recv(fd.get(), &byte, 1, 0), -1);
  EXPECT_EQ(errno, ECONNRESET);
}

TEST(ScriptedServerTest, StoppingEndsConnectionsThatStall) {
  ScriptedServer server;
  Gate reached;
  server.next(Script().announce(reached).stall());
  const UniqueFd fd = connectToLoopback(server.port());
  ASSERT_TRUE(reached.wait());
  server.stop();
  EXPECT_EQ(readAll(fd.get()), "");
}

TEST(LoopbackTest, ARefusingPortRefuses) { EXPECT_FALSE(connectToLoopback(RefusingPort().port())); }

TEST(LoopbackTest, ASilentPortNeitherAcceptsNorRefuses) {
  const SilentPort silent;
  EXPECT_FALSE(isConnecting(silent.port()));
  const UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(silent.port());
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(::connect(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), -1);
  EXPECT_EQ(errno, EINPROGRESS);
  pollfd watched{fd.get(), POLLIN | POLLOUT, 0};
  EXPECT_EQ(::poll(&watched, 1, 100), 0);
  EXPECT_TRUE(isConnecting(silent.port()));
}

}  // namespace
}  // namespace support
