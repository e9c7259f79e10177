#include <gmock/gmock.h>

#include <csignal>
#include <set>

#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"
#include "tests/system/TracedPlayer.h"

namespace system_test {
namespace {

using support::Script;
using support::ScriptedServer;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The queue file cannot be written, at once or from some moment on.
class QueueSavingTest : public testing::Test {
 protected:
  ScriptedServer server;
  PlayerHome home;

  void SetUp() override { std::filesystem::create_directories(home.data()); }

  void queueOne() {
    support::writeFile(home.queueFile(),
                       "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>"
                       "<DownloadItem title=\"a\" status=\"4\" url=\"http://h/a.avi\"/>"
                       "</DownloadQueue>\n");
  }

  /// The player's own folder is a full file system while the player runs.
  void fillDataDisk() {
    const std::string lack = lackOfNamespaces();
    ASSERT_EQ(lack, "");
    home.mountFirst(
        "mount -t tmpfs -o size=64k data \"$0\" && { head -c 1m /dev/zero > \"$0/x\" || true; }",
        home.data());
  }

  /// Removes the only item on a disk with the queue, what the player has reserved, and not a byte
  /// to spare. The output ends with the status, the queue file, and the partials.
  PlayerResult removeOnFullDisk(const std::string& fill) {
    EXPECT_EQ(home.run({"pause", "1"}).status, 1) << "one that has failed; the queue is opened";
    std::filesystem::copy_file(home.queueFile(), home.data() / "saved.xml");
    std::string player;
    for (const std::string& word : home.commandLine({"remove", "1"})) player += "'" + word + "' ";
    const std::string commands =
        "exec 3< saved.xml 4< reserved-room; mount -t tmpfs -o size=1m data . && cd \"$PWD\" && "
        "cat <&3 > downloadmanager.xml && cat <&4 > reserved-room && " +
        fill + "; " + player + "; echo status $?; cat downloadmanager.xml; ls partial";
    support::Process shell(
        {.arguments = {"unshare", "--map-root-user", "--mount", "sh", "-c", commands},
         .environment = home.environment(),
         .workingFolder = home.data()});
    return finish(shell);
  }

