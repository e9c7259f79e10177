#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <QLocalSocket>
#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

#include "playerx/app/door/DoorClient.h"
#include "playerx/app/door/DoorPath.h"
#include "playerx/app/door/DoorServer.h"
#include "playerx/platform/Descriptor.h"
#include "tests/support/Gate.h"
#include "tests/support/TempDir.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::door {
namespace {

using namespace std::chrono_literals;
using support::kGenerousDeadline;

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

class DoorTest : public ::testing::Test {
 protected:
  DoorTest() { EXPECT_EQ(server_->listen(path()), ""); }

  static void SetUpTestSuite() { needApplication(); }

  std::string path() const { return folder_.path().string() + "/door"; }

  std::unique_ptr<DoorClient> visit() {
    auto client = std::make_unique<DoorClient>();
    EXPECT_EQ(client->connect(path(), kGenerousDeadline), "welcome");
    return client;
  }

  /// The next lines that reach the server, `count` of them.
  std::vector<DoorServer::Line> take(std::size_t count) {
    std::vector<DoorServer::Line> lines;
    EXPECT_TRUE(support::waitFor([&] {
      for (auto& line : server_->takeLines()) lines.push_back(std::move(line));
      return lines.size() >= count;
    }));
    return lines;
  }

  support::TempDir folder_;
  std::atomic<std::size_t> wakes_ = 0;
  std::unique_ptr<DoorServer> server_ =
      std::make_unique<DoorServer>("welcome", "full", [this] { ++wakes_; });
};

/// The names of what comes into being in a folder.
class NewNames {
 public:
  explicit NewNames(const std::filesystem::path& folder) {
    EXPECT_GE(inotify_add_watch(watch_.get(), folder.c_str(), IN_CREATE | IN_MOVED_TO), 0);
  }

  std::vector<std::string> take() const {
    std::vector<std::string> names;
    alignas(inotify_event) std::array<char, 4096> bytes{};
    const ssize_t length = read(watch_.get(), bytes.data(), bytes.size());
    for (ssize_t at = 0; at < length;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(&bytes.at(at));
      names.emplace_back(event->name);
      at += static_cast<ssize_t>(sizeof *event + event->len);
    }
    return names;
  }

 private:
  const Descriptor watch_{inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
};

TEST_F(DoorTest, MakesTheSocketAndNothingBesideIt) {
  const support::TempDir folder;
  const NewNames names(folder.path());
  DoorServer server("welcome", "full", [] {});
  EXPECT_EQ(server.listen(folder / "door"), "");
  EXPECT_THAT(names.take(), testing::ElementsAre("door"));
}

TEST_F(DoorTest, AVisitorsLinesArriveInOrder) {
  const auto client = visit();
  client->send("one");
  client->send("two");
  const auto lines = take(2);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, "one");
  EXPECT_EQ(lines[1].text, "two");
  EXPECT_EQ(lines[0].visitor, lines[1].visitor);
}

TEST_F(DoorTest, AVisitorWithManyLinesDoesNotKeepOthersWaiting) {
  const auto busy = visit();
  const auto other = visit();
  for (std::size_t count = 0; count < 2 * kMostAtOnce; ++count) busy->send("again");
  other->send("hello");
  ASSERT_TRUE(support::waitFor([this] { return wakes_ == 2 * kMostAtOnce + 1; }));
  const auto lines = server_->takeLines();
  EXPECT_EQ(lines.size(), kMostAtOnce + 1);
  EXPECT_EQ(lines.back().text, "hello");
  EXPECT_EQ(wakes_, 2 * kMostAtOnce + 2) << "there are more";
  EXPECT_EQ(server_->takeLines().size(), kMostAtOnce);
  EXPECT_EQ(wakes_, 2 * kMostAtOnce + 2);
  EXPECT_TRUE(server_->takeLines().empty());
}

TEST_F(DoorTest, ALineGoesToItsVisitorAlone) {
  const auto first = visit();
  const auto second = visit();
  first->send("hello");
  server_->send(take(1).front().visitor, "for the first");
  second->send("hello");
  server_->send(take(1).front().visitor, "for the second");
  EXPECT_EQ(first->receive(kGenerousDeadline), "for the first");
  EXPECT_EQ(second->receive(kGenerousDeadline), "for the second");
}

TEST_F(DoorTest, HalfALineOfAVisitorThatGoesIsDropped) {
  {
    QLocalSocket socket;
    socket.connectToServer(QString::fromStdString(path()));
    ASSERT_TRUE(socket.waitForReadyRead());
    socket.write("whole\nhal");
    ASSERT_TRUE(socket.waitForBytesWritten());
  }
  EXPECT_EQ(take(1).front().text, "whole");
  visit()->send("next");
  EXPECT_EQ(take(1).front().text, "next");
}

TEST_F(DoorTest, AVisitorThatHasGoneIsNotThereAnyMore) {
  auto client = visit();
  client->send("hello");
  const DoorServer::Visitor visitor = take(1).front().visitor;
  EXPECT_TRUE(server_->isThere(visitor));
  client.reset();
  EXPECT_TRUE(support::waitFor([&] { return !server_->isThere(visitor); }));
  server_->send(visitor, "nobody hears this");
}

TEST_F(DoorTest, ALineWithoutEndIsCutOff) {
  QLocalSocket socket;
  socket.connectToServer(QString::fromStdString(path()));
  ASSERT_TRUE(socket.waitForConnected());
  socket.write(QByteArray(kLongestLine + 2, 'x'));
  while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten()) {
  }
  EXPECT_TRUE(socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected());
  EXPECT_TRUE(visit()->isConnected());
}

