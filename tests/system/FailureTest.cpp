#include <gmock/gmock.h>

#include <algorithm>

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

TEST_F(FailureTest, AProxyThatDoesNotListenIsNamed) {
  const support::RefusingPort port;
  const std::string proxy = "127.0.0.1:" + std::to_string(port.port());
  home.setEnvironment("http_proxy", "http://" + proxy);
  Nginx server;
  server.serve("a.avi", distinctBytes(5000));
  const PlayerResult result = home.run({"get", server.url("/a.avi")});
  EXPECT_EQ(result.failureCode(), "refused");
  EXPECT_THAT(result.output, HasSubstr("The proxy " + proxy + " does not accept connections"));
}

TEST_F(FailureTest, NoSuchHost) {
  EXPECT_EQ(failureOf("http://no-such-host.invalid/a.avi"), "no_such_host");
}

TEST_F(FailureTest, AServerThatAnswersTheQuestionForTheSizeWrongly) {
  const struct {
    const char* what;
    Script answer;
    const char* code;
  } rows[] = {
      {"no size", Script::answer("HTTP/1.0 200 OK\r\n\r\n"), "no_length"},
      {"an unusable size is no lack of space",
       Script::answer("HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\n"), "bad_answer"},
      {"it breaks off at once", Script().readRequest().reset(), "bad_answer"},
      {"a redirect to no web address",
       Script::answer(support::bareResponse("302 Found", "Location: file:/x.avi\r\n")),
       "bad_redirect"},
  };
  for (const auto& row : rows) {
    ScriptedServer server;
    server.always(row.answer);
    EXPECT_EQ(failureOf(server.url("/a.avi")), row.code) << row.what;
  }
}

TEST_F(FailureTest, ARedirectThatGoesInCircles) {
  Nginx server({.serverSnippet = "location / { return 302 $scheme://$http_host$uri; }"});
  EXPECT_EQ(failureOf(server.url("/a.avi")), "redirect_loop");
}

TEST_F(FailureTest, AMediaFolderThatCannotBeMade) {
  Nginx server;
  server.serve("a.avi", distinctBytes(5000));
  support::TempDir folder;
  home.setMedia(folder.write("file", "x") / "below");
  EXPECT_EQ(failureOf(server.url("/a.avi")), "media_folder");
}

TEST_F(FailureTest, AMediaFolderThatTheKernelDoesNotGiveHasNoLackOfSpace) {
  Nginx server;
  server.serve("a.avi", distinctBytes(5000));
  home.setMedia("/proc/films");
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
  const PlayerResult result = home.run({"get", "http://127.0.0.1/film.txt"});
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
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("is not a folder"));
}

TEST_F(FailureTest, AFolderThatIsNotNamedInUtf8IsSaid) {
  const support::TempDir folder;
  const std::filesystem::path data = folder / "\xFF";
  const PlayerResult result = home.run({"--data", data, "add", "http://127.0.0.1/a.avi"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("the name is not text in UTF-8"));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(FailureTest, AFilmOfAnotherLengthThanAnnouncedIsSaidWithItsOutcome) {
  for (const int announced : {1000, 8000}) {
    ScriptedServer server;
    server.onRequest([announced](const std::string& request) {
      const bool isHead = request.starts_with("HEAD");
      return Script()
          .send("HTTP/1.1 200 OK\r\nETag: \"1\"\r\nContent-Length: " +
                std::to_string(isHead ? announced : 5000) + "\r\nConnection: close\r\n\r\n")
          .send(isHead ? "" : distinctBytes(5000))
          .close();
    });
    const PlayerResult result = home.run({"get", server.url("/a.avi")});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_THAT(result.events("finished").at(0).value("oddity", ""),
                HasSubstr("5.0 kB although its server had announced"));
  }
}

/// The media folder is a small file system of its own while the player runs.
class SmallDiskTest : public FailureTest {
 protected:
  void SetUp() override {
    const std::string lack = lackOfNamespaces();
    ASSERT_EQ(lack, "");
    std::filesystem::create_directories(home.media());
    home.mountFirst("mount -t tmpfs -o size=1m films \"$0\"", home.media());
  }
};

TEST_F(SmallDiskTest, TooLittleSpaceIsFoundBeforeAByteIsFetched) {
  Nginx server;
  server.serve("a.avi", distinctBytes(800'000));  // needs twice its size
  EXPECT_EQ(failureOf(server.url("/a.avi")), "no_space");
  EXPECT_THAT(server.accessLog(), testing::Not(HasSubstr("GET")));
}

TEST_F(SmallDiskTest, AFilmThatIsLargerThanAnnouncedKeepsItsBytes) {
  const std::string film = distinctBytes(3'000'000);
  ScriptedServer server;
  server.onRequest([&film](const std::string& request) {
    const std::string size = request.starts_with("HEAD") ? "1000" : std::to_string(film.size());
    const std::string head = "HTTP/1.1 200 OK\r\nETag: \"1\"\r\nContent-Length: " + size +
                             "\r\nConnection: close\r\n\r\n";
    return Script().send(request.starts_with("HEAD") ? head : head + film).close();
  });
  const PlayerResult result = home.run({"get", server.url("/a.avi")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.failureCode(), "no_space");
  EXPECT_EQ(result.events("failed")[0]["reason"]["sentence"],
            "There is no room for the film in " + home.media().string() +
                "; free some space there and retry, which goes on where it stopped, or choose "
                "another folder with --media.");

  home.mountFirst("true", "");  // now there is room
  EXPECT_EQ(home.run({"retry", "1"}).status, 0);
  EXPECT_EQ(home.run({"get"}).status, 0);
  EXPECT_EQ(support::readFile(home.media() / "a.avi"), film);
  const std::vector<std::string> requests = server.requests();
  EXPECT_EQ(std::count_if(requests.begin(), requests.end(),
                          [](const std::string& request) { return request.starts_with("GET"); }),
            1);
}

}  // namespace
}  // namespace system_test