  auto saysThatItCannotBeWritten() {
    return AllOf(HasSubstr("The queue file " + home.queueFile().string()), HasSubstr("--data"));
  }
};

TEST_F(QueueSavingTest, AFullDiskIsSaidBeforeAnythingIsAdded) {
  fillDataDisk();
  const PlayerResult result = home.run({"get", server.url("/a.avi")});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, saysThatItCannotBeWritten());
  EXPECT_THAT(result.errors, HasSubstr("No space left"));
  EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(QueueSavingTest, AFolderInThePlaceOfTheFileIsSaid) {
  std::filesystem::create_directories(home.queueFile() / "kept");
  const PlayerResult result = home.run({"clear"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr(home.queueFile().string() + " is a folder; nothing"));
  EXPECT_TRUE(std::filesystem::exists(home.queueFile() / "kept"));
}

TEST_F(QueueSavingTest, TheListIsPrintedAllTheSame) {
  queueOne();
  fillDataDisk();
  EXPECT_EQ(home.run({"list"}).status, 0);
}

TEST_F(QueueSavingTest, AFileThatCannotBeReplacedAnyMoreIsSaidAtTheEnd) {
  server.always(Script().readRequest().stall());
  support::Process player = home.start({"get", server.url("/a.avi")});
  ASSERT_TRUE(player.waitForOutput("\"added\""));
  ASSERT_TRUE(support::waitFor([this] { return server.connectionCount() > 0; }));
  std::filesystem::rename(home.queueFile(), home.data() / "away");
  std::filesystem::create_directories(home.queueFile());
  player.send(SIGINT);
  EXPECT_EQ(player.wait(), 1);
  EXPECT_THAT(player.errors(), HasSubstr("does not hold the last changes"));
}

TEST_F(QueueSavingTest, AFilmThatFillsTheDiskIsNamedWithTheFolderToChange) {
  const std::string lack = lackOfNamespaces();
  ASSERT_EQ(lack, "");
  home.mountFirst("mount -t tmpfs -o size=1m data \"$0\"", home.data());
  server.onRequest([](const std::string& request) {
    const bool isHead = request.starts_with("HEAD");
    return Script()
        .send("HTTP/1.1 200 OK\r\nETag: \"1\"\r\nContent-Length: " +
              std::string(isHead ? "1000" : "3000000") + "\r\nConnection: close\r\n\r\n")
        .send(isHead ? "" : distinctBytes(3'000'000))
        .close();
  });
  const PlayerResult result = home.run({"get", server.url("/a.avi")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.failureCode(), "no_space");
  EXPECT_THAT(result.output, HasSubstr("another folder with --data."));
}

TEST_F(QueueSavingTest, AFullDiskKeepsNobodyFromRemoving) {
  const std::string lack = lackOfNamespaces();
  ASSERT_EQ(lack, "");
  queueOne();
  const PlayerResult result = removeOnFullDisk(
      "mkdir partial && { head -c 2m /dev/zero > partial/0123456789abcdef.part || true; }");
  EXPECT_THAT(result.output, HasSubstr("status 0")) << result.output << result.errors;
  EXPECT_THAT(result.output, AllOf(Not(HasSubstr("a.avi\"")), Not(HasSubstr(".part"))));
}

TEST_F(QueueSavingTest, RemovingHasItsRoomOnADiskThatOthersHaveFilled) {
  const std::string lack = lackOfNamespaces();
  ASSERT_EQ(lack, "");
  queueOne();
  const PlayerResult result = removeOnFullDisk("{ head -c 2m /dev/zero > of-others || true; }");
  EXPECT_THAT(result.output, HasSubstr("status 0")) << result.output << result.errors;
  EXPECT_THAT(result.output, Not(HasSubstr("a.avi\"")));
}

TEST_F(QueueSavingTest, AFileThatCannotBeOpenedIsSaidAndLeftAsItIs) {
  std::filesystem::create_symlink(home.queueFile(), home.queueFile());
  for (const char* command : {"list", "clear", "get"}) {
    const PlayerResult result = home.run({command});
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_THAT(result.errors, AllOf(HasSubstr("The queue file " + home.queueFile().string()),
                                     HasSubstr("cannot be read"), Not(HasSubstr("empty"))));
  }
  EXPECT_TRUE(std::filesystem::is_symlink(home.queueFile()));
}

TEST_F(QueueSavingTest, NobodyElseReadsTheFilesOfThePlayer) {
  std::filesystem::permissions(home.data(), std::filesystem::perms(0755));
  queueOne();
  std::filesystem::permissions(home.queueFile(), std::filesystem::perms(0644));
  const std::string url = "http://127.0.0.1:1/b.avi";
  EXPECT_EQ(home.run({"get", "--header", "A: b", url}).status, 1);
  EXPECT_EQ(home.run({"add", "http://127.0.0.1:1/c.avi"}).status, 0);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(home.data())) {
    if (!entry.is_regular_file()) continue;
    const auto mode = static_cast<unsigned>(entry.status().permissions());
    EXPECT_EQ(mode & 077U, 0U) << entry.path();
  }
}

TEST_F(QueueSavingTest, NothingIsOpenToOthersAtAnyMoment) {
  std::filesystem::permissions(home.data(), std::filesystem::perms(0755));
  const support::Nginx server;
  writeDistinctFile(server.root() / "a.avi", 6'000'000);
  std::set<std::string> open;
  const auto look = [&](const std::string&) {
    std::error_code gone;
    for (const auto& entry : std::filesystem::directory_iterator(home.data(), gone)) {
      const auto mode = static_cast<unsigned>(entry.status(gone).permissions());
      if (!gone && (mode & 077U) != 0) open.insert(entry.path());
    }
    return false;
  };
  TracedPlayer player(home.startOptions({"get", "--header", "A: b", server.url("/a.avi")}));
  player.run(look);
  EXPECT_EQ(player.process().wait(), 0) << player.process().errors();
  EXPECT_THAT(open, IsEmpty());
}

TEST_F(QueueSavingTest, NothingIsSaidOfAQueueThatIsSaved) {
  queueOne();
  const PlayerResult result = home.run({"clear"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "Removed one completed item.\n");
  EXPECT_THAT(support::readFile(home.queueFile()), Not(HasSubstr("a.avi")));
}

}  // namespace
}  // namespace system_test