TEST_F(DoorTest, ALineOfMegabytesArrivesWhole) {
  const auto client = visit();
  const QByteArray large(4 * 1024 * 1024, 'y');
  client->send(large);
  const auto lines = take(1);
  EXPECT_EQ(lines.front().text, large);
  server_->send(lines.front().visitor, large);
  EXPECT_EQ(client->receive(kGenerousDeadline), large);
}

TEST_F(DoorTest, MoreVisitorsThanThereIsRoomForAreTurnedAway) {
  std::vector<std::unique_ptr<DoorClient>> clients;
  for (int i = 0; i < kMostVisitors; ++i) clients.push_back(visit());
  DoorClient late;
  EXPECT_EQ(late.connect(path(), kGenerousDeadline), "full");
  EXPECT_EQ(late.receive(kGenerousDeadline), std::nullopt);
  clients.pop_back();
  EXPECT_TRUE(support::waitFor(
      [&] { return DoorClient().connect(path(), kGenerousDeadline) == "welcome"; }));
}

/// Takes from this process the descriptors that it does not have yet. Lives on one thread.
class NoMoreDescriptors {
 public:
  NoMoreDescriptors() {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    const int next = ::dup(0);
    rlimit none = before_;
    none.rlim_cur = static_cast<rlim_t>(next);
    ::close(next);
    ::setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoMoreDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
  NoMoreDescriptors(const NoMoreDescriptors&) = delete;
  NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

 private:
  rlimit before_{};
};

TEST_F(DoorTest, ADoorThatClosesForWantOfDescriptorsOpensAgain) {
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
  const sockaddr_un address = addressOf(path());
  {
    const NoMoreDescriptors none;
    ASSERT_EQ(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    EXPECT_TRUE(support::waitFor([&] { return !std::filesystem::exists(path()); }));
  }
  EXPECT_TRUE(support::waitFor([&] { return DoorClient().connect(path(), 1s) == "welcome"; }));
}

TEST_F(DoorTest, ALineMayBeLongerThanWhatMayWait) {
  const auto client = visit();
  client->send("hello");
  server_->send(take(1).front().visitor, QByteArray(2 * kMostUnread, 'x'));
  EXPECT_EQ(client->receive(kGenerousDeadline).value_or("").size(), 2 * kMostUnread);
}

TEST_F(DoorTest, WhatWasSentIsReadAfterTheServersEnd) {
  const auto client = visit();
  client->send("hello");
  server_->send(take(1).front().visitor, "the last word");
  server_.reset();
  EXPECT_EQ(client->receive(kGenerousDeadline), "the last word");
  EXPECT_EQ(client->receive(kGenerousDeadline), std::nullopt);
  EXPECT_FALSE(client->isConnected());
}

TEST_F(DoorTest, TheSocketIsItsOwnersAlone) {
  struct stat status {};
  ASSERT_EQ(::stat(path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & (S_IRWXG | S_IRWXO), 0u);
}

TEST_F(DoorTest, AnotherUserIsTurnedAway) {
  // Root alone can become another user; everybody else's visitor is the owner, and is let in.
  const bool isRoot = ::geteuid() == 0;
  ::chmod(folder_.path().c_str(), 0777);
  ::chmod(path().c_str(), 0777);
  const sockaddr_un address = addressOf(path());
  std::string heard(16, '\0');
  std::jthread visitor([&] {
    // The call itself, because setresuid(2) of the library is for all threads.
    if (isRoot) ::syscall(SYS_setresuid, -1, 65534, -1);
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    EXPECT_EQ(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    const auto count = ::recv(socket.get(), heard.data(), heard.size(), 0);
    heard.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  });
  visitor.join();
  EXPECT_EQ(heard, isRoot ? "" : "welcome\n");
}

TEST_F(DoorTest, ASocketLeftByADeadProcessIsReplaced) {
  const std::string left = folder_.path().string() + "/left";
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  const sockaddr_un address = addressOf(left);
  ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ::close(socket);
  EXPECT_EQ(DoorClient().connect(left, kGenerousDeadline), std::nullopt);
  DoorServer server("again", "", [] {});
  EXPECT_EQ(server.listen(left), "");
  EXPECT_EQ(DoorClient().connect(left, kGenerousDeadline), "again");
}

TEST_F(DoorTest, AFolderInThePlaceOfTheSocketIsSaid) {
  const std::string path = folder_ / "taken";
  std::filesystem::create_directory(path);
  DoorServer server("welcome", "full", [] {});
  EXPECT_EQ(server.listen(path), "The socket " + path + " cannot be opened (a folder lies there).");
}

TEST_F(DoorTest, AFolderThatIsNotThereIsSaid) {
  DoorServer server("welcome", "", [] {});
  EXPECT_NE(server.listen(folder_.path().string() + "/none/door"), "");
  EXPECT_NE(server.listen(""), "");
}

class DoorPathTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { needApplication(); }

  DoorPathTest() { ::setenv("XDG_RUNTIME_DIR", runtime_.path().c_str(), 1); }
  ~DoorPathTest() override {
    ::unsetenv("XDG_RUNTIME_DIR");
    ::unsetenv("TMPDIR");
    if (!temporary_.isNull()) qputenv("TMPDIR", temporary_);
  }

  const QByteArray temporary_ = qgetenv("TMPDIR");
  support::TempDir runtime_;
  support::TempDir data_;
};

TEST_F(DoorPathTest, TheRuntimeFolderIsPreferred) {
  EXPECT_EQ(std::filesystem::path(doorPath(data_.path().string())).parent_path(), runtime_.path());
}

TEST_F(DoorPathTest, EverySpellingOfAFolderHasOneDoor) {
  EXPECT_EQ(doorPath(data_.path().string()), doorPath(data_.path().string() + "/."));
  EXPECT_NE(doorPath(data_.path().string()), doorPath(runtime_.path().string()));
}

TEST_F(DoorPathTest, ARuntimeFolderThatOthersMayEnterIsNotUsed) {
  ::chmod(runtime_.path().c_str(), 0755);
  EXPECT_EQ(doorPath(data_.path().string()), data_.path().string() + "/queue.socket");
}

TEST_F(DoorPathTest, ALongDataFolderWithoutRuntimeFolderHasItsDoorAmongTheTemporaryFiles) {
  ::unsetenv("XDG_RUNTIME_DIR");
  ::setenv("TMPDIR", runtime_.path().c_str(), 1);
  const std::string deep = data_.path().string() + "/" + std::string(100, 'd');
  std::filesystem::create_directory(deep);
  const std::string path = doorPath(deep);
  EXPECT_LT(path.size(), 90u);
  EXPECT_TRUE(path.starts_with(runtime_.path().string()));
  DoorServer server("welcome", "", [] {});
  EXPECT_EQ(server.listen(path), "");
}

}  // namespace
}  // namespace playerx::door
