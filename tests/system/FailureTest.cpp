#include <gmock/gmock.h>
#include <sys/mount.h>
#include <unistd.h>

#include "tests/support/FreePort.h"
#include "tests/support/Loopback.h"
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
using testing::IsEmpty;

class FailureTest : public testing::Test {
 protected:
  PlayerHome home;

  /// The reason code of the failure that this address ends in.
  std::string failureOf(const std::string& url) {
    const PlayerResult result = home.run({"get", url});
    EXPECT_EQ(result.status, 1) << result.output << result.errors;
    const std::vector<Json> failures = result.events("failed");
    if (failures.size() == 1) {
      EXPECT_FALSE(failures[0]["reason"]["sentence"].get<std::string>().empty());
    }
    return result.failureCode();
  }
};

TEST_F(FailureTest, AFilmThatIsNotThere) {
  Nginx server;
  EXPECT_EQ(failureOf(server.url("/none.avi")), "http_404");
}

TEST_F(FailureTest, ForbiddenWithServerTrouble) {
  Nginx server({.serverSnippet = "location /no/ { return 403; } location /bad/ { return 500; }"});
  EXPECT_EQ(failureOf(server.url("/no/a.avi")), "http_403");
  EXPECT_EQ(failureOf(server.url("/bad/a.avi")), "http_500");
}

TEST_F(FailureTest, NobodyListens) {
  const support::RefusingPort port;
  EXPECT_EQ(failureOf("http://127.0.0.1:" + std::to_string(port.port()) + "/a.avi"), "refused");
}

TEST_F(FailureTest, NoSuchHost) {
  EXPECT_EQ(failureOf("http://no-such-host.invalid/a.avi"), "no_such_host");
}

TEST_F(FailureTest, AServerThatDoesNotSayHowLongTheFilmIs) {
  ScriptedServer server;
  server.always(Script::answer("HTTP/1.0 200 OK\r\n\r\n"));
  EXPECT_EQ(failureOf(server.url("/a.avi")), "no_length");
}

TEST_F(FailureTest, ARedirectThatGoesInCircles) {
  Nginx server({.serverSnippet = "location / { return 302 $scheme://$http_host$uri; }"});
  EXPECT_EQ(failureOf(server.url("/a.avi")), "redirect_loop");
}

TEST_F(FailureTest, AServerThatBreaksOffAtOnce) {
  ScriptedServer server;
  server.always(Script().readRequest().reset());
  EXPECT_EQ(failureOf(server.url("/a.avi")), "bad_answer");
}

TEST_F(FailureTest, AMediaFolderThatCannotBeMade) {
  Nginx server;
  server.serve("a.avi", distinctBytes(5000));
  support::TempDir folder;
  home.setMedia(folder.write("file", "x") / "below");
  EXPECT_EQ(failureOf(server.url("/a.avi")), "media_folder");
}

TEST_F(FailureTest, TheRestOfTheQueueGoesOn) {
  Nginx server;
  server.serve("good.avi", distinctBytes(5000));
  const PlayerResult result = home.run({"get", server.url("/none.avi"), server.url("/good.avi")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.failureCode(), "http_404");
  ASSERT_EQ(result.events("finished").size(), 1u);
  EXPECT_EQ(result.events("finished")[0]["title"], "good.avi");
}

TEST_F(FailureTest, PeopleReadOneSentencePerFailure) {
  Nginx server;
  const PlayerResult result = home.runForPeople({"get", server.url("/none.avi")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors,
            "failed: none.avi: localhost has no film at this address (404); check the address.\n");
}

TEST_F(FailureTest, AnUnsupportedTypeIsRefusedAtOnce) {
  const PlayerResult result = home.run({"get", "http://127.0.0.1/film.mp4"});
  EXPECT_EQ(result.status, 2);
  ASSERT_EQ(result.events("refused").size(), 1u);
  EXPECT_EQ(result.events("refused")[0]["reason"]["code"], "unsupported_type");
  EXPECT_THAT(home.queue(), IsEmpty());
}

TEST_F(FailureTest, ATextThatIsNoAddressIsRefusedAtOnce) {
  for (const char* text : {"film.avi", "ftp://h/film.avi", "http://[x/film.avi"}) {
    const PlayerResult result = home.run({"get", text});
    EXPECT_EQ(result.status, 2) << text;
    EXPECT_EQ(result.events("refused")[0]["reason"]["code"], "unsupported_url") << text;
  }
}

TEST_F(FailureTest, ADataFolderThatCannotBeUsedIsSaid) {
  support::TempDir folder;
  home.addOptions({"--data", folder.write("file", "x") / "below"});
  const PlayerResult result = home.run({"get", "http://127.0.0.1/a.avi"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("cannot be written"));
}

TEST_F(FailureTest, ASecondPlayerOnOneDataFolderIsTurnedAway) {
  ScriptedServer server;
  server.always(Script().readRequest().stall());
  support::Process first = home.start({"get", server.url("/a.avi")});
  ASSERT_TRUE(first.waitForOutput("\"added\""));
  const PlayerResult second = home.run({"get"});
  EXPECT_EQ(second.status, 1);
  EXPECT_THAT(second.errors, HasSubstr("Another player is using"));
  first.send(SIGINT);
  EXPECT_EQ(first.wait(), 130);
}

/// A file system of its own with little room, where the system lets one be made.
class SmallDisk {
 public:
  explicit SmallDisk(const char* size) {
    mounted_ = mount("films", folder_.path().c_str(), "tmpfs", 0,
                     (std::string("size=") + size).c_str()) == 0;
  }
  ~SmallDisk() {
    if (mounted_) umount2(folder_.path().c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool isMounted() const { return mounted_; }
  const std::filesystem::path& path() const { return folder_.path(); }

 private:
  support::TempDir folder_;
  bool mounted_;
};

TEST_F(FailureTest, TooLittleSpaceIsFoundBeforeAByteIsFetched) {
  const SmallDisk disk("1m");
  if (!disk.isMounted()) return;  // making file systems needs rights that not every machine gives
  Nginx server;
  server.serve("a.avi", distinctBytes(800'000));  // needs twice its size
  home.setMedia(disk.path());
  EXPECT_EQ(failureOf(server.url("/a.avi")), "no_space");
  EXPECT_THAT(server.accessLog(), testing::Not(HasSubstr("GET")));
}

}  // namespace
}  // namespace system_test
