#include <gmock/gmock.h>

#include "tests/support/LegacyQueueFile.h"
#include "tests/support/Nginx.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using testing::ElementsAre;

class LegacyQueueTest : public testing::Test {
 protected:
  PlayerHome home;

  std::filesystem::path legacyFile() const { return home.data() / "DownloadQueue.dlq"; }

  void write(const std::string& content) {
    std::filesystem::create_directories(home.data());
    support::writeFile(legacyFile(), content);
  }

  bool isKept(const std::string& content) {
    for (const auto& entry : std::filesystem::directory_iterator(home.data())) {
      if (entry.is_regular_file() && support::readFile(entry.path()) == content) return true;
    }
    return false;
  }
};

TEST_F(LegacyQueueTest, AQueueOfAnEarlierReleaseIsTakenOverOnce) {
  support::Nginx server;
  server.serve("a.avi", distinctBytes(5000));
  support::LegacyQueueFile queue;
  const std::string url = server.url("/a.avi");
  queue.item()
      .text("title", L"Zürich")
      .text("url", std::wstring(url.begin(), url.end()))
      .attribute("status", "1");
  write(queue.document());
  EXPECT_EQ(home.run({"get"}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(legacyFile()));
  ASSERT_EQ(home.queue().size(), 1u);
  EXPECT_EQ(home.queue()[0]["title"], "Zürich");
  EXPECT_THAT(home.films(), ElementsAre("a.avi"));
}

TEST_F(LegacyQueueTest, WithBothFilesTheOlderOneIsLeftAlone) {
  std::filesystem::create_directories(home.data());
  support::writeFile(home.queueFile(),
                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>"
                     "<DownloadItem title=\"new\" status=\"4\"/></DownloadQueue>\n");
  write("old");
  ASSERT_EQ(home.queue().size(), 1u);
  EXPECT_EQ(home.queue()[0]["title"], "new");
  EXPECT_EQ(support::readFile(legacyFile()), "old");
}

TEST_F(LegacyQueueTest, AnUnreadableFileIsSetAsideBeforeItIsDeleted) {
  write("this is no queue, yet it was somebody's");
  EXPECT_EQ(home.run({"list"}).status, 1);
  EXPECT_TRUE(std::filesystem::exists(legacyFile()));
  EXPECT_EQ(home.run({"clear"}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(legacyFile()));
  EXPECT_TRUE(isKept("this is no queue, yet it was somebody's"));
}

}  // namespace
}  // namespace system_test
