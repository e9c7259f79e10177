#include <gmock/gmock.h>

#include "tests/support/Loopback.h"
#include "tests/support/Nginx.h"
#include "tests/support/TempDir.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A queue written by hand: a word per item, "q" queued, "f" failed, "c" completed.
class QueueCommandsTest : public testing::Test {
 protected:
  PlayerHome home;

  void queue(const std::vector<std::pair<std::string, int>>& items) {
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>";
    for (const auto& [title, status] : items) {
      xml += "<DownloadItem title=\"" + title + "\" status=\"" + std::to_string(status) +
             "\" url=\"http://127.0.0.1:1/" + title + ".avi\"/>";
    }
    std::filesystem::create_directories(home.data());
    support::writeFile(home.queueFile(), xml + "</DownloadQueue>\n");
  }

  std::vector<std::string> titles() {
    std::vector<std::string> list;
    for (const Json& item : home.queue()) list.push_back(item["title"]);
    return list;
  }

  std::string statusOf(std::size_t index) { return home.queue().at(index)["status"]; }
};

TEST_F(QueueCommandsTest, ListPrintsPositionsFromOneOn) {
  queue({{"a", 1}, {"b", 4}});
  const std::vector<Json> list = home.queue();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0]["position"], 1);
  EXPECT_EQ(list[1]["position"], 2);
  EXPECT_EQ(list[1]["status"], "completed");
}

TEST_F(QueueCommandsTest, ListLeavesTheQueueFileByteForByte) {
  queue({{"a", 3}, {"b", 7}, {"c", 5}});
  const std::string before = support::readFile(home.queueFile());
  EXPECT_EQ(home.run({"list"}).status, 0);
  EXPECT_EQ(support::readFile(home.queueFile()), before);
}

TEST_F(QueueCommandsTest, RemoveTakesOneItemOut) {
  queue({{"a", 1}, {"b", 1}, {"c", 1}});
  EXPECT_EQ(home.run({"remove", "2"}).status, 0);
  EXPECT_THAT(titles(), ElementsAre("a", "c"));
}

TEST_F(QueueCommandsTest, MovesGoOnePlaceOrAllTheWay) {
  queue({{"a", 1}, {"b", 1}, {"c", 1}, {"d", 6}});
  EXPECT_EQ(home.run({"move", "3", "up"}).status, 0);
  EXPECT_THAT(titles(), ElementsAre("a", "c", "b", "d"));
  EXPECT_EQ(home.run({"move", "1", "down"}).status, 0);
  EXPECT_THAT(titles(), ElementsAre("c", "a", "b", "d"));
  EXPECT_EQ(home.run({"move", "3", "top"}).status, 0);
  EXPECT_THAT(titles(), ElementsAre("b", "c", "a", "d"));
  EXPECT_EQ(home.run({"move", "1", "bottom"}).status, 0);
  EXPECT_THAT(titles(), ElementsAre("c", "a", "b", "d"));
  EXPECT_EQ(home.run({"move", "3", "down"}).status, 1);
}

TEST_F(QueueCommandsTest, RetryQueuesAFailedItemAtTheTop) {
  queue({{"a", 1}, {"b", 6}});
  EXPECT_EQ(home.run({"retry", "2"}).status, 0);
  EXPECT_THAT(titles(), ElementsAre("b", "a"));
  EXPECT_EQ(statusOf(0), "queued");
}

TEST_F(QueueCommandsTest, RetryOfAnythingElseIsExplained) {
  queue({{"a", 4}});
  const PlayerResult result = home.run({"retry", "1"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("completed"));
}

TEST_F(QueueCommandsTest, ClearTakesTheCompletedOut) {
  queue({{"a", 1}, {"b", 4}, {"c", 6}, {"d", 4}});
  EXPECT_EQ(home.run({"clear"}).status, 0);
  EXPECT_THAT(titles(), ElementsAre("a", "c"));
}

TEST_F(QueueCommandsTest, APositionThatIsNotThereIsWrongUsage) {
  queue({{"a", 1}});
  for (const char* position : {"0", "2", "-1", "x"}) {
    EXPECT_EQ(home.run({"remove", position}).status, 2) << position;
  }
  EXPECT_THAT(titles(), ElementsAre("a"));
}

TEST_F(QueueCommandsTest, GetWorksThroughWhatTheQueueHolds) {
  const support::Nginx server;
  server.serve("a.avi", distinctBytes(5000));
  const support::RefusingPort nobody;
  std::filesystem::create_directories(home.data());
  support::writeFile(home.queueFile(),
                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>"
                     "<DownloadItem title=\"a\" status=\"3\" url=\"" +
                         server.url("/a.avi") + "\"/></DownloadQueue>\n");
  EXPECT_EQ(home.run({"get"}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("a.avi"));
}

TEST_F(QueueCommandsTest, GetTellsOfWhatFailsAtOnce) {
  std::filesystem::create_directories(home.data());
  support::writeFile(home.queueFile(),
                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>"
                     "<DownloadItem title=\"a\" status=\"1\" url=\"\"/></DownloadQueue>\n");
  const PlayerResult result = home.run({"get"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.failureCode(), "no_address");
}

TEST_F(QueueCommandsTest, GetSaysWhatItLeavesAlone) {
  queue({{"a", 5}, {"b", 6}});
  const PlayerResult result = home.run({"get"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors, HasSubstr("One film stays paused; `resume` lets it go on.\n"));
  EXPECT_THAT(result.errors, HasSubstr("One film has failed before; `retry all` queues it again."));
}

TEST_F(QueueCommandsTest, AnEmptyQueueIsDoneAtOnce) {
  EXPECT_EQ(home.run({"get"}).status, 0);
  EXPECT_THAT(titles(), IsEmpty());
}

}  // namespace
}  // namespace system_test
