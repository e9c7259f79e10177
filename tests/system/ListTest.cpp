#include <gmock/gmock.h>

#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using support::Nginx;
using support::Script;
using support::ScriptedServer;
using testing::HasSubstr;
using testing::Not;

class ListTest : public testing::Test {
 protected:
  void SetUp() override {
    server.serve("good.avi", distinctBytes(5000));
    home.run({"get", server.url("/good.avi"), server.url("/none.avi")});
  }

  Nginx server;
  PlayerHome home;
};

TEST_F(ListTest, AFailedFilmHasItsReasonInALaterRun) {
  const std::vector<Json> queue = home.queue();
  ASSERT_EQ(queue.size(), 2u);
  EXPECT_FALSE(queue[0].contains("reason"));
  EXPECT_EQ(queue[1]["reason"]["code"], "http_404");
  EXPECT_THAT(home.runForPeople({"list"}).output, HasSubstr("has no film at this address (404)"));
}

TEST_F(ListTest, ADamagedFileOfReasonsOnlyLosesReasons) {
  support::writeFile(home.data() / "failures.json", "[{\"item\":");
  EXPECT_EQ(home.queue().size(), 2u);
  EXPECT_FALSE(home.queue()[1].contains("reason"));
}

TEST_F(ListTest, AddressesArePrintedWhenAsked) {
  EXPECT_THAT(home.runForPeople({"list"}).output, Not(HasSubstr(server.url("/good.avi"))));
  EXPECT_THAT(home.runForPeople({"list", "--long"}).output, HasSubstr(server.url("/good.avi")));
}

TEST_F(ListTest, TheProgressOfTheWholeQueueIsTheLastLine) {
  const Json last = home.run({"list"}).events().back();
  EXPECT_EQ(last["event"], "queue");
  EXPECT_EQ(last["items"], 2);
  EXPECT_EQ(last["completed"], 1);
  EXPECT_EQ(last["arrived"], 5000);
  EXPECT_THAT(home.runForPeople({"list"}).output, HasSubstr("\n1 of 2 complete, 5.0 kB of 5.0 kB"));
}

TEST_F(ListTest, AFilmThatIsShorterThanAnnouncedIsOddInEveryList) {
  std::filesystem::resize_file(home.media() / "good.avi", 100);
  EXPECT_THAT(home.queue().at(0).value("oddity", ""), HasSubstr("had announced 5.0 kB"));
}

TEST(WebPageTest, APageToLogInIsNoFilm) {
  ScriptedServer server;
  server.always(
      Script::answer("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n"
                     "Content-Length: 5\r\nConnection: close\r\n\r\nlogin"));
  PlayerHome home;
  const PlayerResult result = home.run({"get", server.url("/a.avi")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.failureCode(), "web_page");
  EXPECT_TRUE(home.films().empty());
}

}  // namespace
}  // namespace system_test
