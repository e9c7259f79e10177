#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/Nginx.h"
#include "tests/support/TempDir.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using testing::ElementsAre;

class HostileQueueTest : public testing::Test {
 protected:
  support::Nginx server;
  PlayerHome home;

  void SetUp() override {
    std::filesystem::create_directories(home.data());
    server.serve("a.avi", distinctBytes(5000));
  }

  /// Whether some file in the data folder still holds these bytes.
  bool isKept(const std::string& content) {
    for (const auto& entry : std::filesystem::directory_iterator(home.data())) {
      if (entry.is_regular_file() && support::readFile(entry.path()) == content) return true;
    }
    return false;
  }

  /// Each command says what is wrong with the queue file, and changes nothing.
  void expectRefused(const std::string& kind) {
    for (const char* command : {"list", "get", "clear"}) {
      const PlayerResult result = home.run({command});
      EXPECT_EQ(result.status, 1) << command;
      EXPECT_THAT(result.errors,
                  testing::HasSubstr(home.queueFile().string() + " is " + kind + "; nothing"));
    }
  }

  void expectDownloadsAllTheSame() {
    const PlayerResult result = home.run({"get", server.url("/a.avi")});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_THAT(home.films(), ElementsAre("a.avi"));
  }
};

TEST_F(HostileQueueTest, AnEmptyQueueFileIsSetAside) {
  support::writeFile(home.queueFile(), "");
  const PlayerResult result = home.run({"clear"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(result.errors, testing::HasSubstr("set aside as "));
  expectDownloadsAllTheSame();
}

TEST_F(HostileQueueTest, AQueueThatAKilledPlayerSetAsideIsSaidOnce) {
  support::writeFile(home.queueFile().string() + ".unreadable", "precious");
  EXPECT_THAT(home.run({"get"}).errors, testing::HasSubstr("set aside as "));
  EXPECT_EQ(home.run({"get"}).errors, "The queue is empty.\n");
}

TEST_F(HostileQueueTest, ATornQueueFileIsSetAside) {
  const std::string torn =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue><DownloadItem title=\"precious";
  support::writeFile(home.queueFile(), torn);
  expectDownloadsAllTheSame();
  EXPECT_TRUE(isKept(torn));
}

TEST_F(HostileQueueTest, AFileOfAnotherFormatIsSetAside) {
  const std::string other(4000, '\x01');
  support::writeFile(home.queueFile(), other);
  const PlayerResult list = home.run({"list"});
  EXPECT_EQ(list.status, 1);
  EXPECT_THAT(list.errors, testing::HasSubstr("is damaged; nothing was changed"));
  EXPECT_EQ(support::readFile(home.queueFile()), other);
  expectDownloadsAllTheSame();
  EXPECT_TRUE(isKept(other));
}

TEST_F(HostileQueueTest, HostileTextInOneItemLeavesTheOthersAlone) {
  support::writeFile(
      home.queueFile(),
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>"
      "<DownloadItem title=\"&#x1b;]0;evil&#7;\" status=\"4\"/>"
      "<DownloadItem title=\"\xF0\x9F\x8E\xAC &lt;b&gt; &quot;x&quot;\" status=\"99\" "
      "fileSize=\"-5\" percentDownloaded=\"9999999999\"/></DownloadQueue>\n");
  expectDownloadsAllTheSame();
}

TEST_F(HostileQueueTest, WhatIsNoQueueFileIsNamedInsteadOfWaitedFor) {
  ASSERT_EQ(mkfifo(home.queueFile().c_str(), 0600), 0);
  expectRefused("not a file but a pipe or a device");
  std::filesystem::remove(home.queueFile());
  std::filesystem::create_symlink("/dev/zero", home.queueFile());
  expectRefused("not a file but a pipe or a device");
}

TEST_F(HostileQueueTest, APlantedLinkIsNotWrittenThrough) {
  const support::TempDir elsewhere;
  std::filesystem::create_symlink(elsewhere / "victim", home.queueFile());
  expectRefused("a link that leads nowhere");
  EXPECT_FALSE(std::filesystem::exists(elsewhere / "victim"));
}

TEST_F(HostileQueueTest, NoPlantedLinkOfAnyFileIsWrittenThrough) {
  const support::TempDir elsewhere;
  for (const char* name : {"failures.json", "film-options.jsonl"}) {
    std::filesystem::create_symlink(elsewhere / name, home.data() / name);
  }
  EXPECT_EQ(home.run({"get", "--tries", "2", server.url("/none.avi")}).status, 1);
  EXPECT_TRUE(std::filesystem::is_regular_file(home.data() / "failures.json"));
  std::filesystem::remove(home.data() / "player.lock");
  std::filesystem::create_symlink(elsewhere / "lock", home.data() / "player.lock");
  EXPECT_EQ(home.run({"get"}).status, 1);
  EXPECT_TRUE(std::filesystem::is_empty(elsewhere.path()));
}

TEST_F(HostileQueueTest, AQueueThatTheUserKeepsElsewhereGoesOn) {
  expectDownloadsAllTheSame();
  const support::TempDir elsewhere;
  std::filesystem::rename(home.queueFile(), elsewhere / "queue.xml");
  std::filesystem::create_symlink(elsewhere / "queue.xml", home.queueFile());
  server.serve("b.avi", distinctBytes(5000));
  EXPECT_EQ(home.run({"get", server.url("/b.avi")}).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(home.queueFile()));
  EXPECT_EQ(home.queue().size(), 2u);
}

TEST_F(HostileQueueTest, APipeInThePlaceOfAnotherFileHoldsNothingUp) {
  for (const char* name : {"failures.json", "film-options.jsonl"}) {
    ASSERT_EQ(mkfifo((home.data() / name).c_str(), 0600), 0);
  }
  const PlayerResult result =
      home.run({"get", "--tries", "2", server.url("/none.avi"), server.url("/a.avi")});
  EXPECT_EQ(result.status, 1) << result.output << result.errors;
  EXPECT_THAT(home.films(), ElementsAre("a.avi"));
  EXPECT_THAT(result.errors, testing::AllOf(testing::HasSubstr("failures.json is forgotten"),
                                            testing::HasSubstr("film-options.jsonl is forgotten")));
}

TEST_F(HostileQueueTest, ANewQueueSurvivesARestart) {
  expectDownloadsAllTheSame();
  ASSERT_EQ(home.queue().size(), 1u);
  EXPECT_EQ(home.queue()[0]["status"], "completed");
  EXPECT_EQ(home.queue()[0]["url"], server.url("/a.avi"));
}

}  // namespace
}  // namespace system_test
